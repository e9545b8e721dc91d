// Names of many characters, between every two kinds of store.
#include <filesystem>

#include "directory_pairs/pairs_fixture.h"
#include "platform/system_code_page.h"
#include "support/page_names.h"
#include "support/results.h"

namespace depot::test {
namespace {

using PairCharactersTest = PairTest;

// The names of the code page, which the program follows from here on.
struct NarrowedNames {
    NarrowedNames() {
        InstallSystemCodePage();
        for (const std::wstring& name : page.files) files.push_back(Narrowed(name));
    }

    const PageNames page = NamesOfThisPage();
    const std::string folder = Narrowed(page.folder);
    std::vector<std::string> files;
};

// How many files of the name there are anywhere below a folder.
int CountFiles(const std::string& folder, const std::wstring& name) {
    int count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(WideFromAnsi(folder))) {
        if (entry.path().filename().wstring() == name) ++count;
    }
    return count;
}

TEST_P(PairCharactersTest, CopiesMovesAndTreesArriveUnderTheirNames) {
    const NarrowedNames names;
    StoreContents expected = {{names.folder, kFolderMark}};
    for (const std::string& name : names.files) {
        SCOPED_TRACE(name);
        Source().MakeFile("from\\" + name, name);
        Source().MakeFile("from\\" + names.folder + "\\" + name, name);
        EXPECT_THAT(Copy(From(name), To(name), true), IsDone()) << error_;
        EXPECT_EQ(name, Target().Bytes("to\\" + name));
        EXPECT_THAT(OnItem(FO_MOVE, From(name), To("m" + name)), IsDone()) << error_;
        EXPECT_EQ(name, Target().Bytes("to\\m" + name));
        EXPECT_FALSE(Source().Holds("from\\" + name));
        expected[name] = expected["m" + name] = expected[names.folder + "\\" + name] = name;
    }
    EXPECT_THAT(OnList(FO_MOVE, {From(names.folder)}, To("")), IsDone()) << error_;
    EXPECT_EQ(expected, Target().Contents("to"));
    EXPECT_EQ(StoreContents(), Source().Contents("from"));
}

TEST_P(PairCharactersTest, NamesInTheFormOfShortOnesArriveAndReplaceNoOtherFile) {
    const NarrowedNames names;
    const std::string form = names.folder + "~1.kra";
    Source().MakeFile("from\\" + form, "1");
    EXPECT_THAT(Copy(From(form), To(""), true), IsDone()) << error_;
    EXPECT_EQ("1", Target().Bytes("to\\" + form));
    if (!FromDirectory() || ToDirectory()) return;
    Target().MakeFile("to\\" + names.folder + " and more.kra", "mine");
    const std::string another = ShortNameOf(Target().At("to\\" + names.folder + " and more.kra"));
    Source().MakeFile("from\\" + another, "x");
    ExpectRefused([&] { return OnItem(FO_COPY, From(another), To("")); });
    ExpectRefused([&] { return OnList(FO_MOVE, {From(another)}, To("")); });
}

TEST_P(PairCharactersTest, MovesOfTreesLoseNoFileThatCannotBeNamed) {
    // Neither a server nor the emulator's file system takes what UTF-8 cannot hold.
    if (GetACP() == CP_UTF8) return;
    const NarrowedNames names;
    Source().MakeFile("from\\a.kra", "1");
    // A file that narrow texts cannot name.
    const std::wstring& name = names.page.refused.front();
    const std::wstring folder = WideFromAnsi(Source().At("from"));
    if (FromDirectory()) {
        world_.server.AddFile(Utf8FromWide(name), Utf8FromWide(folder), "x");
    } else {
        MakeWideFile(folder + L"\\" + name, "x");
    }
    const std::string tree = Source().Path("from");
    const int movedItem = OnItem(FO_MOVE, tree, To("item"));
    const int movedList = OnList(FO_MOVE, {tree}, To(""));
    if (FromDirectory() || ToDirectory()) {
        EXPECT_THAT(movedItem, Fails());
        EXPECT_THAT(movedList, Fails());
        if (FromDirectory()) {
            EXPECT_THAT(world_.server.Show(Utf8FromWide(folder), "one", "cn"),
                        testing::HasSubstr("cn:: "));
        } else {
            EXPECT_EQ("x", WideBytes(folder + L"\\" + name));
        }
    } else {
        // The shell moves what a folder holds, whatever its name.
        EXPECT_EQ(1, CountFiles(world_.folder.Path(), name));
    }
}

INSTANTIATE_TEST_SUITE_P(EveryPair, PairCharactersTest, testing::ValuesIn(EveryPair()), PairName);

}  // namespace
}  // namespace depot::test
