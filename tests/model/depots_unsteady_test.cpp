// Definitions that are large, broken, or gone while they are read: the list stays sound.
#include <thread>

#include "model/depots_fixture.h"
#include "support/failing_memory.h"
#include "support/random_text.h"

namespace depot {
namespace {

using test::Names;
using testing::ElementsAre;

using UnsteadyDepotsTest = test::DepotsFixture;

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

TEST_F(UnsteadyDepotsTest, SubkeyThatCannotBeOpenedIsSkipped) {
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

TEST_F(UnsteadyDepotsTest, KeyDeletedRightAfterItWasOpenedEndsTheEnumeration) {
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

TEST_F(UnsteadyDepotsTest, KeyDeletedByAnotherThreadMeanwhileLeavesASoundList) {
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

TEST_F(UnsteadyDepotsTest, WithoutMemoryDepotsAreDroppedAndTheRestIsSound) {
    for (const char* name : {"A", "B", "C"}) Define(user_, std::string(50, *name));
    int shorter = 0;
    const test::MemoryRun run = test::RunOutOfMemory([&] {
        const CDepots depots(kKey);
        ExpectSound(depots);
        if (depots.Count() < 3) ++shorter;
        EXPECT_TRUE(test::FailingMemory::RanOut() || depots.Count() == 3);
    });
    EXPECT_LT(0, shorter);
    // The sorting does without the memory that it asks for.
    EXPECT_EQ(run.failures - 1, shorter + run.exceptions);
    EXPECT_EQ(0u, run.left);
}

TEST_F(UnsteadyDepotsTest, ThousandDepotsAreLoadedAndSorted) {
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

TEST_F(UnsteadyDepotsTest, SubkeyNameOf255CharactersIsADepot) {
    const std::string longest(255, 'n');
    test::CreateRegistryKey(HKEY_CURRENT_USER, kKey);
    HKEY parent = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyA(HKEY_CURRENT_USER, kKey, &parent));
    const UniqueHkey owner(parent);
    test::WriteRegistryText(parent, longest, "Path1", "C:\\long");
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre(longest));
}

TEST_F(UnsteadyDepotsTest, DefinitionsOfRandomTypesAndSizesLeaveASoundList) {
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

}  // namespace
}  // namespace depot
