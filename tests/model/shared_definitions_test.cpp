// What the lists of a process share, and what each has for itself.
#include "model/shared_definitions.h"

#include "model/depots_fixture.h"
#include "support/failing_memory.h"
#include "support/hive_override.h"
#include "support/import_patch.h"

namespace depot {
namespace {

using test::Names;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kLocale[] = "Software\\DepotTests\\Locale";

unsigned systemLanguage = 0;

std::string WrittenLanguage() {
    const auto key = RegistryKey::Open(HKEY_CURRENT_USER, kLocale);
    return key ? key->ReadString("Language").value_or("eng") : "eng";
}

// Counts how many values, texts and numbers, this program asks the registry for.
class Questions {
public:
    Questions() {
        count_ = 0;
        genuine_ = patch_.Genuine();
        genuineForTexts_ = patchForTexts_.Genuine();
    }
    int Count() const { return count_; }

private:
    static LSTATUS WINAPI Query(HKEY key, const char* name, DWORD* reserved, DWORD* type,
                                BYTE* data, DWORD* size) {
        ++count_;
        return genuine_(key, name, reserved, type, data, size);
    }
    static LSTATUS WINAPI QueryText(HKEY key, const wchar_t* name, DWORD* reserved, DWORD* type,
                                    BYTE* data, DWORD* size) {
        ++count_;
        return genuineForTexts_(key, name, reserved, type, data, size);
    }
    static inline int count_ = 0;
    static inline decltype(&RegQueryValueExA) genuine_ = nullptr;
    static inline decltype(&RegQueryValueExW) genuineForTexts_ = nullptr;
    const test::ImportPatch<decltype(&RegQueryValueExA)> patch_{"RegQueryValueExA", &Query};
    const test::ImportPatch<decltype(&RegQueryValueExW)> patchForTexts_{"RegQueryValueExW",
                                                                        &QueryText};
};

// Lets one opening of a key fail while it lives, as where handles are short.
class FailingOpening {
public:
    explicit FailingOpening(int which) {
        left_ = which;
        genuine_ = patch_.Genuine();
    }
    static bool HasFailed() { return left_ <= 0; }

private:
    static LSTATUS WINAPI Open(HKEY root, const char* path, DWORD options, REGSAM access,
                               HKEY* key) {
        return --left_ == 0 ? ERROR_NO_SYSTEM_RESOURCES
                            : genuine_(root, path, options, access, key);
    }
    static inline int left_ = 0;
    static inline decltype(&RegOpenKeyExA) genuine_ = nullptr;
    const test::ImportPatch<decltype(&RegOpenKeyExA)> patch_{"RegOpenKeyExA", &Open};
};

class SharedDefinitionsTest : public test::DepotsFixture {
protected:
    SharedDefinitionsTest() {
        systemLanguage = 0x409;
        InstallLocalization({.languageCode = WrittenLanguage,
                             .settingsKey = kLocale,
                             .systemLanguage = [] { return systemLanguage; }});
        Define(user_, "A", 2);
        Define(user_, "B", 1);
        Define(machine_, "C");
    }
    ~SharedDefinitionsTest() override { FreeSharedDefinitions(); }

    // Loads as many lists as it takes until one is shared.
    static void Share() {
        for (int count = 0; count < 2; ++count) const CDepots depots(kKey);
    }
    static bool IsShared() { return SharedDefinitions(kKey) != nullptr; }

