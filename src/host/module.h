// The module object of this DLL.
#pragma once

#include "com/com_module.h"

namespace depot {

// Offers the class of the automation interface, under the component's own identifiers.
class CDepotIntrModule final : public CComModule {
public:
    CDepotIntrModule();
};

// The classes that the DLL offers.
std::span<const ObjectMapEntry> ObjectMap();

}  // namespace depot
