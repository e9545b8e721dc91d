#include "fileops/enumerate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cwchar>
#include <iterator>
#include <vector>

#include "config/file_types.h"
#include "manager/depot_world.h"
#include "platform/paths.h"
#include "platform/trace.h"
#include "support/allocation_count.h"
#include "support/import_patch.h"
#include "support/page_names.h"

namespace depot {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class EnumerateTest : public testing::Test {
protected:
    int List(const std::string& folder, const std::string& filter, const std::string& subPath = {},
             bool foldersOnly = false) {
        const CDepotItem item(folder, &work_);
        return Enumerate(list_, &item, filter, subPath, foldersOnly);
    }
    void Make(const std::string& name) {
        if (name.find('\\') != std::string::npos) {
            world_.folder.MakeFolder("w\\" + ParentFolderKeepSlash(name));
        }
        world_.folder.MakeFile("w\\" + name, "x");
    }
    std::vector<std::string> Paths() const {
        std::vector<std::string> paths;
        for (std::size_t index = 0; index < list_.Count(); ++index) {
            paths.push_back(list_.At(index)->path);
        }
        return paths;
    }
    const CDepotItem& Item(const std::string& path) const {
        const CDepotItem* const item = list_.FindByName(path);
        EXPECT_NE(nullptr, item) << path;
        static const CDepotItem none;
        return item ? *item : none;
    }

