// What registration writes, what unregistration removes, and what happens when either fails.
#include <map>

#include "component/component.h"
#include "platform/registry_key.h"
#include "platform/wide_text.h"
#include "support/failing_memory.h"
#include "support/program_start.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr char kClassKey[] = "CLSID\\{38A373C9-E31B-4505-A763-B14081A1332B}";
constexpr char kAppIdKey[] = "AppID\\{85456E20-A6EC-4DDC-BFFD-17A26FB3A463}";
constexpr char kLibraryKey[] = "TypeLib\\{F83FE105-A22E-4399-9B89-1A6C8CB957DD}";
constexpr char kInterfaceKey[] = "Interface\\{052916F3-9678-4B31-834D-7904C551B1D5}";
constexpr char kClassText[] = "{38A373C9-E31B-4505-A763-B14081A1332B}";
constexpr char kAppIdText[] = "{85456E20-A6EC-4DDC-BFFD-17A26FB3A463}";
constexpr char kLibraryText[] = "{F83FE105-A22E-4399-9B89-1A6C8CB957DD}";

// Names of values with their texts; the default value has an empty name. Subkeys stand with a
// trailing backslash.
using Content = std::map<std::string, std::string>;

std::string ValueText(HKEY key, const std::string& name) {
    char text[1000] = {};
    DWORD size = sizeof(text);
    DWORD type = 0;
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExA(key, name.c_str(), nullptr, &type,
                                              reinterpret_cast<BYTE*>(text), &size));
    EXPECT_EQ(static_cast<DWORD>(REG_SZ), type) << name;
    return text;
}

Content ContentOf(HKEY root, const std::string& path) {
    Content content;
    HKEY opened = nullptr;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) {
        ADD_FAILURE() << path << " is missing";
        return content;
    }
    const UniqueHkey key(opened);
    char name[300] = {};
    for (DWORD index = 0, size = sizeof(name);
         RegEnumValueA(opened, index, name, &size, nullptr, nullptr, nullptr, nullptr) ==
         ERROR_SUCCESS;
         ++index, size = sizeof(name)) {
        content[name] = ValueText(opened, name);
    }
    for (DWORD index = 0, size = sizeof(name);
         RegEnumKeyExA(opened, index, name, &size, nullptr, nullptr, nullptr, nullptr) ==
         ERROR_SUCCESS;
         ++index, size = sizeof(name)) {
        content[name + std::string("\\")];
    }
    return content;
}

bool KeyExists(HKEY root, const std::string& path) {
    HKEY opened = nullptr;
    const bool exists = RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, &opened) == ERROR_SUCCESS;
    const UniqueHkey key(opened);
    return exists;
}

// Redirects HKEY_CLASSES_ROOT into an empty key, so that what a test sees is what was written.
class RegistrationTest : public testing::Test {
protected:
    RegistrationTest() { Redirect(Open("")); }
    ~RegistrationTest() override { RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr); }

    static void Redirect(UniqueHkey target) {
        ASSERT_EQ(ERROR_SUCCESS, RegOverridePredefKey(HKEY_CLASSES_ROOT, target.get()));
    }

    UniqueHkey Open(const std::string& below, DWORD options = 0) const {
        HKEY key = nullptr;
        EXPECT_EQ(ERROR_SUCCESS,
                  RegCreateKeyExA(HKEY_CURRENT_USER, (classes_.Path() + "\\" + below).c_str(), 0,
                                  nullptr, options, KEY_ALL_ACCESS, nullptr, &key, nullptr));
        return UniqueHkey(key);
    }

    // Makes writing below a key fail: nothing lasting can be created below a volatile key.
    void Deny(const std::string& below) const { Open(below, REG_OPTION_VOLATILE); }

    Content At(const std::string& path) const {
        return ContentOf(HKEY_CURRENT_USER, classes_.Path() + "\\" + path);
    }
    bool Has(const std::string& path) const {
        return KeyExists(HKEY_CURRENT_USER, classes_.Path() + "\\" + path);
    }

    const Library& library_ = Library::Own();
    ScratchKey classes_{HKEY_CURRENT_USER, "Software\\DepotTests\\Classes"};
    Apartment apartment_;
};

TEST_F(RegistrationTest, ApplicationKeysAreWritten) {
    ASSERT_THAT(library_.Register(), IsOk());
    EXPECT_EQ((Content{{"", "DepotIntr"}}), At(kAppIdKey));
    EXPECT_EQ((Content{{"AppID", kAppIdText}}), At("AppID\\DepotIntr.DLL"));
}

