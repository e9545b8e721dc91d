#include "model/depots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "model/localization.h"
#include "support/random_text.h"
#include "support/scratch.h"

namespace depot {
namespace {

using testing::ElementsAre;

constexpr char kKey[] = "Software\\DepotTests\\Depots";

int alive = 0;

class CountedDepot : public CDepot {
public:
    explicit CountedDepot(CDepots* owningList) : CDepot(owningList) { ++alive; }
    ~CountedDepot() override { --alive; }
};

std::vector<std::string> Names(const CDepots& depots) {
    std::vector<std::string> names;
    for (const CDepot* depot : depots) names.push_back(depot->name);
    return names;
}

// Every depot of a list that was loaded has what a depot needs.
void ExpectSound(const CDepots& depots) {
    ASSERT_LE(1u, depots.Count());
    ASSERT_NE(nullptr, depots.defaultDepot);
    for (const CDepot* depot : depots) {
        EXPECT_NE("", depot->displayName);
        EXPECT_LE(1u, depot->paths->Count());
        EXPECT_EQ(&depots, depot->owner);
    }
    EXPECT_EQ(depots.hasConfiguredDepots, depots.At(0)->name != "");
}

class DepotsTest : public testing::Test {
protected:
    DepotsTest() { alive = 0; }
    ~DepotsTest() override { InstallLocalization({}); }

    static void Define(const test::ScratchKey& hive, const std::string& name) {
        hive.Text(name, "Path1", "C:\\" + name);
    }

    static void Define(const test::ScratchKey& hive, const std::string& name, DWORD orderIndex) {
        Define(hive, name);
        hive.Dword(name, "OrderIndex", orderIndex);
    }

    test::ScratchKey user_{HKEY_CURRENT_USER, kKey};
    test::ScratchKey machine_{HKEY_LOCAL_MACHINE, kKey};
};

TEST_F(DepotsTest, NoDefinitionsGiveTheBuiltInDepotAsDefault) {
    const CDepots depots(kKey);
    ASSERT_EQ(1u, depots.Count());
    EXPECT_EQ("My Depot", depots.At(0)->displayName);
    EXPECT_EQ("", depots.At(0)->name);
    EXPECT_EQ(&depots, depots.At(0)->owner);
    EXPECT_EQ(depots.At(0), depots.defaultDepot);
    EXPECT_FALSE(depots.hasConfiguredDepots);
}

TEST_F(DepotsTest, TheBuiltInDepotHasOneEmptyLocationWithoutAUserFolder) {
    const CDepots depots(kKey);
    ASSERT_EQ(1u, depots.At(0)->paths->Count());
    EXPECT_EQ("", depots.At(0)->paths->At(0)->path);
    EXPECT_EQ(0u, depots.At(0)->paths->At(0)->type);
    EXPECT_EQ("", depots.At(0)->paths->At(0)->locationText);
    EXPECT_EQ("", depots.At(0)->paths->GetActivePath());
}

TEST_F(DepotsTest, TheBuiltInDepotLiesInTheParentOfTheUserFolder) {
    const struct {
        const char* userDir;
        const char* path;
    } rows[] = {{"C:\\Users\\x\\Farrow\\", "C:\\Users\\x"},
                {"C:\\Users\\x\\Farrow", "C:\\Users\\x"},
                {"C:\\Farrow\\\\", "C:\\Farrow"},
                {"Farrow", "Farrow"},
                {"Farrow\\", "Farrow"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.userDir);
        const CDepots depots(kKey, row.userDir);
        ASSERT_EQ(1u, depots.Count());
        EXPECT_EQ(row.path, depots.At(0)->paths->At(0)->path);
    }
}

TEST_F(DepotsTest, AKeyWithoutUsableDefinitionsGivesTheBuiltInDepot) {
    user_.Text("", "Path1", "C:\\not a depot");
    user_.Text("Empty", "Icon", "a.ico");
    user_.Text("Second", "Path2", "C:\\work");
    const CDepots depots(kKey);
    EXPECT_THAT(Names(depots), ElementsAre(""));
    EXPECT_FALSE(depots.hasConfiguredDepots);
}

TEST_F(DepotsTest, ConfiguredDepotsLeaveNoRoomForTheBuiltInOne) {
    Define(user_, "Work");
    const CDepots depots(kKey, "C:\\Users\\x\\Farrow\\");
    EXPECT_THAT(Names(depots), ElementsAre("Work"));
    EXPECT_TRUE(depots.hasConfiguredDepots);
    EXPECT_EQ(kKey, depots.keyPath);
    EXPECT_TRUE(depots.ownsItems);
}

TEST_F(DepotsTest, AnEmptyKeyPathGivesAnEmptyListThatBorrows) {
    const CDepots depots("");
    EXPECT_EQ(0u, depots.Count());
    EXPECT_FALSE(depots.ownsItems);
    EXPECT_EQ(nullptr, depots.defaultDepot);
}

TEST_F(DepotsTest, TheUsersDepotsComeBeforeTheMachinesAndNothingIsMerged) {
    Define(machine_, "Work");
    Define(machine_, "Able");
    Define(user_, "Work");
    Define(user_, "Zeal");
    const CDepots depots(kKey);
    EXPECT_THAT(Names(depots), ElementsAre("Work", "Zeal", "Able", "Work"));
    EXPECT_EQ(HKEY_CURRENT_USER, depots.At(0)->rootKey);
    EXPECT_EQ(HKEY_LOCAL_MACHINE, depots.At(3)->rootKey);
    EXPECT_EQ(0u, depots.At(3)->registryViewFlags);
}

TEST_F(DepotsTest, DepotsWithAnOrderIndexComeFirstAndTheOthersKeepTheirOrder) {
    Define(user_, "A", 5);
    Define(user_, "B");
    Define(user_, "C", 1);
    Define(user_, "D");
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("C", "A", "B", "D"));
}

TEST_F(DepotsTest, EqualOrderIndexesKeepTheOrderOfLoading) {
    Define(machine_, "First", 5);
    Define(machine_, "Lowest", 2);
    Define(user_, "Plain");
    Define(user_, "Zeal", 5);
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("Lowest", "Zeal", "First", "Plain"));
}

