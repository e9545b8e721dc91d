#include <gmock/gmock.h>

#ifdef _WIN32
#include "support/child_process.h"
#endif

int main(int argc, char** argv) {
#ifdef _WIN32
    // Some tests start this program a second time, to do a single thing in another process.
    if (int exitCode = 0; depot::test::RunRequestedRole(argc, argv, &exitCode)) return exitCode;
#endif
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
