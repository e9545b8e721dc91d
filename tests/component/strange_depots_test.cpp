// Unusual roots, keys and path lengths, as clients meet them.
#include "component/component.h"
#include "support/results.h"

namespace depot::test {
namespace {

class StrangeDepotsTest : public ComponentTest {
protected:
    void Define(const std::string& key, const std::string& root) {
        depots_.Text(key, "Path1", root);
    }

    // Writes a value through one session and reads it through another.
    std::wstring WriteAndRead(const std::string& path, const wchar_t* value) {
        {
            Session writer(*api_);
            EXPECT_THAT(api_->DPLoadFile(writer.Address(), Text(path)), IsOk());
            EXPECT_THAT(api_->DPSetProfileString(writer, Text("S"), Text("K"), Text(value)),
                        IsOk());
            EXPECT_THAT(api_->DPFlushFile(writer), IsOk());
        }
        Session reader(*api_);
        EXPECT_THAT(api_->DPLoadFile(reader.Address(), Text(path)), IsOk());
        return Read(reader, L"S", L"K");
    }

    HRESULT Found(const std::string& path) { return api_->DPFileExists(0, Text(path)); }
};

TEST_F(StrangeDepotsTest, RootWithTwoBackslashesHoldsFiles) {
    Define("Twice", folder_.MakeFolder("twice") + "\\\\");
    EXPECT_EQ(L"1", WriteAndRead("<Twice>\\a.kra", L"1"));
    EXPECT_TRUE(Exists(folder_.At("twice\\a.kra")));
    EXPECT_THAT(Found("<Twice>\\a.kra"), IsOk());
}

TEST_F(StrangeDepotsTest, DriveRootHoldsFiles) {
    Define("Drive", folder_.Path().substr(0, 3));
    const std::string below = folder_.Path().substr(3);
    EXPECT_EQ(L"1", WriteAndRead("<Drive>\\" + below + "\\a.kra", L"1"));
    EXPECT_TRUE(Exists(folder_.At("a.kra")));
}

TEST_F(StrangeDepotsTest, RelativeRootFollowsTheCurrentFolder) {
    Define("Here", "sub");
    folder_.MakeFolder("sub");
    folder_.MakeFile("sub\\a.kra", "");
    char before[MAX_PATH] = {};
    GetCurrentDirectoryA(sizeof(before), before);
    EXPECT_THAT(Found("<Here>\\a.kra"), IsRefused());
    ASSERT_TRUE(SetCurrentDirectoryA(folder_.Path().c_str()));
    EXPECT_THAT(Found("<Here>\\a.kra"), IsOk());
    SetCurrentDirectoryA(before);
}

TEST_F(StrangeDepotsTest, EmptyRootAndUnreachableShareHoldNothing) {
    Define("Empty", "");
    Define("Share", "\\\\127.0.0.1\\no-such-share");
    for (const char* path : {"<Empty>\\no-such-folder\\a.kra", "<Share>\\a.kra"}) {
        SCOPED_TRACE(path);
        EXPECT_THAT(Found(path), IsRefused());
        Session session(*api_);
        EXPECT_THAT(api_->DPIsPathWriteAble(session, Text(path)), IsRefused());
        EXPECT_THAT(api_->DPLoadFile(session.Address(), Text(path)), IsOk());
        EXPECT_EQ(L"(default)", Read(session, L"S", L"K"));
    }
}

TEST_F(StrangeDepotsTest, KeysThatContainEachOtherHoldTheirOwnFiles) {
    const char* const keys[] = {"A", "AB", "<A>", "B<A>", "<A>B"};
    int number = 0;
    for (const char* key : keys) {
        Define(key, folder_.MakeFolder("root" + std::to_string(++number)));
    }
    number = 0;
    for (const char* key : keys) {
        SCOPED_TRACE(key);
        const std::wstring value = std::to_wstring(++number);
        EXPECT_EQ(value, WriteAndRead(std::string("<") + key + ">\\a.kra", value.c_str()));
        EXPECT_EQ("[S]\r\nK=" + std::to_string(number) + "\r\n",
                  FileBytes(folder_.At("root" + std::to_string(number) + "\\a.kra")));
    }
}

TEST_F(StrangeDepotsTest, DisplayPathsOfEveryLengthAreAnswered) {
    DefineDepot("Work", "My Work");
    for (const std::size_t length : {259, 260, 261, 100'000}) {
        SCOPED_TRACE(length);
        const std::string path = "<Work>\\" + std::string(length - 11, 'x') + ".kra";
        ASSERT_EQ(length, path.size());
        EXPECT_THAT(Found(path), IsRefused());
        Session session(*api_);
        OutText display, depotPath;
        EXPECT_THAT(api_->DPGetDepotDisplayPath(session, Text(path), display), IsOk());
        EXPECT_EQ(L"<My Work>\\", display.Value());
        EXPECT_THAT(api_->DPGetPathFromDisplayName(session, Text("<My Work>\\" + path.substr(7)),
                                                   depotPath),
                    IsOk());
        EXPECT_EQ(Wide(path), depotPath.Value());
        EXPECT_THAT(api_->DPIsPathWriteAble(session, Text(path)), IsRefused());
        EXPECT_THAT(api_->DPLoadFile(session.Address(), Text(path)), IsOk());
        EXPECT_EQ(L"(default)", Read(session, L"S", L"K"));
    }
}

}  // namespace
}  // namespace depot::test