TEST_F(DepotsTest, AnOrderIndexIsSignedAndMinusOneIsNone) {
    Define(user_, "A", 0xFFFFFFFF);
    Define(user_, "B", 0);
    Define(user_, "C", 0xFFFFFFFE);
    Define(user_, "D", 0x80000000);
    Define(user_, "E", 0x7FFFFFFF);
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("D", "C", "B", "E", "A"));
}

TEST_F(DepotsTest, AnOrderIndexStoredAsATextCountsAsNone) {
    Define(user_, "A");
    user_.Text("A", "OrderIndex", "0");
    Define(user_, "B", 9);
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("B", "A"));
}

TEST_F(DepotsTest, TheFirstDefaultInSortedOrderWins) {
    Define(user_, "A", 5);
    Define(user_, "B", 2);
    Define(user_, "C", 1);
    user_.Dword("A", "DefaultDepot", 1);
    user_.Dword("B", "DefaultDepot", 1);
    user_.Dword("C", "DefaultDepot", 2);
    EXPECT_EQ("B", CDepots(kKey).defaultDepot->name);
}

TEST_F(DepotsTest, WithoutADefaultTheFirstInSortedOrderIsIt) {
    Define(user_, "A", 5);
    Define(user_, "B", 2);
    user_.Text("A", "DefaultDepot", "1");
    EXPECT_EQ("B", CDepots(kKey).defaultDepot->name);
}

TEST_F(DepotsTest, LoadingAgainReplacesEverything) {
    Define(user_, "Work");
    CDepots depots(kKey);
    RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
    EXPECT_THAT(Names(depots), ElementsAre("Work"));
    depots.userDirOverride = "C:\\Users\\x\\Farrow";
    depots.Load(kKey);
    EXPECT_THAT(Names(depots), ElementsAre(""));
    EXPECT_EQ("C:\\Users\\x", depots.At(0)->paths->At(0)->path);
    EXPECT_FALSE(depots.hasConfiguredDepots);
    EXPECT_EQ(depots.At(0), depots.defaultDepot);
    Define(machine_, "Home");
    depots.Load(kKey);
    EXPECT_THAT(Names(depots), ElementsAre("Home"));
    EXPECT_TRUE(depots.hasConfiguredDepots);
}

