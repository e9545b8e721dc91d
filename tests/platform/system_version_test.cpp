#include "platform/system_version.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

TEST(SystemVersionTest, RecordIsWhatTheSystemReports) {
    OSVERSIONINFOA expected = {};
    expected.dwOSVersionInfoSize = 148;
    ASSERT_TRUE(GetVersionExA(&expected));
    const OSVERSIONINFOA version = SystemVersion();
    EXPECT_EQ(148u, version.dwOSVersionInfoSize);
    EXPECT_EQ(expected.dwMajorVersion, version.dwMajorVersion);
    EXPECT_EQ(expected.dwMinorVersion, version.dwMinorVersion);
    EXPECT_EQ(expected.dwBuildNumber, version.dwBuildNumber);
    EXPECT_EQ(DWORD{VER_PLATFORM_WIN32_NT}, version.dwPlatformId);
    EXPECT_LE(6u, version.dwMajorVersion);
}

}  // namespace
}  // namespace depot