TEST_F(RegistrationTest, ProgIdsAreWritten) {
    ASSERT_THAT(library_.Register(), IsOk());
    EXPECT_EQ((Content{{"", "DepotIntrApi Class"}, {"CLSID\\", ""}}),
              At("DepotIntr.DepotIntrApi.1"));
    EXPECT_EQ((Content{{"", kClassText}}), At("DepotIntr.DepotIntrApi.1\\CLSID"));
    EXPECT_EQ((Content{{"", "DepotIntrApi Class"}, {"CLSID\\", ""}, {"CurVer\\", ""}}),
              At("DepotIntr.DepotIntrApi"));
    EXPECT_EQ((Content{{"", kClassText}}), At("DepotIntr.DepotIntrApi\\CLSID"));
    EXPECT_EQ((Content{{"", "DepotIntr.DepotIntrApi.1"}}), At("DepotIntr.DepotIntrApi\\CurVer"));
}

TEST_F(RegistrationTest, ClassKeyIsWritten) {
    ASSERT_THAT(library_.Register(), IsOk());
    const std::string key = kClassKey;
    EXPECT_EQ((Content{{"", "DepotIntrApi Class"},
                       {"AppID", kAppIdText},
                       {"InprocServer32\\", ""},
                       {"ProgID\\", ""},
                       {"Programmable\\", ""},
                       {"TypeLib\\", ""},
                       {"VersionIndependentProgID\\", ""}}),
              At(key));
    EXPECT_EQ((Content{{"", "DepotIntr.DepotIntrApi.1"}}), At(key + "\\ProgID"));
    EXPECT_EQ((Content{{"", "DepotIntr.DepotIntrApi"}}), At(key + "\\VersionIndependentProgID"));
    EXPECT_EQ(Content{}, At(key + "\\Programmable"));
    EXPECT_EQ((Content{{"", kLibraryText}}), At(key + "\\TypeLib"));
    EXPECT_EQ((Content{{"", ProgramFolder() + "DepotIntr.dll"}, {"ThreadingModel", "Apartment"}}),
              At(key + "\\InprocServer32"));
}

TEST_F(RegistrationTest, TypeLibraryIsWritten) {
    ASSERT_THAT(library_.Register(), IsOk());
    const std::string key = kLibraryKey;
    EXPECT_EQ("DepotIntr 1.0 Type Library", At(key + "\\1.0")[""]);
    EXPECT_EQ(ProgramFolder() + "DepotIntr.dll", At(key + "\\1.0\\0\\win64")[""]);
    EXPECT_EQ("IDepotIntrApi", At(kInterfaceKey)[""]);
}

TEST_F(RegistrationTest, ClassAndProgrammableKeysAreEmptiedFirst) {
    Open(std::string(kClassKey) + "\\Stale");
    Open(std::string(kClassKey) + "\\Programmable\\Stale");
    Open("DepotIntr.DepotIntrApi\\Kept");
    ASSERT_THAT(library_.Register(), IsOk());
    EXPECT_FALSE(Has(std::string(kClassKey) + "\\Stale"));
    EXPECT_FALSE(Has(std::string(kClassKey) + "\\Programmable\\Stale"));
    EXPECT_TRUE(Has("DepotIntr.DepotIntrApi\\Kept"));
}

TEST_F(RegistrationTest, RegisteringTwiceChangesNothing) {
    ASSERT_THAT(library_.Register(), IsOk());
    const Content first = At(kClassKey);
    ASSERT_THAT(library_.Register(), IsOk());
    EXPECT_EQ(first, At(kClassKey));
    EXPECT_EQ((Content{{"", "DepotIntr"}}), At(kAppIdKey));
}

TEST_F(RegistrationTest, UnregisteringRemovesWhatWasWrittenAndKeepsTheParents) {
    ASSERT_THAT(library_.Register(), IsOk());
    Open("CLSID\\{Other}");
    Open("AppID\\{Other}");
    Open("DepotIntr.Other");
    ASSERT_THAT(library_.Unregister(), IsOk());
    for (const char* gone :
         {kClassKey, kAppIdKey, kLibraryKey, kInterfaceKey, "AppID\\DepotIntr.DLL",
          "DepotIntr.DepotIntrApi", "DepotIntr.DepotIntrApi.1"}) {
        EXPECT_FALSE(Has(gone)) << gone;
    }
    for (const char* kept : {"CLSID\\{Other}", "AppID\\{Other}", "DepotIntr.Other"}) {
        EXPECT_TRUE(Has(kept)) << kept;
    }
}

