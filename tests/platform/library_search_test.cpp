#include "platform/library_search.h"

#include <gtest/gtest.h>

#include "platform/module_state.h"
#include "support/child_process.h"
#include "support/scratch.h"

namespace depot::test {
namespace {

bool Loads(const char* name) {
    return UniqueModule(LoadLibraryA(name)) != nullptr;
}

// The exit code says which libraries were found by their bare names: 1 for one in the current
// folder, 2 for one on the search path; 4 for one beside the program, 8 for the system's.
int SearchFor(const Arguments& arguments) {
    const std::string searched = arguments[0] + "\\path";
    SetCurrentDirectoryA((arguments[0] + "\\current").c_str());
    SetEnvironmentVariableA("PATH", searched.c_str());
    if (arguments[1] == "restricted") RestrictLibrarySearch();
    return (Loads("depot_tests_current.dll") ? 1 : 0) + (Loads("depot_tests_path.dll") ? 2 : 0) +
           (Loads("qdirsvc.dll") ? 4 : 0) + (Loads("winspool.drv") ? 8 : 0);
}
const RoleRegistration searchFor("search-for", SearchFor);

TEST(LibrarySearchTest, NeitherTheCurrentFolderNorTheSearchPathIsLookedThrough) {
    const ScratchFolder folder;
    folder.MakeFolder("current");
    folder.MakeFolder("path");
    const std::string library = OwnModuleFolder() + "qdirsvc.dll";
    for (const char* name : {"current\\depot_tests_current.dll", "path\\depot_tests_path.dll"}) {
        ASSERT_TRUE(CopyFileA(library.c_str(), folder.At(name).c_str(), FALSE));
    }
    const std::string root = folder.At("current").substr(0, folder.At("current").rfind('\\'));
    EXPECT_EQ(15, ChildProcess("search-for", {root, "as it was"}).ExitCode());
    EXPECT_EQ(12, ChildProcess("search-for", {root, "restricted"}).ExitCode());
}

}  // namespace
}  // namespace depot::test