    test::DepotWorld world_;
    CDepot& work_ = world_.Add("Work", "Travail", "w");
    CDepotItems list_;
};

TEST_F(EnumerateTest, RequestWithAPatternListsTheRootsFoldersAndMatchingFiles) {
    Make("a.kra");
    Make("b.krv");
    Make("sub\\c.kra");
    EXPECT_EQ(2, List("<Work>\\*.kra", ""));
    EXPECT_THAT(Paths(), UnorderedElementsAre("<Work>\\sub", "<Work>\\a.kra"));
}

TEST_F(EnumerateTest, RequestWithAPatternListsASubfolder) {
    Make("a.kra");
    Make("sub\\c.KRA");
    EXPECT_EQ(1, List("<WORK>\\sub\\*.kra", ""));
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\sub\\c.KRA"));
}

TEST_F(EnumerateTest, StarDotStarIsNotEveryFile) {
    Make("a.kra");
    Make("README");
    Make("sub\\c.kra");
    EXPECT_EQ(1, List("<Work>\\", "*.*"));
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\sub"));
    list_.RemoveAll(true);
    EXPECT_EQ(3, List("<Work>\\", ".*"));
    EXPECT_THAT(Paths(), UnorderedElementsAre("<Work>\\a.kra", "<Work>\\README", "<Work>\\sub"));
}

TEST_F(EnumerateTest, NameWithoutADotPassesAFilterThatHoldsIt) {
    Make("README");
    Make("OTHER");
    EXPECT_EQ(1, List("<Work>\\", "readme;.kra"));
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\README"));
}

TEST_F(EnumerateTest, HiddenAndSystemFilesAreListedAndDotNamesAreNot) {
    Make("hidden.kra");
    Make("system.kra");
    SetFileAttributesA(world_.folder.At("w\\hidden.kra").c_str(), FILE_ATTRIBUTE_HIDDEN);
    SetFileAttributesA(world_.folder.At("w\\system.kra").c_str(), FILE_ATTRIBUTE_SYSTEM);
    Make(".dot");
    EXPECT_EQ(3, List("<Work>\\", ".*"));
    EXPECT_THAT(Paths(),
                UnorderedElementsAre("<Work>\\hidden.kra", "<Work>\\system.kra", "<Work>\\.dot"));
}

TEST_F(EnumerateTest, FoldersOnlyLeavesEveryFileOutWhateverTheFilter) {
    Make("a.kra");
    Make("sub.kra\\c.kra");
    for (const char* filter : {"", ".*", ".krv"}) {
        SCOPED_TRACE(filter);
        list_.RemoveAll(true);
        EXPECT_EQ(1, List("<Work>\\", filter, "", true));
        EXPECT_THAT(Paths(), ElementsAre("<Work>\\sub.kra"));
    }
}

TEST_F(EnumerateTest, SubPathIsJoined) {
    Make("A\\B\\c.kra");
    EXPECT_EQ(1, List("<Work>\\A", ".*", "B"));
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\A\\B\\c.kra"));
}

TEST_F(EnumerateTest, CountIsThatOfTheItemsAdded) {
    Make("a.kra");
    Make("b.kra");
    EXPECT_EQ(2, List("<Work>\\", ".*"));
    EXPECT_EQ(2, List("<Work>\\", ".*"));
    EXPECT_EQ(4u, list_.Count());
}

TEST_F(EnumerateTest, WhatCannotBeListedGivesNothing) {
    Make("a.kra");
    list_.Append(std::make_unique<CDepotItem>("x", nullptr));
    EXPECT_EQ(0, Enumerate(list_, nullptr, ".*", {}, false));
    const CDepotItem homeless("<Work>\\", nullptr);
    EXPECT_EQ(0, Enumerate(list_, &homeless, ".*", {}, false));
    EXPECT_EQ(0, List("", ".*"));
    EXPECT_EQ(0, List("<Work>\\missing", ".*"));
    EXPECT_EQ(0, List("<Work>\\a.kra", ".*"));
    CDepot& gone = world_.AddAt("Gone", "Gone", world_.folder.At("none"));
    const CDepotItem missing("<Gone>\\", &gone);
    EXPECT_EQ(0, Enumerate(list_, &missing, ".*", {}, false));
    EXPECT_THAT(Paths(), ElementsAre("x"));
}

TEST_F(EnumerateTest, DoubledBackslashesOfARequestAreNotHandedOn) {
    Make("sub\\c.kra");
    for (const char* folder : {"<Work>\\\\sub", "<Work>\\sub\\\\", "<Work>\\\\sub\\\\\\"}) {
        SCOPED_TRACE(folder);
        list_.RemoveAll(true);
        EXPECT_EQ(1, List(folder, ".kra"));
        EXPECT_THAT(Paths(), ElementsAre("<Work>\\sub\\c.kra"));
    }
}

TEST_F(EnumerateTest, DepotWithoutARootListsNothing) {
    CDepot& rootless = world_.AddAt("Rootless", "Rootless", "");
    const CDepotItem root("<Rootless>\\", &rootless);
    EXPECT_EQ(0, Enumerate(list_, &root, ".*", {}, false));
    EXPECT_THAT(Paths(), IsEmpty());
}

TEST_F(EnumerateTest, DisplayPathsHoldNoDoubledBackslash) {
    Make("sub\\c.kra");
    for (const char* folder : {"<Work>\\sub", "<Work>\\sub\\", "<Work>\\sub\\*.kra"}) {
        SCOPED_TRACE(folder);
        list_.RemoveAll(true);
        EXPECT_EQ(1, List(folder, std::string(folder).ends_with("kra") ? "" : ".*"));
        EXPECT_THAT(Paths(), ElementsAre("<Work>\\sub\\c.kra"));
    }
}

TEST_F(EnumerateTest, FolderNamedByItsStoragePathIsListedUnderDisplayPaths) {
    Make("sub\\c.kra");
    EXPECT_EQ(1, List(world_.folder.At("w\\sub"), ".*"));
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\sub\\c.kra"));
}

TEST_F(EnumerateTest, ItemsCarryTypeKindDepotAndFindData) {
    Make("a.kra");
    Make("b.krc");
    world_.folder.MakeFile("w\\five.kre", "[PROFILE]\r\nSession Terminal Type=5\r\n");
    Make("plain.kre");
    Make("sub\\c.kra");
    ASSERT_EQ(5, List("<Work>\\", ".*"));
    EXPECT_EQ(64u, Item("<Work>\\a.kra").fileType);
    EXPECT_EQ(104u, Item("<Work>\\a.kra").kindFlags);
    EXPECT_EQ(0u, Item("<Work>\\b.krc").fileType);
    EXPECT_EQ(0u, Item("<Work>\\b.krc").kindFlags);
    EXPECT_EQ(1u, Item("<Work>\\five.kre").fileType);
    EXPECT_EQ(5u, Item("<Work>\\five.kre").kindFlags);
    EXPECT_EQ(1u, Item("<Work>\\plain.kre").kindFlags);
    EXPECT_EQ(0u, Item("<Work>\\sub").fileType);
    EXPECT_EQ(kFolderKind, Item("<Work>\\sub").kindFlags);
    for (std::size_t index = 0; index < list_.Count(); ++index) {
        EXPECT_EQ(&work_, list_.At(index)->depot);
    }
    ASSERT_NE(nullptr, Item("<Work>\\a.kra").findData);
    EXPECT_STREQ("a.kra", Item("<Work>\\a.kra").findData->cFileName);
    EXPECT_EQ(1u, Item("<Work>\\a.kra").findData->nFileSizeLow);
    ASSERT_NE(nullptr, Item("<Work>\\sub").findData);
    EXPECT_NE(0u, Item("<Work>\\sub").findData->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
}

// A file system that delivers names in an order of its own.
BOOL WINAPI DeliverNext(HANDLE, WIN32_FIND_DATAW* found) {
    static constexpr const wchar_t* kNames[] = {L"b.kra", L"c.kra", L"a.kra"};
    static std::size_t next = 0;
    if (next == std::size(kNames)) {
        next = 0;
        SetLastError(ERROR_NO_MORE_FILES);
        return FALSE;
    }
    *found = {};
    found->dwFileAttributes = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    found->ftCreationTime.dwLowDateTime = 1;
    found->ftLastAccessTime.dwLowDateTime = 2;
    found->ftLastWriteTime.dwLowDateTime = 3;
    std::wcscpy(found->cFileName, kNames[next++]);
    return TRUE;
}

TEST_F(EnumerateTest, ItemsStandInTheOrderAndWithTheDataOfTheFileSystem) {
    Make("first.txt");
    const test::ImportPatch<decltype(&FindNextFileW)> patch("FindNextFileW", &DeliverNext);
    ASSERT_TRUE(patch.IsInPlace());
    EXPECT_EQ(3, List("<Work>\\", ".kra"));
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\b.kra", "<Work>\\c.kra", "<Work>\\a.kra"));
    const WIN32_FIND_DATAA& data = *Item("<Work>\\a.kra").findData;
    EXPECT_EQ(DWORD{FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM}, data.dwFileAttributes);
    EXPECT_EQ(1u, data.ftCreationTime.dwLowDateTime);
    EXPECT_EQ(2u, data.ftLastAccessTime.dwLowDateTime);
    EXPECT_EQ(3u, data.ftLastWriteTime.dwLowDateTime);
}

TEST_F(EnumerateTest, FilesThatCannotBeNamedAreCountedInTheListAndInTheTrace) {
    Make("A.kra");
    const std::wstring folder = WideFromAnsi(world_.folder.At("w")) + L"\\";
    for (const wchar_t* name : {L"\x0100.kra", L"\xFF21.kra"}) {
        test::MakeWideFile(folder + name, "x");
    }
    const std::string trace = world_.folder.At("trace.txt");
    SetEnvironmentVariableA(kTraceVariable, trace.c_str());
    StartTrace();
    EXPECT_EQ(1, List("<Work>\\", ".kra"));
    StopTrace();
    SetEnvironmentVariableA(kTraceVariable, nullptr);
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\A.kra"));
    EXPECT_EQ(2u, list_.unsafeNames);
    EXPECT_THAT(test::FileBytes(trace), testing::AllOf(testing::HasSubstr(" names left out \""),
                                                       testing::EndsWith(" ms 2\r\n")));
}

TEST_F(EnumerateTest, ItemThatMemoryRunsOutForIsLeftOutAndNotCounted) {
    Make("a.kra");
    Make("sub\\b.kra");
    Make("c.kra");
    const std::set<int> counts = test::CountsWithoutMemory([&] {
        list_.RemoveAll(true);
        const int count = List("<Work>\\", ".*");
        EXPECT_EQ(static_cast<std::size_t>(count), list_.Count());
        return count;
    });
    EXPECT_TRUE(counts.contains(2));
    EXPECT_EQ(3, List("<Work>\\", ".*"));
}

TEST_F(EnumerateTest, NamesThatLookLikeSyntaxAreListedAsTheyAre) {
    const std::string longest = std::string(200, 'n') + ".kra";
    for (const std::string& name :
         {std::string("100%s%n.kra"), std::string("a.Work.kra"), longest}) {
        Make(name);
    }
    EXPECT_EQ(3, List("<Work>\\", ".kra"));
    EXPECT_THAT(Paths(), UnorderedElementsAre("<Work>\\100%s%n.kra", "<Work>\\a.Work.kra",
                                              "<Work>\\" + longest));
}

class KeepFileTypeTest : public testing::Test {
protected:
    void Add(const char* path) { list_.Append(std::make_unique<CDepotItem>(path, nullptr)); }
    CDepotItems list_;
};

TEST_F(KeepFileTypeTest, SecondOfTwoNeighboursOfAWrongTypeStays) {
    for (const char* path : {"<W>\\1.krv", "<W>\\2.krv", "<W>\\3.kra"}) Add(path);
    KeepFileType(list_, kSkeinProfile);
    ASSERT_EQ(2u, list_.Count());
    EXPECT_EQ("<W>\\2.krv", list_.At(0)->path);
    EXPECT_EQ("<W>\\3.kra", list_.At(1)->path);
}

TEST_F(KeepFileTypeTest, TypeIsThatOfThePath) {
    for (const char* path : {"<W>\\sub", "<W>\\3.kra", "<W>\\4.krv"}) Add(path);
    KeepFileType(list_, kKickoffProfile);
    ASSERT_EQ(2u, list_.Count());
    EXPECT_EQ("<W>\\3.kra", list_.At(0)->path);
    EXPECT_EQ("<W>\\4.krv", list_.At(1)->path);
}

TEST_F(KeepFileTypeTest, EmptyListStaysEmpty) {
    KeepFileType(list_, kSkeinProfile);
    EXPECT_EQ(0u, list_.Count());
}

}  // namespace
}  // namespace depot