TEST_F(DepotsTest, EnumerateTellsWhetherTheKeyCouldBeOpened) {
    CDepots depots;
    depots.ownsItems = true;
    EXPECT_EQ(0, depots.EnumerateDepotKeys(HKEY_CURRENT_USER, kKey, 0));
    EXPECT_EQ(0, depots.EnumerateDepotKeys(HKEY_CURRENT_USER, "", 0));
    test::CreateRegistryKey(HKEY_CURRENT_USER, kKey);
    EXPECT_EQ(1, depots.EnumerateDepotKeys(HKEY_CURRENT_USER, kKey, 0));
    EXPECT_EQ(0u, depots.Count());
    Define(user_, "Work");
    EXPECT_EQ(1, depots.EnumerateDepotKeys(HKEY_CURRENT_USER, kKey, 0));
    EXPECT_EQ(1, depots.EnumerateDepotKeys(HKEY_CURRENT_USER, kKey, 0));
    EXPECT_THAT(Names(depots), ElementsAre("Work", "Work"));
}

TEST_F(DepotsTest, EnumerateUsesTheExtraAccessForKeyAndSubkeys) {
    const test::ScratchKey narrow(HKEY_LOCAL_MACHINE, "Software\\Wow6432Node\\DepotTests\\Depots");
    Define(narrow, "Narrow");
    Define(machine_, "Wide");
    CDepots depots;
    depots.ownsItems = true;
    EXPECT_EQ(1, depots.EnumerateDepotKeys(HKEY_LOCAL_MACHINE, kKey, KEY_WOW64_32KEY));
    EXPECT_EQ(1, depots.EnumerateDepotKeys(HKEY_LOCAL_MACHINE, kKey, KEY_WOW64_64KEY));
    ASSERT_THAT(Names(depots), ElementsAre("Narrow", "Wide"));
    EXPECT_EQ(REGSAM{KEY_WOW64_32KEY}, depots.At(0)->registryViewFlags);
    EXPECT_EQ(REGSAM{KEY_WOW64_64KEY}, depots.At(1)->registryViewFlags);
}

TEST_F(DepotsTest, TheLanguageOfTheUserInterfaceChoosesTheDisplayName) {
    Define(user_, "Work");
    user_.Text("Work", "DisplayName.fra", "Travail");
    user_.Text("Work", "DisplayName.deu", "Arbeit");
    EXPECT_EQ("Travail", CDepots(kKey).At(0)->displayName);
    InstallLocalization({[] { return std::string("deu"); }});
    EXPECT_EQ("Arbeit", CDepots(kKey).At(0)->displayName);
}

TEST_F(DepotsTest, ASubkeyThatCannotBeOpenedIsSkipped) {
    Define(user_, "A");
    Define(user_, "C");
    // A link to a key that does not exist is listed, but cannot be opened.
    HKEY link = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExA(HKEY_CURRENT_USER, (std::string(kKey) + "\\B").c_str(), 0, nullptr,
                              REG_OPTION_CREATE_LINK | REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr,
                              &link, nullptr));
    const wchar_t target[] = L"\\Registry\\Machine\\Software\\DepotTests\\None";
    ASSERT_EQ(ERROR_SUCCESS,
              RegSetValueExW(link, L"SymbolicLinkValue", 0, REG_LINK,
                             reinterpret_cast<const BYTE*>(target), sizeof(target) - 2));
    EXPECT_EQ("B", RegistryKey::Open(HKEY_CURRENT_USER, kKey)->SubkeyAt(1).name);
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("A", "C"));
    const auto deleteKey = reinterpret_cast<LONG(WINAPI*)(HKEY)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtDeleteKey")));
    EXPECT_EQ(0, deleteKey(link));
    RegCloseKey(link);
}

