#include "bench/raw_session.h"

#include <cstring>
#include <string>

#include "bench/client.h"
#include "platform/handles.h"
#include "platform/macro_cache.h"

namespace depot::bench {
namespace {

constexpr char kLocaleKey[] = "Software\\Quillon\\Farrow\\13.00\\Locale";
constexpr char kProductKey[] = "Software\\Quillon\\Farrow\\13.00\\Wharfside";

// The values that a definition with one location is asked for, in order; those that are missing are
// asked for as well.
constexpr const char* kAskedValues[] = {"DisplayName.eng", "DefaultDepot", "OrderIndex", "Contains",
                                        "Path1",           "Type1",        "Path2",      "Icon"};

constexpr const char* kAskedOfDirectories[] = {"Host1",
                                               "Username1",
                                               "Password1",
                                               "Port1",
                                               "Authentication1",
                                               "Version1",
                                               "ConnectTimeout1",
                                               "FileAttributeName1",
                                               "FileObjectClass1",
                                               "FolderAttributeName1",
                                               "FolderObjectClass1",
                                               "FileContentsAttributeName1"};

void Query(HKEY key, const char* name) {
    BYTE data[261];
    DWORD size = sizeof(data);
    RegQueryValueExA(key, name, nullptr, nullptr, data, &size);
}

void ReadDefinition(HKEY list, const char* name, RawDepots kind) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(list, name, 0, KEY_READ, &key) != ERROR_SUCCESS) return;
    for (const char* value : kAskedValues) Query(key, value);
    if (kind == RawDepots::kDirectories) {
        for (const char* value : kAskedOfDirectories) Query(key, value);
    }
    RegCloseKey(key);
}

bool ReadHive(HKEY hive, RawDepots kind, REGSAM access = KEY_READ) {
    HKEY list = nullptr;
    if (RegOpenKeyExA(hive, kDepotsKey, 0, access, &list) != ERROR_SUCCESS) return false;
    char name[261];
    DWORD length = sizeof(name);
    for (DWORD index = 0; RegEnumKeyExA(list, index, name, &length, nullptr, nullptr, nullptr,
                                        nullptr) == ERROR_SUCCESS;
         ++index, length = sizeof(name)) {
        ReadDefinition(list, name, kind);
    }
    RegCloseKey(list);
    return true;
}

void ReadUserFolder() {
    HKEY product = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, kProductKey, 0, KEY_QUERY_VALUE, &product) !=
        ERROR_SUCCESS) {
        return;
    }
    Query(product, "UserDir");
    RegCloseKey(product);
}

void AskForLanguage(HKEY hive) {
    HKEY locale = nullptr;
    if (RegOpenKeyExA(hive, kLocaleKey, 0, KEY_QUERY_VALUE, &locale) == ERROR_SUCCESS) {
        RegCloseKey(locale);
    }
}

// The block in which the values of macros are shared, made under its lock.
void OpenMacroCache() {
    const UniqueHandle lock(CreateEventA(nullptr, FALSE, FALSE, "Quillon - Bench - Lock"));
    const UniqueHandle block(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                                sizeof(MacroValues), "Quillon - Bench - Values"));
    const UniqueView view(MapViewOfFile(block.get(), FILE_MAP_WRITE, 0, 0, sizeof(MacroValues)));
    std::memset(view.get(), 0, sizeof(MacroValues));
    SetEvent(lock.get());
}

}  // namespace

void DefineUserFolder() {
    const char userFolder[] = "C:\\Profiles\\";
    RegSetKeyValueA(HKEY_CURRENT_USER, kProductKey, "UserDir", REG_SZ, userFolder,
                    sizeof(userFolder));
}

void RawSession(RawDepots kind) {
    ReadUserFolder();
    ReadHive(HKEY_CURRENT_USER, kind);
    if (!ReadHive(HKEY_LOCAL_MACHINE, kind)) {
        ReadHive(HKEY_LOCAL_MACHINE, kind, KEY_READ | KEY_WOW64_64KEY);
    }
    AskForLanguage(HKEY_CURRENT_USER);
    AskForLanguage(HKEY_LOCAL_MACHINE);
    OpenMacroCache();
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    GetVersionExA(&version);
}

}  // namespace depot::bench
