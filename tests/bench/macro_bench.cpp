#include <string>
#include <vector>

#include "bench/benches.h"
#include "bench/comparison.h"
#include "macros/macro_table.h"
#include "macros/replacers.h"

namespace depot::bench {
namespace {

constexpr int kCalls = 1000;
constexpr int kRegistryCalls = 20;
constexpr char kPlainPath[] = "C:\\Users\\ann\\Documents\\Quillon\\Farrow\\Profiles";

// Keeps the compiler from dropping work whose result nobody reads.
volatile std::size_t sink = 0;

MacroValues Values() {
    MacroValues values = {};
    FillSlot(values.userFolder, "C:\\Users\\ann\\Documents\\Quillon\\Farrow");
    FillSlot(values.organization, "Quillon");
    FillSlot(values.languageCode, "deu");
    return values;
}

void Expand(const MacroValues& values, const char* path, int calls) {
    for (int call = 0; call < calls; ++call) {
        std::string text = path;
        ExpandReplacers(&values, text);
        sink = sink + text.size();
    }
}

// What no expansion can do without: a search for each macro.
void SearchOnly(const char* path) {
    for (int call = 0; call < kCalls; ++call) {
        const std::string text = path;
        for (const MacroStep& step : MacroTable()) {
            sink = sink + (text.find(step.macro) != std::string::npos ? 1 : 0);
        }
    }
}

// The searches, and the three values put into a text of their own.
void SearchAndCopy(const MacroValues& values, const char* path) {
    SearchOnly(path);
    for (int call = 0; call < kCalls; ++call) {
        std::string text = values.userFolder;
        text.append(1, '\\').append(values.organization).append(1, '.').append(values.languageCode);
        sink = sink + text.size();
    }
}

// The keys that the search for a home folder opens, recorded once.
class KeyRecorder final : public MacroSystem {
public:
    std::string SlotText(Slot /*slot*/) override { return {}; }
    std::string ExpandEnvironment(const std::string& text) override { return text; }
    RegistryText ReadRegistry(Hive /*hive*/, const std::string& key,
                              const std::string& /*name*/) override {
        keys.push_back(key);
        return {};
    }
    bool IsNtFamily() override { return true; }
    std::string WindowsFolder() override { return {}; }
    std::string SystemFolder() override { return {}; }
    std::string TemporaryFolder() override { return {}; }
    std::string DocumentsFolder() override { return {}; }
    std::string SystemSoundFolder() override { return {}; }
    std::optional<std::string> UserName() override { return {}; }
    std::optional<std::string> ShortPath(const std::string& /*path*/) override { return {}; }
    bool CreateFolder(const std::string& /*path*/) override { return false; }

    std::vector<std::string> keys;
};

std::vector<std::string> HomeFolderKeys() {
    KeyRecorder recorder;
    std::string text = "$FATHOMEDIR$";
    ExpandMacros({recorder}, text);
    return recorder.keys;
}

void OpenKeys(const std::vector<std::string>& keys) {
    for (int call = 0; call < kRegistryCalls; ++call) {
        // Every other entry is the machine's.
        for (std::size_t i = 0; i < keys.size(); ++i) {
            const HKEY root = i % 2 ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
            HKEY key = nullptr;
            if (RegOpenKeyExA(root, keys[i].c_str(), 0, KEY_QUERY_VALUE, &key) == ERROR_SUCCESS) {
                RegCloseKey(key);
            }
        }
    }
}

}  // namespace

void MeasureMacros() {
    const MacroValues values = Values();
    const std::vector<std::string> keys = HomeFolderKeys();
    constexpr char kThreeSlots[] = "$USERDIR$\\$ORGANIZATION$.$LANGUAGE_CODE$";
    PrintHeader("Macros: 1,000 expansions against the bare searches, 20 against the bare openings");
    Compare(
        "no macro", 2.0, [&] { Expand(values, kPlainPath, kCalls); },
        [] { SearchOnly(kPlainPath); });
    Compare(
        "three slot macros", 2.0, [&] { Expand(values, kThreeSlots, kCalls); },
        [&] { SearchAndCopy(values, kThreeSlots); });
    Compare(
        "registry list without a hit", 1.3, [&] { Expand(values, "$FATHOMEDIR$", kRegistryCalls); },
        [&] { OpenKeys(keys); });
}

}  // namespace depot::bench
