// Listings of folders that are large, odd or changing.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <set>
#include <thread>

#include "config/file_types.h"
#include "fileops/enumerate.h"
#include "manager/depot_world.h"
#include "support/allocation_count.h"
#include "support/many_files.h"

namespace depot {
namespace {

using test::Allocated;
using test::AllocationCount;

class LargeListingTest : public testing::Test {
protected:
    int List(const std::string& filter = ".kra") {
        const CDepotItem folder("<Work>\\", &work_);
        return Enumerate(list_, &folder, filter, {}, false);
    }
    std::set<std::string> Paths() const {
        std::set<std::string> paths;
        for (std::size_t index = 0; index < list_.Count(); ++index) {
            paths.insert(list_.At(index)->path);
        }
        return paths;
    }
    // What listing so many files and then keeping one type of them takes.
    AllocationCount WorkFor(int count, std::int32_t type) {
        EXPECT_TRUE(test::MakeManyFiles(world_.folder.At("w"), count));
        list_.RemoveAll(true);
        const AllocationCount before = Allocated();
        const CDepotItem folder("<Workshop of the team>\\", &longName_);
        EXPECT_EQ(count, Enumerate(list_, &folder, ".kra", {}, false));
        KeepFileType(list_, type);
        const AllocationCount after = Allocated();
        return {after.calls - before.calls, after.bytes - before.bytes};
    }

    test::DepotWorld world_;
    CDepot& work_ = world_.Add("Work", "Work", "w");
    // The same folder under a name so long that every path takes an allocation.
    CDepot& longName_ = world_.Add("Workshop of the team", "Workshop", "w");
    CDepotItems list_;
};

TEST_F(LargeListingTest, FiftyThousandFilesAreEachListedOnce) {
    ASSERT_TRUE(test::MakeManyFiles(world_.folder.At("w"), 50'000));
    EXPECT_EQ(50'000, List());
    EXPECT_EQ(50'000u, Paths().size());
    EXPECT_TRUE(Paths().contains("<Work>\\f49999.kra"));
    KeepFileType(list_, kSkeinProfile);
    EXPECT_EQ(50'000u, list_.Count());
    KeepFileType(list_, kKickoffProfile);
    EXPECT_EQ(25'000u, list_.Count());
    EXPECT_EQ(0, List(".krv"));
}

TEST_F(LargeListingTest, WorkGrowsAsTheNumberOfFilesDoes) {
    int count = 100;
    for (const std::int32_t type : {kSkeinProfile, kKickoffProfile}) {
        const AllocationCount small = WorkFor(count, type);
        count *= 10;
        const AllocationCount large = WorkFor(count, type);
        // Longer numbers in the names and the doubling of lists leave a little room.
        EXPECT_LE(large.calls, small.calls * 11);
        EXPECT_LE(large.bytes, small.bytes * 12);
    }
}

TEST_F(LargeListingTest, FileTakesAFewAllocationsWhateverTheFolderHolds) {
    const AllocationCount work = WorkFor(2'000, kSkeinProfile);
    EXPECT_LE(work.calls, 2'000u * 12);
    // The find data alone is 320 bytes.
    EXPECT_LE(work.bytes, 2'000u * 1'024);
}

TEST_F(LargeListingTest, NamesOfTwoHundredAndFiftyFiveCharactersAreListedWhole) {
    for (const char letter : {'a', 'b'}) {
        world_.folder.MakeFile("w\\" + std::string(251, letter) + ".kra", "x");
    }
    EXPECT_EQ(2, List());
    for (const char letter : {'a', 'b'}) {
        const std::string name = std::string(251, letter) + ".kra";
        const CDepotItem* const item = list_.FindByName("<Work>\\" + name);
        ASSERT_NE(nullptr, item);
        EXPECT_EQ(name, item->findData->cFileName);
        EXPECT_EQ(104u, item->kindFlags);
    }
}

TEST_F(LargeListingTest, NamesThatHoldADepotsNameOrAFormatAreListedAsTheyAre) {
    const std::set<std::string> names = {"Work.kra", "Work Work.kra", "w%s%n%99999d.kra", "%.kra",
                                         "$USERDIR$.kra"};
    std::set<std::string> paths;
    for (const std::string& name : names) {
        world_.folder.MakeFile("w\\" + name, "x");
        paths.insert("<Work>\\" + name);
    }
    EXPECT_EQ(static_cast<int>(names.size()), List());
    EXPECT_EQ(paths, Paths());
}

// The folder comes and goes with its files while it is listed: each listing is what was there at
// some moment.
TEST_F(LargeListingTest, FolderDeletedDuringItsListingEndsTheListing) {
    const std::string folder = world_.folder.At("w\\sub");
    std::atomic<bool> done{false};
    std::thread changer([&] {
        while (!done) {
            CreateDirectoryA(folder.c_str(), nullptr);
            for (const char* name : {"\\a.kra", "\\b.kra", "\\c.kra"}) {
                CloseHandle(CreateFileA((folder + name).c_str(), GENERIC_WRITE, 0, nullptr,
                                        CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
            }
            for (const char* name : {"\\a.kra", "\\b.kra", "\\c.kra"}) {
                DeleteFileA((folder + name).c_str());
            }
            RemoveDirectoryA(folder.c_str());
        }
    });
    const CDepotItem item("<Work>\\sub", &work_);
    const std::set<std::string> known = {"<Work>\\sub\\a.kra", "<Work>\\sub\\b.kra",
                                         "<Work>\\sub\\c.kra"};
    for (int round = 0; round < 300; ++round) {
        list_.RemoveAll(true);
        const int count = Enumerate(list_, &item, ".kra", {}, false);
        const std::set<std::string> paths = Paths();
        EXPECT_EQ(static_cast<std::size_t>(count), paths.size());
        EXPECT_TRUE(std::includes(known.begin(), known.end(), paths.begin(), paths.end()));
    }
    done = true;
    changer.join();
}

}  // namespace
}  // namespace depot
