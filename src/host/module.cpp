#include "host/module.h"

#include "api/depot_intr_api.h"
#include "api/dispatch_adapter.h"
#include "com/braced_text.h"
#include "com/com_object.h"
#include "host/identifiers.h"

namespace depot {
namespace {

constexpr WORD kApiScript = 101;

void TerminateApi() {
    DispatchAdapter::Instance().Release();
}

constexpr ObjectMapEntry kObjectMap[] = {
    MappedAs<CDepotIntrApi>(CLSID_DepotIntrApi, kApiScript, TerminateApi),
};

}  // namespace

std::span<const ObjectMapEntry> ObjectMap() {
    return kObjectMap;
}

CDepotIntrModule::CDepotIntrModule()
    : CComModule({DEPOT_BRACED_TEXT(DEPOTINTR_APPID), LIBID_DepotIntrLib, ObjectMap()}) {}

}  // namespace depot