TEST_F(DepotsTest, AKeyDeletedRightAfterItWasOpenedEndsTheEnumeration) {
    Define(user_, "Work");
    // The language is asked for between the opening of the key and its enumeration.
    InstallLocalization({[] {
        RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
        return std::string("eng");
    }});
    const CDepots depots(kKey);
    EXPECT_THAT(Names(depots), ElementsAre(""));
    ExpectSound(depots);
}

TEST_F(DepotsTest, AKeyDeletedByAnotherThreadMeanwhileLeavesASoundList) {
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        for (int number = 0; number < 60; ++number) {
            Define(user_, "D" + std::to_string(number), static_cast<DWORD>(number));
        }
        std::thread deleter([round] {
            for (int spin = 0; spin < round * 10; ++spin) std::this_thread::yield();
            RegDeleteTreeA(HKEY_CURRENT_USER, kKey);
        });
        const CDepots depots(kKey);
        deleter.join();
        ExpectSound(depots);
        EXPECT_LE(depots.Count(), 60u);
    }
}

TEST_F(DepotsTest, AThousandDepotsAreLoadedAndSorted) {
    for (int number = 0; number < 1000; ++number) {
        Define(user_, "D" + std::to_string(number), static_cast<DWORD>(999 - number));
    }
    const CDepots depots(kKey);
    ASSERT_EQ(1000u, depots.Count());
    for (std::size_t index = 0; index < 1000; ++index) {
        EXPECT_EQ("D" + std::to_string(999 - index), depots.At(index)->name);
    }
    EXPECT_EQ("D999", depots.defaultDepot->name);
}

TEST_F(DepotsTest, ASubkeyNameOf255CharactersIsADepot) {
    const std::string longest(255, 'n');
    test::CreateRegistryKey(HKEY_CURRENT_USER, kKey);
    HKEY parent = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyA(HKEY_CURRENT_USER, kKey, &parent));
    const UniqueHkey owner(parent);
    test::WriteRegistryText(parent, longest, "Path1", "C:\\long");
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre(longest));
}

TEST_F(DepotsTest, DefinitionsOfRandomTypesAndSizesLeaveASoundList) {
    test::RandomTexts random(0x5EED20);
    const char* const names[] = {"Path1",        "Path2",    "Type1",          "OrderIndex",
                                 "DefaultDepot", "Contains", "Icon",           "DisplayName.eng",
                                 "Host1",        "Port1",    "DisplayName.fra"};
    const DWORD types[] = {REG_SZ, REG_EXPAND_SZ, REG_BINARY, REG_DWORD, REG_QWORD, REG_NONE};
    for (int round = 0; round < 150; ++round) {
        SCOPED_TRACE(round);
        for (int value = 0; value < 4; ++value) {
            user_.Raw("D" + std::to_string(random.Below(4)), names[random.Below(std::size(names))],
                      types[random.Below(std::size(types))],
                      "a" + random.Bytes(random.Below(8) == 0 ? 300 : 8));
        }
        const CDepots depots(kKey);
        ASSERT_LE(1u, depots.Count());
        ASSERT_NE(nullptr, depots.defaultDepot);
        for (CDepot* depot : depots) ASSERT_LE(1u, depot->paths->Count());
    }
}

class DepotListTest : public DepotsTest {
protected:
    DepotListTest() { depots_.ownsItems = true; }

    CDepot* Append(const std::string& name, std::int32_t orderIndex = CDepot::kNoOrderIndex) {
        auto depot = std::make_unique<CountedDepot>(&depots_);
        depot->name = name;
        depot->orderIndex = orderIndex;
        depots_.Add(depot.release(), false);
        return depots_.At(depots_.Count() - 1);
    }

    CDepots depots_;
};

TEST_F(DepotListTest, LowestOrderDepotIsTheEarliestOfTheSmallest) {
    EXPECT_EQ(nullptr, depots_.LowestOrderDepot());
    Append("none");
    EXPECT_EQ(nullptr, depots_.LowestOrderDepot());
    Append("five", 5);
    CDepot* const two = Append("two", 2);
    Append("two again", 2);
    EXPECT_EQ(two, depots_.LowestOrderDepot());
    CDepot* const negative = Append("minus two", -2);
    EXPECT_EQ(negative, depots_.LowestOrderDepot());
}

