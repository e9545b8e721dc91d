#include "depotbrowser/typelib_dispatch.h"

namespace depot {

HRESULT OpenTypeInfo(REFIID interfaceId, UniqueTypeInfo& typeInfo) noexcept try {
    ITypeLib* opened = nullptr;
    HRESULT result = LoadTypeLibEx(OwnModulePath().c_str(), REGKIND_NONE, &opened);
    if (FAILED(result)) return result;
    const std::unique_ptr<ITypeLib, ComReleaser> library(opened);
    ITypeInfo* found = nullptr;
    result = library->GetTypeInfoOfGuid(interfaceId, &found);
    typeInfo.reset(found);
    return result;
} catch (...) {
    return E_OUTOFMEMORY;
}

}  // namespace depot
