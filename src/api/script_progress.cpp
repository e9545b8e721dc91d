#include "api/script_progress.h"

#include <iterator>
#include <optional>

namespace depot {
namespace {

wchar_t kMethod[] = L"Progress";

// What a script's variable holds.
const VARIANT& Dereferenced(const VARIANT& given) {
    const bool isVariable = V_VT(&given) == (VT_VARIANT | VT_BYREF);
    return isVariable && V_VARIANTREF(&given) != nullptr ? *V_VARIANTREF(&given) : given;
}

bool IsLeftOut(const VARIANT& given) {
    switch (V_VT(&given)) {
        case VT_EMPTY:
        case VT_NULL:
            return true;
        case VT_ERROR:
            return V_ERROR(&given) == DISP_E_PARAMNOTFOUND;
        default:
            return false;
    }
}

// The object of a variant that has none is null; without a value the variant holds no object.
std::optional<IUnknown*> ObjectOf(const VARIANT& given) {
    switch (V_VT(&given)) {
        case VT_DISPATCH:
            return V_DISPATCH(&given);
        case VT_UNKNOWN:
            return V_UNKNOWN(&given);
        case VT_DISPATCH | VT_BYREF:
            if (V_DISPATCHREF(&given) == nullptr) return std::nullopt;
            return *V_DISPATCHREF(&given);
        default:
            return std::nullopt;
    }
}

bool IsFalse(VARIANT& result) {
    if (V_VT(&result) == VT_EMPTY) return false;
    VARIANT truth = {};
    const HRESULT converted = VariantChangeType(&truth, &result, 0, VT_BOOL);
    return SUCCEEDED(converted) && V_BOOL(&truth) == VARIANT_FALSE;
}

void SetNumber(VARIANT& argument, std::uint32_t number) {
    V_VT(&argument) = VT_I4;
    V_I4(&argument) = static_cast<LONG>(number);
}

}  // namespace

ScriptProgress::ScriptProgress(const VARIANT& given) {
    const VARIANT& value = Dereferenced(given);
    isUsable_ = IsLeftOut(value);
    const std::optional<IUnknown*> object = isUsable_ ? std::nullopt : ObjectOf(value);
    if (!object) return;
    isUsable_ = *object == nullptr;
    void* found = nullptr;
    if (isUsable_ || FAILED((*object)->QueryInterface(IID_IDispatch, &found))) return;
    object_.reset(static_cast<IDispatch*>(found));
    isUsable_ = FindMethod();
}

bool ScriptProgress::FindMethod() {
    LPOLESTR names[] = {kMethod};
    if (SUCCEEDED(object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &method_))) {
        return true;
    }
    void* found = nullptr;
    if (FAILED(object_->QueryInterface(__uuidof(IDispatchEx), &found))) return false;
    extended_.reset(static_cast<IDispatchEx*>(found));
    const UniqueBstr name(SysAllocString(kMethod));
    return name && SUCCEEDED(extended_->GetDispID(name.get(), fdexNameCaseInsensitive, &method_));
}

HRESULT ScriptProgress::Call(DISPPARAMS& parameters, VARIANT& result) const {
    if (extended_) {
        return extended_->InvokeEx(method_, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                   &result, nullptr, nullptr);
    }
    return object_->Invoke(method_, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                           &result, nullptr, nullptr);
}

TransferWatcher ScriptProgress::Watcher() const {
    if (!object_) return {};
    return [this](const TransferProgress& progress) { return GoesOn(progress); };
}

bool ScriptProgress::GoesOn(const TransferProgress& progress) const {
    VARIANT arguments[3] = {};  // in reverse order
    V_VT(&arguments[0]) = VT_R8;
    V_R8(&arguments[0]) = static_cast<double>(progress.bytesDone);
    SetNumber(arguments[1], progress.filesInAll);
    SetNumber(arguments[2], progress.filesDone);
    DISPPARAMS parameters = {arguments, nullptr, static_cast<UINT>(std::size(arguments)), 0};
    VARIANT result = {};
    const HRESULT called = Call(parameters, result);
    const bool goesOn = SUCCEEDED(called) && !IsFalse(result);
    VariantClear(&result);
    return goesOn;
}

}  // namespace depot
