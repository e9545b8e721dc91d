// The DLL as a file: what it exports, imports and carries.
#include <algorithm>
#include <set>
#include <vector>

#include "component/component.h"
#include "platform/text.h"
#include "support/module_imports.h"

namespace depot::test {
namespace {

class BinaryTest : public testing::Test {
protected:
    // The module is mapped, so that its headers and tables are those of the file.
    template <class Item>
    const Item* At(DWORD offset) const {
        return reinterpret_cast<const Item*>(reinterpret_cast<const char*>(module_) + offset);
    }

    const IMAGE_NT_HEADERS64& Headers() const {
        const auto* const dos = At<IMAGE_DOS_HEADER>(0);
        return *At<IMAGE_NT_HEADERS64>(static_cast<DWORD>(dos->e_lfanew));
    }

    template <class Item>
    const Item* Directory(int index) const {
        return At<Item>(Headers().OptionalHeader.DataDirectory[index].VirtualAddress);
    }

    std::vector<std::string> ImportedLibraries() const {
        std::vector<std::string> names;
        for (const auto* import = Directory<IMAGE_IMPORT_DESCRIPTOR>(IMAGE_DIRECTORY_ENTRY_IMPORT);
             import->Name != 0; ++import) {
            names.emplace_back(At<char>(import->Name));
        }
        return names;
    }

    std::string Resource(WORD name, const char* type) const {
        const HRSRC found = FindResourceA(module_, MAKEINTRESOURCEA(name), type);
        EXPECT_NE(nullptr, found);
        if (found == nullptr) return {};
        const HGLOBAL loaded = LoadResource(module_, found);
        return std::string(static_cast<const char*>(LockResource(loaded)),
                           SizeofResource(module_, found));
    }

    const HMODULE module_ = Library::Own().Module();
};

TEST_F(BinaryTest, ExactlyFourEntryPointsAreExportedByName) {
    const auto* const exports = Directory<IMAGE_EXPORT_DIRECTORY>(IMAGE_DIRECTORY_ENTRY_EXPORT);
    EXPECT_EQ(4u, exports->NumberOfFunctions);
    std::set<std::string> names;
    const DWORD* const addresses = At<DWORD>(exports->AddressOfNames);
    for (DWORD index = 0; index < exports->NumberOfNames; ++index) {
        names.insert(At<char>(addresses[index]));
    }
    EXPECT_EQ((std::set<std::string>{"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer",
                                     "DllUnregisterServer"}),
              names);
}

TEST_F(BinaryTest, OnlySystemLibrariesAreImported) {
    char system[MAX_PATH] = {};
    GetSystemDirectoryA(system, sizeof(system));
    const std::vector<std::string> imports = ImportedLibraries();
    EXPECT_FALSE(imports.empty());
    for (const std::string& name : imports) {
        EXPECT_TRUE(Exists(std::string(system) + "\\" + name)) << name;
        EXPECT_FALSE(Exists(ProgramFolder() + name)) << name;
        for (const char* runtime : {"libstdc++", "libgcc", "libwinpthread", "msvcp", "vcruntime"}) {
            EXPECT_FALSE(StartsWithNoCase(name, runtime)) << name;
        }
    }
}

TEST_F(BinaryTest, DirectoryServiceLibraryIsNotImported) {
    for (const std::string& name : ImportedLibraries()) {
        EXPECT_FALSE(EqualsNoCase("qdirsvc.dll", name));
    }
}

TEST_F(BinaryTest, QuestionForTheLanguageIsLookedUpAtRunTime) {
    // Older systems do not have it, and would not load a library that imports it.
    VisitImports(module_, [](const char* name, FARPROC*) {
        EXPECT_STRNE("GetUserDefaultUILanguage", name);
    });
}

TEST_F(BinaryTest, LibraryIsSixtyFourBit) {
    EXPECT_EQ(IMAGE_FILE_MACHINE_AMD64, Headers().FileHeader.Machine);
    EXPECT_NE(0, Headers().FileHeader.Characteristics & IMAGE_FILE_DLL);
}

TEST_F(BinaryTest, ScriptsAndTypeLibraryAreCarried) {
    EXPECT_NE(std::string::npos, Resource(100, "REGISTRY").find("%APPID%"));
    EXPECT_NE(std::string::npos, Resource(101, "REGISTRY").find("%MODULE%"));
    EXPECT_EQ("MSFT", Resource(1, "TYPELIB").substr(0, 4));
}

TEST_F(BinaryTest, ManifestAsksForCommonControls6AndNoElevation) {
    std::string manifest = Resource(2, MAKEINTRESOURCEA(24));
    // Attributes may stand on lines of their own.
    manifest.erase(std::unique(manifest.begin(), manifest.end(),
                               [](char left, char right) {
                                   return std::isspace(left) && std::isspace(right);
                               }),
                   manifest.end());
    std::replace(manifest.begin(), manifest.end(), '\n', ' ');
    EXPECT_NE(std::string::npos,
              manifest.find("name=\"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\""));
    EXPECT_NE(std::string::npos,
              manifest.find("requestedExecutionLevel level=\"asInvoker\" uiAccess=\"false\""));
    const std::size_t dependency = manifest.find("<dependentAssembly>");
    ASSERT_NE(std::string::npos, dependency);
    EXPECT_EQ(std::string::npos, manifest.find("<dependentAssembly>", dependency + 1));
}

class VersionTest : public testing::Test {
protected:
    VersionTest() {
        const std::string path = ProgramFolder() + "DepotIntr.dll";
        DWORD ignored = 0;
        block_.resize(GetFileVersionInfoSizeA(path.c_str(), &ignored));
        EXPECT_TRUE(
            GetFileVersionInfoA(path.c_str(), 0, static_cast<DWORD>(block_.size()), block_.data()));
    }

    template <class Item>
    const Item* Query(const std::string& name) {
        void* found = nullptr;
        UINT size = 0;
        EXPECT_TRUE(VerQueryValueA(block_.data(), name.c_str(), &found, &size)) << name;
        return static_cast<const Item*>(found);
    }

    std::string Text(const std::string& name) {
        const char* const text = Query<char>("\\StringFileInfo\\040904E4\\" + name);
        return text ? text : "(missing)";
    }

    std::vector<char> block_;
};

TEST_F(VersionTest, TextsAreThoseOfTheProduct) {
    EXPECT_EQ("13.0.0.208", Text("FileVersion"));
    EXPECT_EQ("13.0.0.0", Text("ProductVersion"));
    EXPECT_EQ("Depot Interface for x64", Text("FileDescription"));
    EXPECT_EQ("DepotIntr", Text("InternalName"));
    EXPECT_EQ("DepotIntr.dll", Text("OriginalFilename"));
}

TEST_F(VersionTest, NumbersMatchTheTexts) {
    const auto* const fixed = Query<VS_FIXEDFILEINFO>("\\");
    ASSERT_NE(nullptr, fixed);
    EXPECT_EQ(static_cast<DWORD>(MAKELONG(0, 13)), fixed->dwFileVersionMS);
    EXPECT_EQ(static_cast<DWORD>(MAKELONG(208, 0)), fixed->dwFileVersionLS);
    EXPECT_EQ(static_cast<DWORD>(MAKELONG(0, 13)), fixed->dwProductVersionMS);
    EXPECT_EQ(0u, fixed->dwProductVersionLS);
}

}  // namespace
}  // namespace depot::test
