#include "host/module.h"

#include "DepotIntr.h"
#include "com/braced_text.h"
#include "host/identifiers.h"

namespace depot {

CDepotIntrModule::CDepotIntrModule()
    : CComModule({DEPOT_BRACED_TEXT(DEPOTINTR_APPID), LIBID_DepotIntrLib, ObjectMap()}) {}

}  // namespace depot