TEST_F(DepotListTest, AListWithoutAnyOrderIndexKeepsItsOrder) {
    for (const char* name : {"c", "a", "b"}) Append(name);
    depots_.SortByOrderIndex();
    EXPECT_THAT(Names(depots_), ElementsAre("c", "a", "b"));
}

TEST_F(DepotListTest, RandomListsAreSortedAsByTakingTheLowestAgainAndAgain) {
    test::RandomTexts random(0x5EED21);
    for (int round = 0; round < 500; ++round) {
        SCOPED_TRACE(round);
        depots_.RemoveAll(true);
        CDepots rest;
        for (std::size_t count = random.Below(12); count > 0; --count) {
            rest.Add(Append(std::to_string(count), static_cast<std::int32_t>(random.Below(6)) - 2),
                     false);
        }
        std::vector<std::string> expected;
        std::vector<CDepot*> left(rest.begin(), rest.end());
        while (const CDepot* lowest = rest.LowestOrderDepot()) {
            expected.push_back(lowest->name);
            left.erase(std::find(left.begin(), left.end(), lowest));
            rest.RemoveAll(false);
            for (CDepot* depot : left) rest.Add(depot, false);
        }
        for (const CDepot* depot : left) expected.push_back(depot->name);
        depots_.SortByOrderIndex();
        ASSERT_EQ(expected, Names(depots_));
    }
}

TEST_F(DepotListTest, TheListDeletesWhatItOwns) {
    Append("a");
    Append("b");
    EXPECT_EQ(2, alive);
    {
        CDepots borrowing;
        borrowing.Add(depots_.At(0), false);
    }
    EXPECT_EQ(2, alive);
    depots_.RemoveAll(true);
    EXPECT_EQ(0, alive);
    EXPECT_EQ(nullptr, depots_.defaultDepot);
    {
        CDepots owning;
        owning.ownsItems = true;
        owning.Add(std::make_unique<CountedDepot>(&owning).release(), false);
    }
    EXPECT_EQ(0, alive);
}

TEST_F(DepotListTest, RemoveDeletesTheDepotAlsoWhenItIsNotInTheList) {
    CDepot* const first = Append("a");
    Append("b");
    depots_.defaultDepot = first;
    depots_.Remove(first);
    depots_.Remove(nullptr);
    EXPECT_THAT(Names(depots_), ElementsAre("b"));
    EXPECT_EQ(1, alive);
    EXPECT_EQ(nullptr, depots_.defaultDepot);
    depots_.Remove(std::make_unique<CountedDepot>(nullptr).release());
    EXPECT_THAT(Names(depots_), ElementsAre("b"));
    EXPECT_EQ(1, alive);
}

TEST_F(DepotListTest, CopyAppendsClonesWithTheSameOwner) {
    Append("a", 3);
    Append("b");
    CDepots copy;
    copy.ownsItems = true;
    copy.Copy(&depots_);
    copy.Copy(nullptr);
    EXPECT_THAT(Names(copy), ElementsAre("a", "b"));
    EXPECT_NE(depots_.At(0), copy.At(0));
    EXPECT_EQ(3, copy.At(0)->orderIndex);
    EXPECT_EQ(&depots_, copy.At(0)->owner);
    copy.Add(depots_.At(0), true);
    EXPECT_THAT(Names(copy), ElementsAre("a", "b", "a"));
}

TEST_F(DepotListTest, TheUserFolderIsTheOverride) {
    EXPECT_EQ("", depots_.GetUserDir(false));
    EXPECT_EQ("", depots_.GetUserDir(true));
    depots_.userDirOverride = "C:\\u\\";
    EXPECT_EQ("C:\\u\\", depots_.GetUserDir(false));
    EXPECT_EQ("C:\\u\\", depots_.GetUserDir(true));
}

}  // namespace
}  // namespace depot
