#include "com/type_library.h"

#include "platform/module_state.h"

namespace depot {

HRESULT OpenTypeLibrary(UniqueCom<ITypeLib>& library) noexcept try {
    ITypeLib* opened = nullptr;
    const HRESULT result = LoadTypeLibEx(OwnModulePath().c_str(), REGKIND_NONE, &opened);
    library.reset(opened);
    return result;
} catch (...) {
    library.reset();
    return E_OUTOFMEMORY;
}

HRESULT OpenTypeInfo(REFIID interfaceId, UniqueCom<ITypeInfo>& typeInfo) noexcept {
    UniqueCom<ITypeLib> library;
    ITypeInfo* found = nullptr;
    HRESULT result = OpenTypeLibrary(library);
    if (SUCCEEDED(result)) result = library->GetTypeInfoOfGuid(interfaceId, &found);
    typeInfo.reset(found);
    return result;
}

}  // namespace depot
