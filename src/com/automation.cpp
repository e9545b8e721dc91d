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

HRESULT GiveNames(const std::vector<std::string>& names, VARIANT* output) noexcept try {
    VariantInit(output);
    UniqueSafeArray array(SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(names.size())));
    if (!array) return E_OUTOFMEMORY;
    auto* const elements = static_cast<VARIANT*>(array->pvData);
    for (std::size_t index = 0; index < names.size(); ++index) {
        V_BSTR(&elements[index]) = NewNameBstr(names[index]).release();
        if (V_BSTR(&elements[index]) == nullptr) return E_OUTOFMEMORY;
        V_VT(&elements[index]) = VT_BSTR;
    }
    V_VT(output) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(output) = array.release();
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
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
