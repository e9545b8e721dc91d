// What servers refuse, and what users are told then.
#include "directory_pairs/pairs_fixture.h"
#include "servers/server_rows.h"
#include "support/directory_kind.h"

namespace depot::test {
namespace {

using testing::HasSubstr;

class ServerLimitsTest : public PairWorldTest {
protected:
    // Copies a new file of the name in, from a folder into the directory.
    int CopyIn(const std::string& name, const std::string& bytes) {
        plain_.MakeFile("from\\" + name, bytes);
        error_.clear();
        return Copy(plain_.Path("from\\" + name), directory_.Path("to\\" + name), false);
    }
};

TEST_F(ServerLimitsTest, NameOf64CharactersIsTakenAndALongerOneToldInWords) {
    Row("names of more than 64 characters");
    const std::string fits = std::string(60, 'n') + ".kra", longer = "n" + fits;
    EXPECT_THAT(CopyIn(fits, "1"), IsDone()) << error_;
    if (SharedKind() == DirectoryKind::kSamba) {
        But("no, told in words");
        EXPECT_THAT(CopyIn(longer, "1"), Fails());
        EXPECT_THAT(error_, HasSubstr("65 characters"));
        EXPECT_EQ(kMissing, directory_.Bytes("to\\" + longer));
    } else {
        EXPECT_THAT(CopyIn(longer, "1"), IsDone()) << error_;
        EXPECT_EQ("1", directory_.Bytes("to\\" + longer));
    }
}

TEST_F(ServerLimitsTest, FileOfOneMegabyteIsTaken) {
    Row("files of 1 MB");
    EXPECT_THAT(CopyIn("a.kra", std::string(1024 * 1024, 'x')), IsDone()) << error_;
    EXPECT_EQ(1024u * 1024u, directory_.Bytes("to\\a.kra").size());
}

TEST_F(ServerLimitsTest, FileOfThreeMegabytesIsTakenOrToldInWords) {
    Row("files of 3 MB");
    const std::string large(3 * 1024 * 1024, 'x');
    if (SharedKind() == DirectoryKind::k389) {
        But("no, told in words (nsslapd-maxbersize, 2 MB)");
        EXPECT_THAT(CopyIn("a.kra", large), Fails());
        EXPECT_THAT(error_, HasSubstr("3145728 bytes"));
        EXPECT_FALSE(directory_.Holds("to\\a.kra"));
        directory_.MakeFile("to\\a.kra", "1");
        EXPECT_THAT(CopyIn("b.kra", "2"), IsDone()) << error_;
        EXPECT_THAT(Copy(plain_.Path("from\\a.kra"), directory_.Path("to\\a.kra"), false), Fails());
        EXPECT_THAT(error_, HasSubstr("3145728 bytes"));
        EXPECT_EQ("1", directory_.Bytes("to\\a.kra"));
    } else {
        EXPECT_THAT(CopyIn("a.kra", large), IsDone()) << error_;
        EXPECT_EQ(large.size(), directory_.Bytes("to\\a.kra").size());
    }
}

}  // namespace
}  // namespace depot::test
