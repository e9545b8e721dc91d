#include "com/automation.h"

#include "platform/wide_text.h"

namespace depot {

std::wstring_view WideText(BSTR text) {
    return {text != nullptr ? text : L"", SysStringLen(text)};
}

UniqueBstr NewWideBstr(std::wstring_view text) {
    return UniqueBstr(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
}

UniqueBstr NewNameBstr(const std::string& name) {
    return NewWideBstr(WideFromAnsi(name));
}

void WipeBstr(BSTR text) noexcept {
    if (text != nullptr) SecureZeroMemory(text, SysStringByteLen(text));
}

HRESULT GiveInterface(IUnknown& object, std::initializer_list<const IID*> known, REFIID interfaceId,
                      void** output) noexcept {
    if (output == nullptr) return E_POINTER;
    *output = nullptr;
    for (const IID* const id : known) {
        if (!IsEqualIID(*id, interfaceId)) continue;
        *output = &object;
        object.AddRef();
        return S_OK;
    }
    return E_NOINTERFACE;
}

}  // namespace depot
