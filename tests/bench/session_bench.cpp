#include <string>

#include "bench/benches.h"
#include "bench/comparison.h"

namespace depot::bench {
namespace {

constexpr char kProductKey[] = "Software\\Quillon\\Farrow\\13.00\\Wharfside";

// The values that a definition with one folder is asked for, in order; those that are missing are
// asked for as well.
constexpr const char* kAskedValues[] = {"DisplayName.eng", "DefaultDepot", "OrderIndex", "Contains",
                                        "Path1",           "Type1",        "Path2",      "Icon"};

void DefineDepots(int count) {
    RegDeleteTreeA(HKEY_CURRENT_USER, kDepotsKey);
    for (int number = 0; number < count; ++number) {
        const std::string key = std::string(kDepotsKey) + "\\Depot" + std::to_string(number);
        const std::string name = "Depot number " + std::to_string(number);
        const std::string path = "C:\\Depots\\" + std::to_string(number);
        const DWORD order = static_cast<DWORD>(count - number), type = 0;
        RegSetKeyValueA(HKEY_CURRENT_USER, key.c_str(), "DisplayName.eng", REG_SZ, name.c_str(),
                        static_cast<DWORD>(name.size() + 1));
        RegSetKeyValueA(HKEY_CURRENT_USER, key.c_str(), "Path1", REG_SZ, path.c_str(),
                        static_cast<DWORD>(path.size() + 1));
        RegSetKeyValueA(HKEY_CURRENT_USER, key.c_str(), "Type1", REG_DWORD, &type, sizeof(type));
        RegSetKeyValueA(HKEY_CURRENT_USER, key.c_str(), "OrderIndex", REG_DWORD, &order,
                        sizeof(order));
    }
}

void Query(HKEY key, const char* name) {
    BYTE data[261];
    DWORD size = sizeof(data);
    RegQueryValueExA(key, name, nullptr, nullptr, data, &size);
}

void ReadDefinition(HKEY list, const char* name) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(list, name, 0, KEY_READ, &key) != ERROR_SUCCESS) return;
    for (const char* value : kAskedValues) Query(key, value);
    RegCloseKey(key);
}

void ReadHive(HKEY hive) {
    HKEY list = nullptr;
    if (RegOpenKeyExA(hive, kDepotsKey, 0, KEY_READ, &list) != ERROR_SUCCESS) return;
    char name[261];
    DWORD length = sizeof(name);
    for (DWORD index = 0; RegEnumKeyExA(list, index, name, &length, nullptr, nullptr, nullptr,
                                        nullptr) == ERROR_SUCCESS;
         ++index, length = sizeof(name)) {
        ReadDefinition(list, name);
    }
    RegCloseKey(list);
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

void RawSession() {
    ReadUserFolder();
    ReadHive(HKEY_CURRENT_USER);
    ReadHive(HKEY_LOCAL_MACHINE);
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    GetVersionExA(&version);
}

}  // namespace

void MeasureSessions(IDepotIntrApi* api) {
    const char userFolder[] = "C:\\Profiles\\";
    RegSetKeyValueA(HKEY_CURRENT_USER, kProductKey, "UserDir", REG_SZ, userFolder,
                    sizeof(userFolder));
    PrintHeader("Sessions: open and close, against the raw registry reads");
    for (const int count : {0, 20, 1000}) {
        DefineDepots(count);
        Compare(
            "open and close, " + std::to_string(count) + " depots", 1.3,
            [&] {
                LONG_PTR session = 0;
                api->DPInitialize(&session);
                api->DPUnInitialize(session);
            },
            RawSession);
    }
    DefineDepots(0);
}

}  // namespace depot::bench
