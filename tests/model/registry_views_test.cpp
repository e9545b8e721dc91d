// Registry answers that the real registry cannot be made to give: the list of depots has to cope.
#include "model/depots_fixture.h"
#include "support/import_patch.h"

namespace depot {
namespace {

using test::ImportPatch;
using test::Names;
using testing::ElementsAre;

constexpr char kKey[] = "Software\\DepotTests\\Views";

using OpenKey = decltype(&RegOpenKeyExA);
using EnumerateKeys = decltype(&RegEnumKeyExW);

OpenKey openKey = nullptr;
EnumerateKeys enumerateKeys = nullptr;

// The rights with which the machine's list, and keys below any list, were asked for.
std::vector<REGSAM> listRights;
std::vector<REGSAM> depotRights;
bool narrowViewIsMissing = false;

LSTATUS WINAPI OpenAndNote(HKEY root, const char* path, DWORD options, REGSAM rights, HKEY* key) {
    const bool isMachineList = root == HKEY_LOCAL_MACHINE && path == std::string(kKey);
    if (isMachineList) {
        listRights.push_back(rights);
        if (narrowViewIsMissing && (rights & KEY_WOW64_64KEY) == 0) return ERROR_FILE_NOT_FOUND;
    } else if (root != HKEY_CURRENT_USER && root != HKEY_LOCAL_MACHINE) {
        depotRights.push_back(rights);
    }
    return openKey(root, path, options, rights, key);
}

// Which indexes of an enumeration fail, and how often one was asked for at all.
DWORD firstFailing = 0;
DWORD lastFailing = 0;
int enumerations = 0;
// The room for a name that was always given; 0 when it was not always the same.
DWORD roomForNames = 0;

LSTATUS WINAPI FailSomeIndexes(HKEY key, DWORD index, wchar_t* name, DWORD* length, DWORD* reserved,
                               wchar_t* kind, DWORD* kindLength, FILETIME* changed) {
    roomForNames = enumerations == 0 || roomForNames == *length ? *length : 0;
    ++enumerations;
    if (index >= firstFailing && index <= lastFailing) return ERROR_ACCESS_DENIED;
    return enumerateKeys(key, index, name, length, reserved, kind, kindLength, changed);
}

class RegistryViewsTest : public testing::Test {
protected:
    RegistryViewsTest() {
        openKey = opening_.Genuine();
        listRights.clear();
        depotRights.clear();
        narrowViewIsMissing = false;
        EXPECT_TRUE(opening_.IsInPlace());
    }

    const ImportPatch<OpenKey> opening_{"RegOpenKeyExA", &OpenAndNote};
    const test::ScratchKey user_{HKEY_CURRENT_USER, kKey};
    const test::ScratchKey machine_{HKEY_LOCAL_MACHINE, kKey};
};

TEST_F(RegistryViewsTest, MachineListThatOpensOnlyInTheWideViewIsReadThere) {
    narrowViewIsMissing = true;
    machine_.Text("Work", "Path1", "C:\\Work");
    listRights.clear();
    depotRights.clear();
    const CDepots depots(kKey);
    ASSERT_THAT(Names(depots), ElementsAre("Work"));
    EXPECT_EQ(REGSAM{KEY_WOW64_64KEY}, depots.At(0)->registryViewFlags);
    EXPECT_EQ(HKEY_LOCAL_MACHINE, depots.At(0)->rootKey);
    EXPECT_THAT(listRights, ElementsAre(KEY_READ, KEY_READ | KEY_WOW64_64KEY));
    EXPECT_THAT(depotRights, ElementsAre(KEY_READ | KEY_WOW64_64KEY));
}

TEST_F(RegistryViewsTest, MachineListThatOpensIsNotAskedForAgain) {
    machine_.Text("Work", "Path1", "C:\\Work");
    listRights.clear();
    depotRights.clear();
    const CDepots depots(kKey);
    ASSERT_THAT(Names(depots), ElementsAre("Work"));
    EXPECT_EQ(0u, depots.At(0)->registryViewFlags);
    EXPECT_THAT(listRights, ElementsAre(KEY_READ));
    EXPECT_THAT(depotRights, ElementsAre(KEY_READ));
}

TEST_F(RegistryViewsTest, EmptyMachineListIsNotAskedForAgainEither) {
    test::CreateRegistryKey(HKEY_LOCAL_MACHINE, kKey);
    listRights.clear();
    EXPECT_FALSE(CDepots(kKey).hasConfiguredDepots);
    EXPECT_THAT(listRights, ElementsAre(KEY_READ));
}

TEST_F(RegistryViewsTest, MachineListThatIsNowhereGivesTheBuiltInDepot) {
    narrowViewIsMissing = true;
    EXPECT_FALSE(CDepots(kKey).hasConfiguredDepots);
    EXPECT_THAT(listRights, ElementsAre(KEY_READ, KEY_READ | KEY_WOW64_64KEY));
}

class EnumerationErrorsTest : public testing::Test {
protected:
    EnumerationErrorsTest() {
        enumerateKeys = enumerating_.Genuine();
        EXPECT_TRUE(enumerating_.IsInPlace());
        for (const char* name : {"A", "B", "C", "D"}) user_.Text(name, "Path1", "C:\\x");
        enumerations = 0;
    }

    const ImportPatch<EnumerateKeys> enumerating_{"RegEnumKeyExW", &FailSomeIndexes};
    const test::ScratchKey user_{HKEY_CURRENT_USER, kKey};
};

TEST_F(EnumerationErrorsTest, IndexThatFailsIsSkipped) {
    firstFailing = 1;
    lastFailing = 2;
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("A", "D"));
    EXPECT_EQ(5, enumerations);
}

TEST_F(EnumerationErrorsTest, EveryNameHasRoomFor261Bytes) {
    firstFailing = 2;
    lastFailing = 2;
    const CDepots depots(kKey);
    EXPECT_EQ(261u, roomForNames);
}

TEST_F(EnumerationErrorsTest, KeyThatKeepsFailingEndsTheEnumeration) {
    firstFailing = 2;
    lastFailing = MAXDWORD;
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("A", "B"));
    EXPECT_EQ(2 + 1000, enumerations);
}

}  // namespace
}  // namespace depot