TEST_F(RegistrationTest, EmptyParentsStayAfterUnregistering) {
    ASSERT_THAT(library_.Register(), IsOk());
    ASSERT_THAT(library_.Unregister(), IsOk());
    EXPECT_TRUE(Has("CLSID"));
    EXPECT_TRUE(Has("AppID"));
}

TEST_F(RegistrationTest, UnregisteringTwiceSucceeds) {
    ASSERT_THAT(library_.Register(), IsOk());
    ASSERT_THAT(library_.Unregister(), IsOk());
    EXPECT_THAT(library_.Unregister(), IsOk());
    EXPECT_FALSE(Has(kClassKey));
}

TEST_F(RegistrationTest, UnregisteringWithoutARegistrationSucceeds) {
    EXPECT_THAT(library_.Unregister(), IsOk());
    EXPECT_FALSE(Has("CLSID"));
}

TEST_F(RegistrationTest, FailingApplicationScriptStopsTheRegistration) {
    Deny("AppID");
    EXPECT_THAT(library_.Register(), Fails(HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE)));
    EXPECT_FALSE(Has("DepotIntr.DepotIntrApi"));
    EXPECT_FALSE(Has(kLibraryKey));
}

TEST_F(RegistrationTest, FailingClassScriptStopsTheRegistration) {
    Deny("DepotIntr.DepotIntrApi.1");
    EXPECT_THAT(library_.Register(), Fails(HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE)));
    EXPECT_TRUE(Has(kAppIdKey));
    EXPECT_FALSE(Has(kClassKey));
    EXPECT_FALSE(Has(kLibraryKey));
}

TEST_F(RegistrationTest, FailingTypeLibraryIsReported) {
    Deny("TypeLib");
    EXPECT_THAT(library_.Register(), Fails());
    EXPECT_TRUE(Has(kClassKey));
}

// A key whose removal the system refuses to the component.
class LastingKey {
public:
    explicit LastingKey(const std::wstring& name) {
        name_ = name;
        genuine_ = removal_.Genuine();
    }

private:
    static LSTATUS WINAPI Remove(HKEY parent, LPCWSTR name) {
        return name == name_ ? ERROR_ACCESS_DENIED : genuine_(parent, name);
    }

    static inline std::wstring name_;
    static inline decltype(&RegDeleteTreeW) genuine_ = nullptr;
    const ImportPatch<decltype(&RegDeleteTreeW)> removal_{"RegDeleteTreeW", &Remove,
                                                          Library::Own().Module()};
};

TEST_F(RegistrationTest, ClassThatCannotBeRemovedKeepsTypeLibraryAndApplication) {
    ASSERT_THAT(library_.Register(), IsOk());
    {
        const LastingKey lasting(Wide(kClassText));
        EXPECT_THAT(library_.Unregister(), Fails(HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED)));
    }
    for (const char* kept :
         {kClassKey, kLibraryKey, kInterfaceKey, kAppIdKey, "AppID\\DepotIntr.DLL"}) {
        EXPECT_TRUE(Has(kept)) << kept;
    }
    EXPECT_THAT(library_.Unregister(), IsOk());
}

TEST_F(RegistrationTest, TypeLibraryThatCannotBeRemovedIsReportedAndKeepsTheApplication) {
    ASSERT_THAT(library_.Register(), IsOk());
    {
        const ImportPatch<decltype(&UnRegisterTypeLib)> refusing(
            "UnRegisterTypeLib",
            [](REFGUID, WORD, WORD, LCID, SYSKIND) { return TYPE_E_REGISTRYACCESS; },
            library_.Module());
        ASSERT_TRUE(refusing.IsInPlace());
        EXPECT_THAT(library_.Unregister(), Fails(TYPE_E_REGISTRYACCESS));
    }
    EXPECT_FALSE(Has(kClassKey));
    for (const char* kept : {kLibraryKey, kAppIdKey, "AppID\\DepotIntr.DLL"}) {
        EXPECT_TRUE(Has(kept)) << kept;
    }
    EXPECT_THAT(library_.Unregister(), IsOk());
    EXPECT_FALSE(Has(kAppIdKey));
}

