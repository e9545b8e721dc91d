// What registration writes and removes, and what keeps the library loaded.
#include <gtest/gtest.h>

#include "depotbrowser/browser_library.h"
#include "platform/registry_key.h"
#include "platform/wide_text.h"

namespace depot::test {
namespace {

constexpr char kClassId[] = "{C1432487-51DA-4834-B781-ED0E69DC9002}";
constexpr char kLibraryId[] = "{D937B1AD-6226-4FF5-99BB-9D1F1DE73AD7}";
constexpr char kAppId[] = "{D030B6A5-C3EC-4BF6-9741-D663287D7D0E}";
constexpr char kInterfaceId[] = "{FEF2FF2A-5AD1-4C2A-AB72-D8E81AFE7F9F}";
constexpr char kProgId[] = "DepotBrowser.UserPasswordPromptDialog";
constexpr char kVersionedProgId[] = "DepotBrowser.UserPasswordPromptDialog.1";

// Returns a text below HKEY_CLASSES_ROOT; "(none)" when there is none.
std::string ClassesText(const std::string& path, const std::string& name = "") {
    const auto key = RegistryKey::Open(HKEY_CLASSES_ROOT, path);
    return key ? key->ReadString(name).value_or("(none)") : "(none)";
}

bool ClassesKeyExists(const std::string& path) {
    return RegistryKey::Open(HKEY_CLASSES_ROOT, path).has_value();
}

// Identifiers are compared without regard to case.
void ExpectIdentifier(const char* expected, const std::string& text) {
    EXPECT_STRCASEEQ(expected, text.c_str());
}

class RegistrationTest : public testing::Test {
protected:
    const ComApartment apartment_;
    const BrowserLibrary library_;
};

TEST_F(RegistrationTest, RegisterWritesTheClass) {
    const std::string classKey = std::string("CLSID\\") + kClassId;
    EXPECT_EQ("UserPasswordPromptDialog Class", ClassesText(classKey));
    EXPECT_EQ(kVersionedProgId, ClassesText(classKey + "\\ProgID"));
    EXPECT_EQ(kProgId, ClassesText(classKey + "\\VersionIndependentProgID"));
    EXPECT_TRUE(ClassesKeyExists(classKey + "\\Programmable"));
    EXPECT_EQ(Utf8FromWide(library_.Path()), ClassesText(classKey + "\\InprocServer32"));
    EXPECT_EQ("Apartment", ClassesText(classKey + "\\InprocServer32", "ThreadingModel"));
    ExpectIdentifier(kAppId, ClassesText(classKey, "AppID"));
    ExpectIdentifier(kLibraryId, ClassesText(classKey + "\\TypeLib"));
}

TEST_F(RegistrationTest, RegisterWritesBothProgIds) {
    for (const std::string progId : {kProgId, kVersionedProgId}) {
        EXPECT_EQ("UserPasswordPromptDialog Class", ClassesText(progId));
        ExpectIdentifier(kClassId, ClassesText(progId + "\\CLSID"));
    }
    EXPECT_EQ(kVersionedProgId, ClassesText(std::string(kProgId) + "\\CurVer"));
    EXPECT_FALSE(ClassesKeyExists(std::string(kVersionedProgId) + "\\CurVer"));
}

TEST_F(RegistrationTest, RegisterWritesTheApplication) {
    EXPECT_EQ("DepotBrowser", ClassesText(std::string("AppID\\") + kAppId));
    ExpectIdentifier(kAppId, ClassesText("AppID\\DepotBrowser.DLL", "AppID"));
}

TEST_F(RegistrationTest, RegisterWritesTheTypeLibraryAndTheInterface) {
    EXPECT_EQ("DepotBrowser 1.0 Type Library",
              ClassesText(std::string("TypeLib\\") + kLibraryId + "\\1.0"));
    EXPECT_EQ("IUserPasswordPromptDialog", ClassesText(std::string("Interface\\") + kInterfaceId));
}

TEST_F(RegistrationTest, UnregisterRemovesAllOfItButTheParents) {
    EXPECT_EQ(S_OK, library_.Unregister());
    EXPECT_FALSE(ClassesKeyExists(kProgId));
    EXPECT_FALSE(ClassesKeyExists(kVersionedProgId));
    EXPECT_FALSE(ClassesKeyExists(std::string("CLSID\\") + kClassId));
    EXPECT_FALSE(ClassesKeyExists(std::string("AppID\\") + kAppId));
    EXPECT_FALSE(ClassesKeyExists("AppID\\DepotBrowser.DLL"));
    EXPECT_FALSE(ClassesKeyExists(std::string("TypeLib\\") + kLibraryId + "\\1.0"));
    EXPECT_TRUE(ClassesKeyExists("CLSID"));
    EXPECT_TRUE(ClassesKeyExists("AppID"));
}

TEST_F(RegistrationTest, RegisterAndUnregisterLeaveTheThreadLocaleAsItWas) {
    const LCID previous = GetThreadLocale();
    constexpr LCID kGerman = 0x407;
    SetThreadLocale(kGerman);
    EXPECT_EQ(S_OK, library_.Unregister());
    EXPECT_EQ(kGerman, GetThreadLocale());
    EXPECT_EQ(S_OK, library_.Register());
    EXPECT_EQ(kGerman, GetThreadLocale());
    SetThreadLocale(previous);
}

TEST_F(RegistrationTest, LibraryExportsItsFourEntryPointsOnly) {
    for (const char* const name :
         {"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer", "DllUnregisterServer"}) {
        EXPECT_NE(nullptr, GetProcAddress(library_.Module(), name)) << name;
    }
    EXPECT_EQ(4u, library_.ExportCount());
}

TEST_F(RegistrationTest, ManifestAsksForTheThemedControls) {
    const HRSRC found = FindResourceW(library_.Module(), MAKEINTRESOURCEW(2),
                                      reinterpret_cast<LPCWSTR>(RT_MANIFEST));
    ASSERT_NE(nullptr, found);
    const std::string text(
        static_cast<const char*>(LockResource(LoadResource(library_.Module(), found))),
        SizeofResource(library_.Module(), found));
    EXPECT_NE(std::string::npos,
              text.find("name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\""));
}

TEST_F(RegistrationTest, OtherClassesAreNotAvailable) {
    void* object = &object;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
              library_.GetClassObject(CLSID_NULL, IID_IClassFactory, &object));
    EXPECT_EQ(nullptr, object);
}

TEST_F(RegistrationTest, ObjectOrAServerLockKeepsTheLibraryLoaded) {
    EXPECT_EQ(S_OK, library_.CanUnloadNow());
    auto dialog = CreateDialogObject();
    EXPECT_EQ(S_FALSE, library_.CanUnloadNow());
    dialog.reset();
    EXPECT_EQ(S_OK, library_.CanUnloadNow());
    void* object = nullptr;
    ASSERT_EQ(S_OK,
              library_.GetClassObject(CLSID_UserPasswordPromptDialog, IID_IClassFactory, &object));
    UniqueCom<IClassFactory> factory(static_cast<IClassFactory*>(object));
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    EXPECT_EQ(S_FALSE, library_.CanUnloadNow());
    EXPECT_EQ(S_OK, factory->LockServer(FALSE));
    factory.reset();
    EXPECT_EQ(S_OK, library_.CanUnloadNow());
}

}  // namespace
}  // namespace depot::test
