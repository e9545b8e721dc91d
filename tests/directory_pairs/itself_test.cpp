// Operations whose source and target are one place, by whatever names the two go.
#include "directory_pairs/pairs_fixture.h"
#include "support/results.h"

namespace depot::test {
namespace {

// Names of one place: of a folder outside every depot, of a folder in a depot, of a folder in a
// directory.
enum class Name {
    kPlain,
    kDepot,
    kPathInDepot,
    kOtherDepot,
    kDirectory,
    kOtherLetters,
    kOtherDirectoryDepot
};

using NamePair = std::pair<Name, Name>;

std::vector<NamePair> NamesOfOnePlace() {
    std::vector<NamePair> pairs = {{Name::kPlain, Name::kPlain}};
    const std::vector<Name> places[] = {
        {Name::kDepot, Name::kPathInDepot, Name::kOtherDepot},
        {Name::kDirectory, Name::kOtherLetters, Name::kOtherDirectoryDepot}};
    for (const std::vector<Name>& names : places) {
        for (const Name from : names) {
            for (const Name to : names) pairs.emplace_back(from, to);
        }
    }
    return pairs;
}

class ItselfTest : public PairWorldTest, public testing::WithParamInterface<NamePair> {
protected:
    ItselfTest() {
        world_.AddAt("Same", "Same", world_.folder.At("p\\..\\h"));
        world_.AddOf(world_.server.Location(world_.base), "Twin");
    }

    TestFolder& Place() {
        const Name name = GetParam().first;
        if (name == Name::kPlain) return plain_;
        return name < Name::kDirectory ? static_cast<TestFolder&>(folder_) : directory_;
    }

    std::string PathBy(Name name, const std::string& path) {
        switch (name) {
            case Name::kPlain:
                return plain_.Path(path);
            case Name::kDepot:
                return folder_.Path(path);
            case Name::kPathInDepot:
                return folder_.At(path);
            case Name::kOtherDepot:
                return "<Same>\\" + path;
            case Name::kDirectory:
                return directory_.Path(path);
            case Name::kOtherLetters:
                return "<WORK>\\" + ToUpper(path);
            default:
                return "<Twin>\\" + path;
        }
    }
    static std::string ToUpper(std::string text) {
        CharUpperBuffA(text.data(), static_cast<DWORD>(text.size()));
        return text;
    }
    std::string From(const std::string& path) { return PathBy(GetParam().first, path); }
    std::string To(const std::string& path) { return PathBy(GetParam().second, path); }
};

TEST_P(ItselfTest, FileOntoItselfStays) {
    Place().MakeFile("from\\a.kra", "1");
    const StoreContents before = Place().Contents();
    for (const char* target : {"from\\a.kra", "from\\"}) {
        SCOPED_TRACE(target);
        EXPECT_THAT(Copy(From("from\\a.kra"), To(target), true), Fails());
        // Replacing a file by itself may count as done.
        Copy(From("from\\a.kra"), To(target), false);
        EXPECT_EQ(before, Place().Contents());
        for (const UINT operation : {FO_COPY, FO_MOVE}) {
            EXPECT_THAT(OnItem(operation, From("from\\a.kra"), To(target)), Fails());
            EXPECT_THAT(OnList(operation, {From("from\\a.kra")}, To(target)), Fails());
        }
        EXPECT_EQ(before, Place().Contents());
    }
}

TEST_P(ItselfTest, TreeOntoOrIntoItselfStays) {
    Place().MakeTree("from\\tree");
    const StoreContents before = Place().Contents();
    for (const char* target :
         {"from\\tree", "from\\", "from\\tree\\", "from\\tree\\sub\\", "from\\tree\\new"}) {
        SCOPED_TRACE(target);
        for (const UINT operation : {FO_COPY, FO_MOVE}) {
            EXPECT_THAT(OnItem(operation, From("from\\tree"), To(target)), Fails());
            EXPECT_THAT(OnList(operation, {From("from\\tree")}, To(target)), Fails());
        }
        ASSERT_EQ(before, Place().Contents());
    }
}

std::string NamesOf(const testing::TestParamInfo<NamePair>& info) {
    constexpr const char* kNames[] = {
        "Plain",     "Depot",        "PathInDepot",        "OtherDepot",
        "Directory", "OtherLetters", "OtherDirectoryDepot"};
    return std::string(kNames[static_cast<int>(info.param.first)]) + "To" +
           kNames[static_cast<int>(info.param.second)];
}

INSTANTIATE_TEST_SUITE_P(NamesOfOnePlace, ItselfTest, testing::ValuesIn(NamesOfOnePlace()),
                         NamesOf);

}  // namespace
}  // namespace depot::test
