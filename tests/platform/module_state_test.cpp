#include "platform/module_state.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/text.h"
#include "support/import_patch.h"

namespace depot {
namespace {

HANDLE CurrentContext() {
    HANDLE context = nullptr;
    EXPECT_TRUE(GetCurrentActCtx(&context));
    if (context != nullptr) ReleaseActCtx(context);
    return context;
}

TEST(OwnModuleTest, ModuleIsTheOneThatTheCodeIsLinkedInto) {
    EXPECT_EQ(GetModuleHandleA(nullptr), OwnModule());
}

TEST(OwnModuleTest, PathIsTheFileOfTheModule) {
    wchar_t expected[MAX_PATH] = {};
    ASSERT_NE(0u, GetModuleFileNameW(nullptr, expected, MAX_PATH));
    EXPECT_EQ(expected, OwnModulePath());
}

const std::wstring longPath = L"C:\\" + std::wstring(3000, L'x') + L".dll";

// Cuts the path to the room that there is, as the system does.
DWORD WINAPI GiveLongPath(HMODULE, wchar_t* path, DWORD room) {
    const DWORD length = std::min(static_cast<DWORD>(longPath.size()), room - 1);
    path[longPath.copy(path, length)] = L'\0';
    return length < longPath.size() ? room : length;
}

TEST(OwnModuleTest, LongPathIsGivenWhole) {
    const test::ImportPatch<decltype(&GetModuleFileNameW)> naming("GetModuleFileNameW",
                                                                  &GiveLongPath);
    ASSERT_TRUE(naming.IsInPlace());
    EXPECT_EQ(longPath, OwnModulePath());
}

DWORD WINAPI FillTheRoom(HMODULE, char* path, DWORD room) {
    std::fill_n(path, room, '\\');
    return room;
}

TEST(OwnModuleTest, PathThatIsTooLongHasNoFolder) {
    const test::ImportPatch<decltype(&GetModuleFileNameA)> naming("GetModuleFileNameA",
                                                                  &FillTheRoom);
    ASSERT_TRUE(naming.IsInPlace());
    EXPECT_EQ("", OwnModuleFolder());
}

TEST(OwnModuleTest, FolderEndsInABackslash) {
    char path[MAX_PATH] = {};
    ASSERT_NE(0u, GetModuleFileNameA(nullptr, path, sizeof(path)));
    EXPECT_EQ(std::string(path), OwnModuleFolder() + "platform_test.exe");
    EXPECT_TRUE(OwnModuleFolder().ends_with('\\'));
}

TEST(ModuleStateScopeTest, ModuleWithoutAManifestLeavesTheCallersContext) {
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
