#include <string>

#include "bench/benches.h"
#include "bench/comparison.h"
#include "bench/raw_session.h"

namespace depot::bench {
namespace {

constexpr double kGoal = 1.3;

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

// What no depot is made of: the definitions change, and the list stays as it is.
void ChangeDefinitions() {
    static DWORD number = 0;
    ++number;
    RegSetKeyValueA(HKEY_CURRENT_USER, kDepotsKey, "Changes", REG_DWORD, &number, sizeof(number));
}

}  // namespace

void MeasureSessions(IDepotIntrApi* api) {
    DefineUserFolder();
    PrintHeader(
        "Sessions: open and close, against the raw registry reads and the same shared block");
    const auto openAndClose = [&] {
        LONG_PTR session = 0;
        api->DPInitialize(&session);
        api->DPUnInitialize(session);
    };
    for (const int count : {0, 20, 1000}) {
        const std::string depots = ", " + std::to_string(count) + " depots";
        DefineDepots(count);
        Compare("open and close" + depots, kGoal, openAndClose,
                [] { RawSession(RawDepots::kFolders); });
        // Both sides pay for the change.
        Compare(
            "change, open and close" + depots, kGoal,
            [&] {
                ChangeDefinitions();
                openAndClose();
            },
            [] {
                ChangeDefinitions();
                RawSession(RawDepots::kFolders);
            });
    }
    DefineDepots(0);
}

}  // namespace depot::bench
