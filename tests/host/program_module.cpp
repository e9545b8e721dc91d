// The module of the test program itself, which locks are counted on.
#include "host/module.h"

namespace depot {
namespace {

const CDepotIntrModule programModule;

}  // namespace
}  // namespace depot
