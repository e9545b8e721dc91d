// The type library that the DLL carries in its resources.
#pragma once

#include "com/automation.h"

namespace depot {

// Open the library, and the description of one of its interfaces. What is put out is null on
// failure; without memory that is E_OUTOFMEMORY.
HRESULT OpenTypeLibrary(UniqueCom<ITypeLib>& library) noexcept;
HRESULT OpenTypeInfo(REFIID interfaceId, UniqueCom<ITypeInfo>& typeInfo) noexcept;

}  // namespace depot