TEST_F(RegistrationTest, ApplicationThatCannotBeRemovedIsReportedLast) {
    ASSERT_THAT(library_.Register(), IsOk());
    const LastingKey lasting(Wide(kAppIdText));
    EXPECT_THAT(library_.Unregister(), Fails(HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED)));
    for (const char* gone : {kClassKey, kLibraryKey, kInterfaceKey}) {
        EXPECT_FALSE(Has(gone)) << gone;
    }
    EXPECT_TRUE(Has(kAppIdKey));
}

// Starts with the thread in a locale that registration has to restore.
class RegistrationLocaleTest : public RegistrationTest {
protected:
    RegistrationLocaleTest() { SetThreadLocale(kFrench); }
    ~RegistrationLocaleTest() override { SetThreadLocale(before_); }

    static constexpr LCID kFrench = MAKELCID(MAKELANGID(LANG_FRENCH, SUBLANG_FRENCH), SORT_DEFAULT);
    const LCID before_ = GetThreadLocale();
};

TEST_F(RegistrationLocaleTest, SuccessRestoresTheThreadLocale) {
    ASSERT_EQ(kFrench, GetThreadLocale());
    ASSERT_THAT(library_.Register(), IsOk());
    EXPECT_EQ(kFrench, GetThreadLocale());
    ASSERT_THAT(library_.Unregister(), IsOk());
    EXPECT_EQ(kFrench, GetThreadLocale());
}

TEST_F(RegistrationLocaleTest, FailureOfAnyStepRestoresTheThreadLocale) {
    for (const char* denied : {"TypeLib", "DepotIntr.DepotIntrApi.1", "AppID"}) {
        SCOPED_TRACE(denied);
        RegDeleteTreeA(HKEY_CURRENT_USER, classes_.Path().c_str());
        Redirect(Open(""));
        Deny(denied);
        EXPECT_THAT(library_.Register(), Fails());
        EXPECT_EQ(kFrench, GetThreadLocale());
    }
}

TEST_F(RegistrationLocaleTest, FailingRemovalRestoresTheThreadLocale) {
    RegDeleteTreeA(HKEY_CURRENT_USER, classes_.Path().c_str());
    EXPECT_THAT(library_.Unregister(), Fails());
    EXPECT_EQ(kFrench, GetThreadLocale());
}

TEST_F(RegistrationLocaleTest, EveryStepReportsThatMemoryIsExhausted) {
    const auto run = [this](HRESULT (Library::*step)() const) {
        const auto call = [&] {
            const HRESULT result = (library_.*step)();
            EXPECT_EQ(FailingMemory::RanOut() ? E_OUTOFMEMORY : S_OK, result);
            EXPECT_EQ(kFrench, GetThreadLocale());
        };
        EXPECT_LT(20, FailEachAllocation(call, library_.Module()));
    };
    run(&Library::Register);
    EXPECT_TRUE(Has(kClassKey));
    run(&Library::Unregister);
    EXPECT_FALSE(Has(kAppIdKey));
    // Now there is nothing left to remove.
    run(&Library::Unregister);
}

// Works on the real keys, which other programs read.
class Regsvr32Test : public testing::Test {
protected:
    static DWORD Run(const std::string& options) {
        return RunProgram({.command = WideFromAnsi("regsvr32.exe /s " + options + " \"" +
                                                   ProgramFolder() + "DepotIntr.dll\"")});
    }

    Apartment apartment_;
};

TEST_F(Regsvr32Test, RegisteredClassIsFoundByBothNames) {
    ASSERT_EQ(0u, Run(""));
    for (const wchar_t* name : {L"DepotIntr.DepotIntrApi", L"DepotIntr.DepotIntrApi.1"}) {
        CLSID found = {};
        EXPECT_THAT(CLSIDFromProgID(name, &found), IsOk());
        EXPECT_TRUE(IsEqualCLSID(CLSID_DepotIntrApi, found));
    }
    EXPECT_NE(nullptr, CreateApi());
}

TEST_F(Regsvr32Test, UnregisteredClassIsGone) {
    ASSERT_EQ(0u, Run(""));
    ASSERT_EQ(0u, Run("/u"));
    CLSID found = {};
    EXPECT_THAT(CLSIDFromProgID(L"DepotIntr.DepotIntrApi", &found), Fails());
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, "CLSID"));
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, "AppID"));
    ASSERT_EQ(0u, Run(""));
}

}  // namespace
}  // namespace depot::test
