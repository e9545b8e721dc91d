// Names of many characters, between every two kinds of store.
#include <filesystem>

#include "directory_pairs/pairs_fixture.h"
#include "platform/system_code_page.h"
#include "support/page_names.h"
#include "support/results.h"

namespace depot::test {
namespace {

class PairCharactersTest : public PairTest {
protected:
    PairCharactersTest() {
        InstallSystemCodePage();
        for (const std::wstring& name : page_.files) files_.push_back(Narrowed(name));
    }

    // A file that narrow texts cannot name.
    void MakeUnnamed(const std::wstring& name) {
        if (FromDirectory()) {
            server_.AddFile(Utf8FromWide(name), Utf8FromWide(WideFromAnsi(directory_.At("from"))),
                            "x");
        } else {
            MakeWideFile(WideFromAnsi(Source().At("from\\")) + name, "x");
        }
    }

    bool HoldsUnnamed(const std::wstring& name) {
        if (!FromDirectory()) {
            return WideBytes(WideFromAnsi(Source().At("from\\")) + name) == "x";
        }
        return server_.Show(Utf8FromWide(WideFromAnsi(directory_.At("from"))), "one", "cn")
                   .find("cn:: ") != std::string::npos;
    }

    // How many files of the name there are anywhere.
    int CountFiles(const std::wstring& name) const {
        int count = 0;
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(WideFromAnsi(world_.folder.Path()))) {
            if (entry.path().filename().wstring() == name) ++count;
        }
        return count;
    }

    const PageNames page_ = NamesOfThisPage();
    const std::string pageFolder_ = Narrowed(page_.folder);
    std::vector<std::string> files_;
};

TEST_P(PairCharactersTest, CopiesMovesAndTreesArriveUnderTheirNames) {
    StoreContents expected = {{pageFolder_, kFolderMark}};
    for (const std::string& name : files_) {
        SCOPED_TRACE(name);
        Source().MakeFile("from\\" + name, name);
        Source().MakeFile("from\\" + pageFolder_ + "\\" + name, name);
        EXPECT_THAT(Copy(From(name), To(name), true), IsDone()) << error_;
        EXPECT_EQ(name, Target().Bytes("to\\" + name));
        EXPECT_THAT(OnItem(FO_MOVE, From(name), To("m" + name)), IsDone()) << error_;
        EXPECT_EQ(name, Target().Bytes("to\\m" + name));
        EXPECT_FALSE(Source().Holds("from\\" + name));
        expected[name] = expected["m" + name] = expected[pageFolder_ + "\\" + name] = name;
    }
    EXPECT_THAT(OnList(FO_MOVE, {From(pageFolder_)}, To("")), IsDone()) << error_;
    EXPECT_EQ(expected, Target().Contents("to"));
    EXPECT_EQ(StoreContents(), Source().Contents("from"));
}

TEST_P(PairCharactersTest, MovesOfTreesLoseNoFileThatCannotBeNamed) {
    // Neither a server nor the emulator's file system takes what UTF-8 cannot hold.
    if (GetACP() == CP_UTF8) return;
    Source().MakeFile("from\\a.kra", "1");
    const std::wstring& name = page_.refused.front();
    MakeUnnamed(name);
    const std::string tree = Source().Path("from");
    const int movedItem = OnItem(FO_MOVE, tree, To("item"));
    const int movedList = OnList(FO_MOVE, {tree}, To(""));
    if (FromDirectory() || ToDirectory()) {
        EXPECT_THAT(movedItem, Fails());
        EXPECT_THAT(movedList, Fails());
        EXPECT_TRUE(HoldsUnnamed(name));
    } else {
        // The shell moves what a folder holds, whatever its name.
        EXPECT_EQ(1, CountFiles(name));
    }
}

INSTANTIATE_TEST_SUITE_P(EveryPair, PairCharactersTest, testing::ValuesIn(EveryPair()), PairName);

}  // namespace
}  // namespace depot::test
