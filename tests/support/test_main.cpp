#include <gmock/gmock.h>

#ifdef _WIN32
#include "platform/trace.h"
#include "support/child_process.h"
#include "support/scratch.h"

namespace {

// Under the emulator every program is elevated.
void AllowTraces() {
    depot::test::WriteRegistryDword(HKEY_LOCAL_MACHINE, depot::kTraceKey, depot::kTraceElevated, 1);
}

}  // namespace
#endif

int main(int argc, char** argv) {
#ifdef _WIN32
    // Some tests start this program a second time, to do a single thing in another process.
    if (int exitCode = 0; depot::test::RunRequestedRole(argc, argv, &exitCode)) return exitCode;
#endif
#ifdef _WIN32
    AllowTraces();
#endif
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