    test::ScratchKey locale_{HKEY_CURRENT_USER, kLocale};
};

TEST_F(SharedDefinitionsTest, ThirdListOfAProcessReadsNothing) {
    const CDepots first(kKey);
    EXPECT_FALSE(IsShared());
    const CDepots second(kKey);
    EXPECT_TRUE(IsShared());
    const Questions questions;
    const CDepots third(kKey);
    EXPECT_EQ(0, questions.Count());
    EXPECT_THAT(Names(third), ElementsAre("B", "A", "C"));
    EXPECT_EQ(third.At(0), third.defaultDepot);
    EXPECT_TRUE(third.hasConfiguredDepots);
}

TEST_F(SharedDefinitionsTest, DepotsOfALaterListAreLikeThoseThatWereRead) {
    user_.Text("A", "DisplayName.eng", "Alpha");
    user_.Text("A", "Icon", "a.ico");
    user_.Dword("A", "Contains", 5);
    user_.Dword("A", "DefaultDepot", 1);
    user_.Text("A", "Path2", "dc=x");
    user_.Dword("A", "Type2", kDirectoryLocation);
    user_.Text("A", "Host2", "h");
    Share();
    const CDepots depots(kKey);
    const CDepot& depot = *depots.At(1);
    EXPECT_EQ(&depot, depots.defaultDepot);
    EXPECT_EQ("A", depot.name);
    EXPECT_EQ("Alpha", depot.displayName);
    EXPECT_EQ("a.ico", depot.icon);
    EXPECT_EQ(5u, depot.contains);
    EXPECT_EQ(2, depot.orderIndex);
    EXPECT_EQ(HKEY_CURRENT_USER, depot.rootKey);
    EXPECT_EQ(HKEY_LOCAL_MACHINE, depots.At(2)->rootKey);
    EXPECT_EQ(&depots, depot.owner);
    ASSERT_EQ(2u, depot.paths->Count());
    EXPECT_EQ(&depot, depot.paths->owner);
    EXPECT_EQ(depot.paths.get(), depot.paths->At(1)->owner);
    EXPECT_EQ("h", depot.paths->At(1)->host);
    EXPECT_EQ(kDirectoryLocation, depot.paths->At(1)->type);
}

TEST_F(SharedDefinitionsTest, EachChangeIsInTheNextList) {
    const auto next = [] {
        const std::vector<std::string> names = Names(CDepots(kKey));
        Share();
        EXPECT_TRUE(IsShared());
        return names;
    };
    Share();
    Define(user_, "D", 0);
    EXPECT_THAT(next(), ElementsAre("D", "B", "A", "C"));
    user_.Dword("A", "OrderIndex", 0);
    EXPECT_THAT(next(), ElementsAre("A", "D", "B", "C"));
    RegDeleteTreeA(HKEY_LOCAL_MACHINE, kKey);
    EXPECT_THAT(next(), ElementsAre("A", "D", "B"));
    RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\DepotTests\\Depots");
    EXPECT_THAT(next(), ElementsAre(""));
    Define(machine_, "E");
    EXPECT_THAT(next(), ElementsAre("E"));
    Define(user_, "F");
    EXPECT_THAT(next(), ElementsAre("F", "E"));
}

TEST_F(SharedDefinitionsTest, ListThatIsLoadedKeepsWhatItWasLoadedWith) {
    Share();
    const CDepots early(kKey);
    user_.Text("A", "Path1", "D:\\new");
    Define(user_, "D");
    EXPECT_EQ(3u, early.Count());
    const CDepots late(kKey);
    EXPECT_EQ("C:\\A", early.At(1)->paths->At(0)->path);
    EXPECT_EQ("D:\\new", late.At(1)->paths->At(0)->path);
}

TEST_F(SharedDefinitionsTest, ChangedLanguageNamesTheDepotsAnew) {
    user_.Text("A", "DisplayName.eng", "English");
    user_.Text("A", "DisplayName.deu", "Deutsch");
    Share();
    EXPECT_EQ("English", CDepots(kKey).At(1)->displayName);
    locale_.Text("", "Language", "deu");
    EXPECT_EQ("Deutsch", CDepots(kKey).At(1)->displayName);
    Share();
    EXPECT_TRUE(IsShared());
    systemLanguage = 0x407;
    EXPECT_FALSE(IsShared());
}

TEST_F(SharedDefinitionsTest, ChangesOfAListAreItsOwn) {
    Share();
    CDepots changed(kKey);
    changed.At(0)->displayName = "changed";
    changed.At(0)->orderIndex = 9;
    changed.At(0)->paths->At(0)->path = "D:\\changed";
    EXPECT_EQ("C:\\A\\", changed.At(1)->paths->GetActivePath());
    changed.SortByOrderIndex();
    EXPECT_THAT(Names(changed), ElementsAre("A", "B", "C"));
    changed.Remove(changed.At(0));
    EXPECT_THAT(Names(changed), ElementsAre("B", "C"));
    changed.Add(new CDepot(&changed), false);
    EXPECT_EQ(3u, changed.Count());
    changed.RemoveAll(true);
    EXPECT_THAT(Names(changed), IsEmpty());

    const CDepots depots(kKey);
    ASSERT_THAT(Names(depots), ElementsAre("B", "A", "C"));
    EXPECT_EQ("B", depots.At(0)->displayName);
    EXPECT_EQ("C:\\B", depots.At(0)->paths->At(0)->path);
    EXPECT_EQ("", depots.At(1)->paths->At(0)->locationText);
    EXPECT_EQ(nullptr, depots.At(1)->paths->ChosenLocation());
}

TEST_F(SharedDefinitionsTest, ListCanBeCopiedBeforeItsDepotsWereUsed) {
    Share();
    const CDepots depots(kKey);
    CDepots copy;
    copy.ownsItems = true;
    copy.Copy(&depots);
    EXPECT_THAT(Names(copy), ElementsAre("B", "A", "C"));
    EXPECT_EQ("B", depots.LowestOrderDepot()->name);
}

TEST_F(SharedDefinitionsTest, OtherKeyIsRead) {
    Share();
    const test::ScratchKey other(HKEY_CURRENT_USER, "Software\\DepotTests\\Others");
    Define(other, "X");
    EXPECT_THAT(Names(CDepots(other.Path())), ElementsAre("X"));
}

TEST_F(SharedDefinitionsTest, ThreadThatWorksForAUserReadsForItself) {
    Share();
    ASSERT_TRUE(ImpersonateSelf(SecurityImpersonation));
    EXPECT_FALSE(IsShared());
    const Questions questions;
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("B", "A", "C"));
    EXPECT_LT(0, questions.Count());
    ASSERT_TRUE(RevertToSelf());
    EXPECT_TRUE(IsShared());
}

TEST_F(SharedDefinitionsTest, HiveThatLeadsElsewhereIsRead) {
    Share();
    {
        const test::HiveOverride elsewhere(HKEY_LOCAL_MACHINE);
        EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("B", "A"));
        Share();
        EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("B", "A"));
    }
    EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("B", "A", "C"));
}

