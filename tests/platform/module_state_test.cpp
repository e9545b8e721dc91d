#include "platform/module_state.h"

#include <gtest/gtest.h>

#include "platform/text.h"

namespace depot {
namespace {

HANDLE CurrentContext() {
    HANDLE context = nullptr;
    EXPECT_TRUE(GetCurrentActCtx(&context));
    if (context != nullptr) ReleaseActCtx(context);
    return context;
}

TEST(OwnModuleTest, TheModuleIsTheOneThatTheCodeIsLinkedInto) {
    EXPECT_EQ(GetModuleHandleA(nullptr), OwnModule());
}

TEST(OwnModuleTest, ThePathIsTheFileOfTheModule) {
    wchar_t expected[MAX_PATH] = {};
    ASSERT_NE(0u, GetModuleFileNameW(nullptr, expected, MAX_PATH));
    EXPECT_EQ(expected, OwnModulePath());
}

TEST(OwnModuleTest, TheFolderEndsInABackslash) {
    char path[MAX_PATH] = {};
    ASSERT_NE(0u, GetModuleFileNameA(nullptr, path, sizeof(path)));
    EXPECT_EQ(std::string(path), OwnModuleFolder() + "platform_test.exe");
    EXPECT_TRUE(OwnModuleFolder().ends_with('\\'));
}

TEST(ModuleStateScopeTest, AModuleWithoutAManifestLeavesTheCallersContext) {
    const HANDLE before = CurrentContext();
    {
        const ModuleStateScope outer;
        const ModuleStateScope inner;
        EXPECT_EQ(before, CurrentContext());
    }
    EXPECT_EQ(before, CurrentContext());
}

}  // namespace
}  // namespace depot
