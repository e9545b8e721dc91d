// Edits that were stored and are missing in the entry when it is loaded again.
#include "directory_depots/depot_fixture.h"

namespace depot {
namespace {

using test::RecoveredFiles;
using testing::IsEmpty;
using testing::StartsWith;

class LostEditsTest : public test::DepotFixture {
protected:
    void Prepare(DWORD setting) {
        Use(server_, base_, setting);
        server_.AddFile("a.kra", base_, "[S]\r\nK=old\r\nL=old\r\n");
        ASSERT_TRUE(LoadChanged()->Release());
    }
    void ExpectTheLossIsReportedOnce() {
        Overwrite("[S]\r\nK=old\r\nL=theirs\r\n");
        EXPECT_EQ("theirs", Load()->ReadString("S", "L", "", 100));
        ExpectRecovered("[S]\r\nK=new\r\nL=old\r\n");
        ASSERT_EQ(1u, boxes_.Texts().size());
        EXPECT_THAT(boxes_.Texts().back(),
                    StartsWith("\"a.kra\" was changed by someone else after you had stored it, and "
                               "lacks changes of yours; your version is kept here:\n"));
        Load();
        EXPECT_EQ(1u, RecoveredFiles().size());
    }
};

TEST_F(LostEditsTest, NextLoadKeepsTheVersionThatWasStoredAndSaysSoOnce) {
    Prepare(1);
    ExpectTheLossIsReportedOnce();
}

TEST_F(LostEditsTest, MergingLocationKeepsItAsWell) {
    Prepare(2);
    ExpectTheLossIsReportedOnce();
}

TEST_F(LostEditsTest, EditsOfOthersThatGoOnFromOursAreNoLoss) {
    Prepare(1);
    Overwrite("[S]\r\nK=new\r\nL=theirs\r\n");
    Load();
    Overwrite("[S]\r\nK=theirs\r\nL=theirs\r\n");
    Load();
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(LostEditsTest, LocationThatDetectsNoConflictsLooksForNone) {
    Prepare(0);
    Overwrite("[S]\r\nK=old\r\nL=theirs\r\n");
    Load();
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

}  // namespace
}  // namespace depot
