// The module of the test program itself, which locks are counted on.
#include "com/com_module.h"

namespace depot {
namespace {

const CComModule programModule({"{00000000-0000-0000-0000-000000000000}", IID_IUnknown, {}});

}  // namespace
}  // namespace depot