TEST_F(SharedDefinitionsTest, WhatWasReadWithFailuresIsNotShared) {
    for (int which = 1; which < 100; ++which) {
        SCOPED_TRACE(which);
        FreeSharedDefinitions();
        { const CDepots first(kKey); }
        {
            const FailingOpening failing(which);
            const CDepots depots(kKey);
            if (!FailingOpening::HasFailed()) return;
        }
        EXPECT_THAT(Names(CDepots(kKey)), ElementsAre("B", "A", "C"));
    }
    FAIL() << "every opening failed";
}

TEST_F(SharedDefinitionsTest, WhatWasReadWithoutMemoryIsNotShared) {
    test::RunOutOfMemory([] {
        FreeSharedDefinitions();
        { const CDepots first(kKey); }
        const CDepots second(kKey);
        const auto shared = SharedDefinitions(kKey);
        if (shared) {
            EXPECT_THAT(Names(shared->depots), ElementsAre("B", "A", "C"));
        }
    });
}

TEST_F(SharedDefinitionsTest, DepotsThatFindNoMemoryAreMadeLater) {
    Share();
    test::RunOutOfMemory([] {
        const CDepots depots(kKey);
        EXPECT_EQ(3u, depots.Count());
        EXPECT_EQ("C", depots.At(2)->name);
    });
    EXPECT_TRUE(IsShared());
}

TEST_F(SharedDefinitionsTest, NothingIsLeftWhenItIsFreed) {
    EXPECT_EQ(0u, test::CountLeftovers([] {
                  Share();
                  EXPECT_TRUE(IsShared());
                  const CDepots depots(kKey);
                  FreeSharedDefinitions();
                  EXPECT_EQ("B", depots.At(0)->name);
              }));
}

TEST_F(SharedDefinitionsTest, WithoutALanguageThatCanBeWatchedNothingIsShared) {
    InstallLocalization({});
    Share();
    EXPECT_FALSE(IsShared());
}

}  // namespace
}  // namespace depot
