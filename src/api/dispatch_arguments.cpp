#include "api/dispatch_arguments.h"

#include <limits>
#include <utility>

namespace depot {
namespace {

using Parameter = DispatchAdapter::Parameter;

// A script's variable arrives as a reference to a VARIANT, which may be a reference itself.
VARIANT& Dereferenced(VARIANT& argument) {
    return V_VT(&argument) == (VT_VARIANT | VT_BYREF) ? *V_VARIANTREF(&argument) : argument;
}

HRESULT ReadHandle(VARIANT& argument, LONGLONG& handle) {
    VARIANT& source = Dereferenced(argument);
    UniqueVariant converted;
    // Native clients may hold the whole handle; everything else carries 32 bits, never a sign.
    const VARTYPE base = V_VT(&source) & VT_TYPEMASK;
    const bool wide = base == VT_I8 || base == VT_UI8;
    const HRESULT result =
        VariantChangeType(converted.get(), &source, 0, static_cast<VARTYPE>(wide ? VT_I8 : VT_I4));
    if (FAILED(result)) return result;
    handle = wide ? V_I8(converted.get())
                  : static_cast<LONGLONG>(static_cast<ULONG>(V_I4(converted.get())));
    return S_OK;
}

// Whether a reference leads nowhere.
bool IsDangling(const VARIANT& argument) {
    return (V_VT(&argument) & VT_BYREF) != 0 && V_BYREF(&argument) == nullptr;
}

// Whether a handle that the method puts out can be stored in the client's variable.
bool TakesHandle(const VARIANT& argument) {
    switch (V_VT(&argument)) {
        case VT_VARIANT | VT_BYREF:
        case VT_I4 | VT_BYREF:
        case VT_UI4 | VT_BYREF:
        case VT_INT | VT_BYREF:
        case VT_UINT | VT_BYREF:
        case VT_I8 | VT_BYREF:
        case VT_UI8 | VT_BYREF:
            return true;
        default:
            // A value is only read; a reference to anything else is too narrow.
            return (V_VT(&argument) & VT_BYREF) == 0;
    }
}

void SetVariantHandle(VARIANT& variable, LONGLONG handle) {
    VariantClear(&variable);
    if (handle >= 0 && handle <= std::numeric_limits<LONG>::max()) {
        V_VT(&variable) = VT_I4;
        V_I4(&variable) = static_cast<LONG>(handle);
    } else {
        V_VT(&variable) = VT_I8;
        V_I8(&variable) = handle;
    }
}

}  // namespace

DispatchArguments::DispatchArguments(const DispatchAdapter::Signature& signature,
                                     const DISPPARAMS& given)
    : signature_(signature),
      given_(given),
      passed_(given),
      arguments_(given.rgvarg, given.rgvarg + given.cArgs),
      slots_(given.cArgs) {
    passed_.rgvarg = arguments_.data();
}

const Parameter& DispatchArguments::ParameterOf(UINT argument) const {
    static const Parameter other;
    // Arguments stand in reverse order, named ones first.
    const std::size_t position = argument < given_.cNamedArgs && given_.rgdispidNamedArgs != nullptr
                                     ? static_cast<std::size_t>(given_.rgdispidNamedArgs[argument])
                                     : given_.cArgs - 1 - argument;
    return position < signature_.size() ? signature_[position] : other;
}

HRESULT DispatchArguments::Prepare(UINT* wrongArgument) {
    for (UINT argument = 0; argument < given_.cArgs; ++argument) {
        const Parameter& parameter = ParameterOf(argument);
        HRESULT result = S_OK;
        VARIANT& source = given_.rgvarg[argument];
        // The methods themselves take a missing text; anything else would be followed here.
        if (IsDangling(source) ? V_VT(&source) != (VT_BSTR | VT_BYREF)
                               : IsDangling(Dereferenced(source))) {
            result = DISP_E_TYPEMISMATCH;
        } else if (parameter.kind == Parameter::Kind::kHandle) {
            result = PrepareHandle(parameter, argument);
        } else if (parameter.kind == Parameter::Kind::kText) {
            result = PrepareText(parameter, argument);
        }
        if (FAILED(result)) {
            if (wrongArgument != nullptr) *wrongArgument = argument;
            return result;
        }
    }
    return S_OK;
}

HRESULT DispatchArguments::PrepareHandle(const Parameter& parameter, UINT argument) {
    VARIANT& source = given_.rgvarg[argument];
    LONGLONG& handle = slots_[argument].handle;
    if (parameter.in) {
        const HRESULT result = ReadHandle(source, handle);
        if (FAILED(result)) return result;
    }
    VARIANT& passed = arguments_[argument];
    passed = {};
    if (!parameter.byReference) {
        // The library reads 32 bits of the value, the method the whole union.
        V_VT(&passed) = VT_I4;
        V_I8(&passed) = handle;
        return S_OK;
    }
    if (!TakesHandle(source)) return DISP_E_TYPEMISMATCH;
    V_VT(&passed) = VT_I4 | VT_BYREF;
    V_BYREF(&passed) = &handle;
    return S_OK;
}

HRESULT DispatchArguments::PrepareText(const Parameter& parameter, UINT argument) {
    VARIANT& source = given_.rgvarg[argument];
    // A method sets its output without looking at the former text, which would be lost in there.
    const bool passesOn = !parameter.out || IsDangling(source);
    if (V_VT(&source) == (VT_BSTR | VT_BYREF) && passesOn) return S_OK;
    VARIANT* const text = slots_[argument].text.get();
    V_VT(text) = VT_BSTR;
    if (parameter.in) {
        const HRESULT result =
            VariantChangeType(text, &Dereferenced(source), VARIANT_ALPHABOOL, VT_BSTR);
        if (FAILED(result)) return result;
    }
    VARIANT& passed = arguments_[argument];
    passed = {};
    V_VT(&passed) = VT_BSTR | VT_BYREF;
    V_BSTRREF(&passed) = &V_BSTR(text);
    return S_OK;
}

void DispatchArguments::StoreOutputs() {
    for (UINT argument = 0; argument < given_.cArgs; ++argument) {
        const Parameter& parameter = ParameterOf(argument);
        if (!parameter.out || !parameter.byReference) continue;
        if (parameter.kind == Parameter::Kind::kHandle) StoreHandle(argument);
        if (parameter.kind == Parameter::Kind::kText) StoreText(argument);
    }
}

void DispatchArguments::StoreHandle(UINT argument) {
    const LONGLONG handle = slots_[argument].handle;
    const VARIANT& target = given_.rgvarg[argument];
    switch (V_VT(&target)) {
        case VT_VARIANT | VT_BYREF:
            SetVariantHandle(*V_VARIANTREF(&target), handle);
            break;
        case VT_I8 | VT_BYREF:
        case VT_UI8 | VT_BYREF:
            *V_I8REF(&target) = handle;
            break;
        default:
            if (V_VT(&target) & VT_BYREF) *V_I4REF(&target) = static_cast<LONG>(handle);
            break;
    }
}

// What the client's variable held is released with the slot.
void DispatchArguments::StoreText(UINT argument) {
    VARIANT& text = *slots_[argument].text.get();
    VARIANT& given = given_.rgvarg[argument];
    if (V_VT(&text) != VT_BSTR) return;
    VARIANT& target = Dereferenced(given);
    if (V_VT(&target) == (VT_BSTR | VT_BYREF)) {
        std::swap(*V_BSTRREF(&target), V_BSTR(&text));
    } else if (&target != &given) {
        std::swap(target, text);
    }
}

}  // namespace depot
