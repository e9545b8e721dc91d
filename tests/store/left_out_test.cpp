// What the trace says of each entry that a listing leaves out.
#include "platform/trace.h"
#include "store/folder_store.h"
#include "store/store_worlds.h"
#include "store/tree.h"
#include "support/memory_store.h"
#include "support/scratch.h"

namespace depot::test {
namespace {

using testing::HasSubstr;

class LeftOutTest : public StoreTest {
protected:
    // The trace of one listing of the folder.
    std::string TraceOfListing() {
        const std::string file = folder_.At("trace.txt");
        SetEnvironmentVariableA(kTraceVariable, file.c_str());
        StartTrace();
        std::vector<TreeItem> items;
        LeftOut left;
        EXPECT_THAT(ListChildren(store_, world_->Root(), items, left), IsDone());
        StopTrace();
        SetEnvironmentVariableA(kTraceVariable, nullptr);
        return FileBytes(file);
    }

    ScratchFolder folder_;
};

TEST_P(LeftOutTest, EachEntryHasALineWithItsReasonAndItsFolder) {
    world_->AddWhatIsLeftOut();
    AddFile(At("listed.kra"), "1");
    const std::string trace = TraceOfListing();
    std::size_t lines = 0;
    for (std::size_t at = trace.find(" left out \""); at != std::string::npos;
         at = trace.find(" left out \"", at + 1)) {
        ++lines;
    }
    EXPECT_EQ(world_->ReasonsToLeaveOut().size(), lines) << trace;
    for (const std::string& reason : world_->ReasonsToLeaveOut()) {
        EXPECT_THAT(trace, HasSubstr(reason + ", in \"" + world_->Root()));
    }
    EXPECT_THAT(trace, testing::Not(HasSubstr("left out \"listed")));
}

INSTANTIATE_TEST_SUITE_P(All, LeftOutTest, EveryStore(), StoreName);

TEST(UnsafeLocalNamesTextTest, ReportsHowManyWereLeftOut) {
    EXPECT_EQ("", UnsafeLocalNamesText(0));
    EXPECT_EQ("1 file or folder was left out: the system's code page cannot hold the name.",
              UnsafeLocalNamesText(1));
    EXPECT_EQ("12 files and folders were left out: the system's code page cannot hold the name.",
              UnsafeLocalNamesText(12));
}

TEST(LinksTextTest, ReportsHowManyLinksWereLeftOut) {
    EXPECT_EQ("", LinksText(0));
    EXPECT_EQ("1 link to a folder was left out.", LinksText(1));
    EXPECT_EQ("12 links to folders were left out.", LinksText(12));
}

}  // namespace
}  // namespace depot::test
