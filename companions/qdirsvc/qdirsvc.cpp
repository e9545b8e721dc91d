// A stand-in for the maker's directory-service library: it answers the two folder look-ups that
// DepotIntr makes, by ordinal 34, on machines where the product itself is not installed. Where the
// system folder has the product's own library it passes them on.
#include <shlobj.h>

#include <cstring>
#include <string>

#include "platform/compiler.h"
#include "platform/kept_library.h"
#include "platform/module_state.h"
#include "platform/paths.h"
#include "platform/registry_key.h"
#include "platform/system_code_page.h"
#include "platform/system_folder.h"
#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

constexpr char kProductKey[] = "Software\\Quillon\\Farrow\\13.00\\Wharfside";
constexpr char kDefaultUserFolder[] = "Quillon\\Farrow";

// Returns a folder that the product's key names in one hive.
std::string FolderIn(HKEY hive, const std::string& valueName) {
    const auto key = RegistryKey::Open(hive, kProductKey, KEY_QUERY_VALUE);
    return key ? key->ReadString(valueName).value_or("") : std::string();
}

// The same, in the user's hive before the machine's.
std::string ConfiguredFolder(const std::string& valueName) {
    const std::string folder = FolderIn(HKEY_CURRENT_USER, valueName);
    return folder.empty() ? FolderIn(HKEY_LOCAL_MACHINE, valueName) : folder;
}

// As far as it can be told: a link on the way is not followed.
bool IsOnNetwork(const std::string& folder) {
    if (NamesNetworkPlace(folder)) return true;
    const std::size_t colon = folder.find(':');
    if (colon == std::string::npos || colon == 0) return false;
    const char root[] = {folder[colon - 1], ':', '\\', '\0'};
    return GetDriveTypeA(root) == DRIVE_REMOTE;
}

// Creates every missing folder of the path.
void CreateFolders(const std::string& path) {
    for (std::size_t end = FindSeparator(path); end != std::string::npos;
         end = FindSeparator(path, end + 1)) {
        CreateDirectoryA(path.substr(0, end).c_str(), nullptr);
    }
    CreateDirectoryA(path.c_str(), nullptr);
}

std::string UserFolder() {
    std::string folder = ConfiguredFolder("UserDir");
    if (!folder.empty()) return folder;
    wchar_t wide[MAX_PATH] = {};
    if (SHGetFolderPathW(nullptr, CSIDL_PERSONAL | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT,
                         wide) != S_OK) {
        return {};
    }
    // In a folder of another name the user's files would not be found again.
    const auto documents = ExactAnsiFromWide(wide);
    if (!documents) return {};
    folder = JoinPath(*documents, "") + kDefaultUserFolder;
    CreateFolders(folder);
    return folder;
}

std::string ResourceFolder() {
    std::string folder = FolderIn(HKEY_CURRENT_USER, "HomeDir64");
    // Whoever can set the user's value could have files fetched from a machine of their own.
    if (folder.empty() || IsOnNetwork(folder)) folder = FolderIn(HKEY_LOCAL_MACHINE, "HomeDir64");
    return folder.empty() ? OwnModuleFolder() : folder;
}

constexpr WORD kLookUpOrdinal = 34;

using LookUp = int(__stdcall*)(int category, int item, char* buffer, unsigned size);

std::string ProductsPath() {
    const std::string folder = SystemFolder();
    if (folder.empty() || EqualsNoCase(folder, OwnModuleFolder())) return {};
    std::string path = folder + "qdirsvc.dll";
    return GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES ? std::string() : path;
}

// Returns the product's own library; null where there is none. Each session asks, and looking for a
// missing file in a large folder takes longer than all else: it is looked for once.
UniqueModule ProductsLibrary() {
    static const std::string path = ProductsPath();
    return path.empty() ? nullptr : LoadLibraryAlone(path);
}

LookUp LookUpOf(HMODULE library) {
    return library ? FunctionCast<LookUp>(GetProcAddress(library, MAKEINTRESOURCEA(kLookUpOrdinal)))
                   : nullptr;
}

std::string FolderOf(int category, int item) {
    // Whoever loads this library may do without the component, which knows the characters.
    static const bool installed = (InstallSystemCodePage(), true);
    static_cast<void>(installed);
    if (category == 18 && item == 0) return UserFolder();
    if (category == 1 && item == 3) return ResourceFolder();
    return {};
}

}  // namespace
}  // namespace depot

// Writes the folder of (category, item) as a NUL-terminated path; an empty text when there is none
// or it does not fit. The result is 1 when a folder was written.
DEPOT_ENTRY_POINT int __stdcall LookUpFolder(int category, int item, char* buffer, unsigned size) {
    if (buffer == nullptr || size == 0) return 0;
    buffer[0] = '\0';
    try {
        const depot::UniqueModule products = depot::ProductsLibrary();
        if (const depot::LookUp lookUp = depot::LookUpOf(products.get())) {
            return lookUp(category, item, buffer, size);
        }
        const std::string folder = depot::FolderOf(category, item);
        if (folder.empty() || folder.size() >= size) return 0;
        std::memcpy(buffer, folder.c_str(), folder.size() + 1);
        return 1;
    } catch (...) {
        return 0;
    }
}
