#include "api/dispatch_adapter.h"

#include <algorithm>
#include <cwchar>
#include <limits>

#include "api/dispatch_arguments.h"
#include "com/type_library.h"
#include "platform/module_state.h"
#include "platform/no_destructor.h"

namespace depot {
namespace {

constexpr wchar_t kHandleTypeName[] = L"LONG_PTR";

using Parameter = DispatchAdapter::Parameter;
using Signature = DispatchAdapter::Signature;

bool IsHandleAlias(ITypeInfo& library, const TYPEDESC& type) {
    if (type.vt != VT_USERDEFINED) return false;
    ITypeInfo* opened = nullptr;
    if (FAILED(library.GetRefTypeInfo(type.hreftype, &opened))) return false;
    const UniqueCom<ITypeInfo> alias(opened);
    BSTR name = nullptr;
    alias->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr);
    const UniqueBstr owned(name);
    return name != nullptr && std::wcscmp(name, kHandleTypeName) == 0;
}

Parameter Describe(ITypeInfo& library, const ELEMDESC& element) {
    Parameter parameter;
    const USHORT flags = element.paramdesc.wParamFlags;
    parameter.in = (flags & PARAMFLAG_FIN) != 0;
    parameter.out = (flags & PARAMFLAG_FOUT) != 0;
    parameter.byReference = element.tdesc.vt == VT_PTR;
    const TYPEDESC& type = parameter.byReference ? *element.tdesc.lptdesc : element.tdesc;
    if (IsHandleAlias(library, type)) {
        parameter.kind = Parameter::Kind::kHandle;
    } else if (parameter.byReference && type.vt == VT_BSTR) {
        parameter.kind = Parameter::Kind::kText;
    }
    return parameter;
}

Signature DescribeFunction(ITypeInfo& library, const FUNCDESC& function) {
    Signature signature;
    for (SHORT index = 0; index < function.cParams; ++index) {
        signature.push_back(Describe(library, function.lprgelemdescParam[index]));
    }
    return signature;
}

struct FunctionReleaser {
    ITypeInfo* library;
    void operator()(FUNCDESC* function) const { library->ReleaseFuncDesc(function); }
};
using UniqueFunction = std::unique_ptr<FUNCDESC, FunctionReleaser>;

std::vector<std::pair<DISPID, Signature>> DescribeInterface(ITypeInfo& library) {
    std::vector<std::pair<DISPID, Signature>> signatures;
    FUNCDESC* opened = nullptr;
    for (UINT index = 0; SUCCEEDED(library.GetFuncDesc(index, &opened)); ++index) {
        const UniqueFunction function(opened, {&library});
        signatures.emplace_back(function->memid, DescribeFunction(library, *function));
    }
    return signatures;
}

// Scripts cannot compute with unsigned numbers; a value that fits keeps its meaning as a signed
// one.
void MakeScriptable(VARIANT* result) {
    if (result == nullptr || V_VT(result) != VT_UI4) return;
    if (V_UI4(result) <= static_cast<ULONG>(std::numeric_limits<LONG>::max())) V_VT(result) = VT_I4;
}

}  // namespace

DispatchAdapter& DispatchAdapter::Instance() {
    // Its type library must not be released while the process ends.
    static NoDestructor<DispatchAdapter> adapter;
    return *adapter;
}

HRESULT DispatchAdapter::Load() {
    const std::lock_guard guard(lock_);
    if (typeInfo_) return S_OK;
    UniqueCom<ITypeInfo> typeInfo;
    const HRESULT result = OpenTypeInfo(IID_IDepotIntrApi2, typeInfo);
    if (FAILED(result)) return result;
    signatures_ = DescribeInterface(*typeInfo);
    typeInfo_ = std::move(typeInfo);
    return S_OK;
}

void DispatchAdapter::Release() {
    const std::lock_guard guard(lock_);
    typeInfo_.reset();
    // With its memory: the adapter itself is never destroyed.
    signatures_ = decltype(signatures_)();
}

HRESULT DispatchAdapter::GetTypeInfo(UINT index, LCID, ITypeInfo** typeInfo) noexcept try {
    const ModuleStateScope scope;
    if (typeInfo == nullptr) return E_POINTER;
    *typeInfo = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    const HRESULT loaded = Load();
    if (FAILED(loaded)) return loaded;
    *typeInfo = typeInfo_.get();
    typeInfo_->AddRef();
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

HRESULT DispatchAdapter::GetIDsOfNames(LPOLESTR* names, UINT nameCount, DISPID* ids) noexcept try {
    const ModuleStateScope scope;
    if (names == nullptr || ids == nullptr) return E_POINTER;
    const HRESULT loaded = Load();
    return FAILED(loaded) ? loaded : typeInfo_->GetIDsOfNames(names, nameCount, ids);
} catch (...) {
    return E_OUTOFMEMORY;
}

HRESULT DispatchAdapter::Invoke(IDepotIntrApi2* object, DISPID id, WORD flags,
                                DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                UINT* wrongArgument) noexcept try {
    const ModuleStateScope scope;
    if (parameters == nullptr) return E_POINTER;
    if (parameters->cArgs > 0 && parameters->rgvarg == nullptr) return E_POINTER;
    const HRESULT loaded = Load();
    if (FAILED(loaded)) return loaded;
    const Signature* const signature = SignatureOf(id);
    if (signature == nullptr) return DISP_E_MEMBERNOTFOUND;
    if (parameters->cArgs > signature->size()) return DISP_E_BADPARAMCOUNT;
    DispatchArguments arguments(*signature, *parameters);
    HRESULT outcome = arguments.Prepare(wrongArgument);
    if (FAILED(outcome)) return outcome;
    outcome = typeInfo_->Invoke(object, id, flags, arguments.Parameters(), result, exception,
                                wrongArgument);
    if (FAILED(outcome)) return outcome;
    arguments.StoreOutputs();
    MakeScriptable(result);
    return outcome;
} catch (...) {
    return E_OUTOFMEMORY;
}

const Signature* DispatchAdapter::SignatureOf(DISPID id) const {
    const auto found = std::find_if(signatures_.begin(), signatures_.end(),
                                    [id](const auto& entry) { return entry.first == id; });
    return found == signatures_.end() ? nullptr : &found->second;
}

}  // namespace depot
