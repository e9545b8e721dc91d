// The classes that the DLL offers.
#include "api/depot_intr_api.h"
#include "api/dispatch_adapter.h"
#include "com/com_object.h"
#include "host/module.h"

namespace depot {
namespace {

constexpr WORD kApiScript = 101;

HRESULT CreateApi(REFIID interfaceId, void** object) {
    return CreateComObject<CComObject<CDepotIntrApi>>(interfaceId, object);
}

HRESULT CreateAggregatedApi(IUnknown* outer, void** object) {
    return CreateComObject<CComAggObject<CDepotIntrApi>>(IID_IUnknown, object, outer);
}

void TerminateApi() {
    DispatchAdapter::Instance().Release();
}

const ObjectMapEntry kObjectMap[] = {
    {CLSID_DepotIntrApi, kApiScript, CreateApi, CreateAggregatedApi, TerminateApi},
};

}  // namespace

std::span<const ObjectMapEntry> ObjectMap() {
    return kObjectMap;
}

}  // namespace depot
