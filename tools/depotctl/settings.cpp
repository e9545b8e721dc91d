#include "depotctl/settings.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

#include "config/directory_defaults.h"
#include "depotctl/encoding.h"
#include "platform/managed_key.h"
#include "platform/text.h"
#include "platform/trace.h"
#include "platform/trace_settings.h"
#include "platform/user_presence.h"
#include "platform/wide_text.h"
#include "texts/language_settings.h"

namespace depot::ctl {
namespace {

enum class SettingForm { kText, kNumber };

struct Row {
    const char* key;
    const char* name;
    SettingForm form;
    const char* standard;
    SettingRange range = {};
};

constexpr Row kRows[] = {
    {kTraceKey, kTraceTarget, SettingForm::kText, "off"},
    {kTraceKey, kTraceSize, SettingForm::kNumber, "10", {1, TraceSettings::kMostSize}},
    {kTraceKey, kTraceFiles, SettingForm::kNumber, "1", {1, TraceSettings::kMostFiles}},
    {kDefaultsKey, kOfflineAllowed, SettingForm::kNumber, "1", {0, 1}},
    {kDefaultsKey, "Offline", SettingForm::kNumber, "0", {0, 1}},
    {kDefaultsKey, "OfflineSize", SettingForm::kNumber, "100", {1, 4096}},
    {kDefaultsKey, "KeepConnection", SettingForm::kNumber, "0", {0, 3600}},
};

constexpr const char* kPlaceNames[] = {"machine policy", "user policy", "user", "machine"};

std::string PathOf(const std::string& key, SettingPlace place) {
    const bool isPolicy = place <= SettingPlace::kUserPolicy;
    const bool isMachine = place == SettingPlace::kMachinePolicy || place == SettingPlace::kMachine;
    return (isMachine ? "HKEY_LOCAL_MACHINE\\" : "HKEY_CURRENT_USER\\") +
           (isPolicy ? PolicyKeyOf(key) : key);
}

SettingInForce InForce(const std::string& key, const char* name, std::string value,
                       SettingPlace place) {
    return {name,
            std::move(value),
            kPlaceNames[static_cast<std::size_t>(place)],
            PathOf(key, place),
            {},
            {}};
}

std::optional<SettingInForce> Find(const Row& row) {
    const ManagedKey key(row.key);
    if (row.form == SettingForm::kText) {
        const auto text = key.Text(row.name);
        if (text) return InForce(row.key, row.name, Utf8FromAnsi(text->value), text->place);
    } else {
        const auto number = key.Number(row.name, row.range);
        if (number) return InForce(row.key, row.name, std::to_string(number->value), number->place);
    }
    return std::nullopt;
}

SettingInForce InForce(const Row& row) {
    return Find(row).value_or(SettingInForce{row.name, row.standard, "default", {}, {}, {}});
}

// The variable counts where no policy says where to.
SettingInForce TraceInForce(const Row& row) {
    SettingInForce setting = InForce(row);
    const TraceSettings trace = ReadTraceSettings();
    if (trace.isFromEnvironment) {
        return {row.name, Utf8FromAnsi(trace.target), "environment", {}, {}, {}};
    }
    const bool isMeant = !setting.value.empty() && !EqualsNoCase(setting.value, row.standard);
    if (isMeant && trace.target.empty()) {
        setting.wrong = "is neither an absolute path nor \"debugger\" and counts as off";
        setting.advice = "write a path that begins with a drive or \\\\server\\share";
    }
    return setting;
}

// REQUIRES: there is such a row.
const Row& RowOf(std::string_view name) {
    return *std::find_if(std::begin(kRows), std::end(kRows),
                         [name](const Row& row) { return row.name == name; });
}

// Only the machine's places count.
SettingInForce ElevatedTraceInForce() {
    for (const bool isPolicy : {true, false}) {
        const SettingPlace place = isPolicy ? SettingPlace::kMachinePolicy : SettingPlace::kMachine;
        const auto key =
            RegistryKey::Open(HKEY_LOCAL_MACHINE, isPolicy ? PolicyKeyOf(kTraceKey) : kTraceKey);
        const auto number = key ? key->ReadDword(kTraceElevated) : std::nullopt;
        if (!number) continue;
        SettingInForce setting = InForce(kTraceKey, kTraceElevated, std::to_string(*number), place);
        if (*number > 1) {
            setting.wrong = "is neither 0 nor 1 and counts as 0";
            setting.advice = "write 0 or 1";
        }
        return setting;
    }
    return {kTraceElevated, "0", "default", {}, {}, {}};
}

// Which of the two hives has a language setting is decided by keys, see ReadLanguageSettings.
SettingInForce LanguageInForce(const char* name, const std::optional<std::string>& value) {
    if (!value) return {name, "none", "default", {}, {}, {}};
    const ManagedKey policies(kLocaleKey, ManagedKey::Part::kPoliciesOnly);
    const auto policy = policies.Text(name);
    const bool hasUserKey = RegistryKey::Open(HKEY_CURRENT_USER, kLocaleKey).has_value();
    const SettingPlace place = policy       ? policy->place
                               : hasUserKey ? SettingPlace::kUser
                                            : SettingPlace::kMachine;
    return InForce(kLocaleKey, name, Utf8FromAnsi(*value), place);
}

// The names of programs below one key of quiet hosts.
std::vector<std::string> ProgramsIn(const wchar_t* path) {
    std::vector<std::string> names;
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, &opened) !=
        ERROR_SUCCESS) {
        return names;
    }
    const UniqueHkey key(opened);
    constexpr DWORD kLongestName = 1024;
    std::wstring name(kLongestName, L'\0');
    for (DWORD index = 0;; ++index) {
        DWORD length = kLongestName;
        const LSTATUS status =
            RegEnumValueW(opened, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (status != ERROR_SUCCESS) return names;
        names.push_back(Utf8FromWide({name.data(), length}));
    }
}

void AddQuietHosts(std::vector<SettingInForce>& settings) {
    std::vector<std::string> known;
    for (const wchar_t* path : {kQuietHostsPolicy, kQuietHostsKey}) {
        const bool isPolicy = path == kQuietHostsPolicy;
        for (const std::string& name : ProgramsIn(path)) {
            const bool isKnown = std::any_of(known.begin(), known.end(), [&](const auto& other) {
                return SameName(other, name);
            });
            if (isKnown) continue;
            known.push_back(name);
            settings.push_back({"QuietHosts",
                                name,
                                isPolicy ? "machine policy" : "machine",
                                "HKEY_LOCAL_MACHINE\\" + Utf8FromWide(path),
                                {},
                                {}});
        }
    }
}

// A text as it stands; nothing of what a line cannot show.
std::string ShownText(const RegistryKey& key, const std::string& name) {
    const std::string text = Utf8FromAnsi(key.ReadString(name).value_or(""));
    const bool isShown = !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) >= ' ';
    });
    return isShown ? "\"" + text + "\"" : "what stands there";
}

// Says of a value why its place is passed over; nothing where it is not.
std::optional<Finding> Ignored(const Row& row, const RegistryKey& key) {
    constexpr DWORD kAny = 0;
    if (!key.ReadDwordOr(row.name, kAny)) return std::nullopt;
    if (row.form == SettingForm::kText) {
        if (key.ReadString(row.name)) return std::nullopt;
        return Wrong(row.name, "a text that is too long", "write a shorter one");
    }
    const std::string range =
        std::to_string(row.range.lowest) + " to " + std::to_string(row.range.highest);
    const auto number = key.ReadDword(row.name);
    if (!number) {
        return Wrong(row.name, ShownText(key, row.name) + ", which is no number (REG_DWORD),",
                     "write a number from " + range + " as a REG_DWORD");
    }
    if (*number >= row.range.lowest && *number <= row.range.highest) return std::nullopt;
    return Wrong(row.name, std::to_string(*number) + ", which is out of range,",
                 "write a number from " + range);
}

// The same for each place of a setting. `inForce` is what counts.
void AddIgnored(const Row& row, std::initializer_list<SettingPlace> places,
                const SettingInForce& inForce, Findings& findings) {
    for (const SettingPlace place : places) {
        const bool isMachine =
            place == SettingPlace::kMachinePolicy || place == SettingPlace::kMachine;
        const bool isPolicy = place <= SettingPlace::kUserPolicy;
        const auto key = RegistryKey::Open(isMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER,
                                           isPolicy ? PolicyKeyOf(row.key) : row.key);
        auto found = key ? Ignored(row, *key) : std::nullopt;
        if (!found) continue;
        found->text += std::string(" is ignored (") + kPlaceNames[static_cast<std::size_t>(place)] +
                       "): " + inForce.value + " counts (" + inForce.from + ")";
        findings.push_back(*std::move(found));
    }
}

}  // namespace

std::vector<SettingInForce> ReadSettings() {
    std::vector<SettingInForce> settings;
    const LanguageSettings language = ReadLanguageSettings();
    settings.push_back(LanguageInForce("Language Search Method", language.searchMethod));
    settings.push_back(LanguageInForce("Default UI Language", language.defaultLanguage));
    for (const Row& row : kRows) {
        const bool isTarget = row.name == std::string_view(kTraceTarget);
        settings.push_back(isTarget ? TraceInForce(row) : InForce(row));
    }
    settings.push_back(ElevatedTraceInForce());
    AddQuietHosts(settings);
    return settings;
}

Findings IgnoredSettings() {
    using enum SettingPlace;
    Findings findings;
    for (const Row& row : kRows) {
        const bool isTarget = row.name == std::string_view(kTraceTarget);
        AddIgnored(row, {kMachinePolicy, kUserPolicy, kUser, kMachine},
                   isTarget ? TraceInForce(row) : InForce(row), findings);
    }
    // Any number counts there.
    const Row elevated = {kTraceKey, kTraceElevated, SettingForm::kNumber, "0"};
    AddIgnored(elevated, {kMachinePolicy, kMachine}, ElevatedTraceInForce(), findings);
    return findings;
}

std::vector<SettingInForce> SettingsOf(const RawDefinition& definition, int number,
                                       const CDepotPath& location) {
    std::vector<SettingInForce> settings;
    const auto add = [&](const char* name, std::uint32_t value) {
        const bool isDefined = definition.Number(Numbered(name, number)).has_value();
        SettingInForce setting = InForce(RowOf(name));
        if (isDefined) setting = {{}, {}, "definition", {}, {}, {}};
        setting.name = Numbered(name, number);
        setting.value = std::to_string(value);
        settings.push_back(std::move(setting));
    };
    add("Offline", location.offline);
    SettingInForce permission = InForce(RowOf(kOfflineAllowed));
    if (permission.value == "0") {
        settings.front().from = std::move(permission.from);
        settings.front().key = std::move(permission.key);
    }
    add("OfflineSize", location.offlineSize);
    add("KeepConnection", location.keepConnection);
    return settings;
}

Findings SettingFindings(const std::vector<SettingInForce>& settings) {
    Findings findings;
    for (const SettingInForce& setting : settings) {
        if (!setting.IsSet()) continue;
        const std::string text = setting.value + " (" + setting.from + ")";
        findings.push_back(setting.wrong.empty()
                               ? Good(setting.name, text)
                               : Wrong(setting.name, text + " " + setting.wrong, setting.advice));
    }
    return findings;
}

Json SettingsJson(const std::vector<SettingInForce>& settings) {
    Json rows = Json::array();
    for (const SettingInForce& setting : settings) {
        Json row = {{"name", setting.name}, {"value", setting.value}, {"from", setting.from}};
        if (!setting.key.empty()) row["key"] = setting.key;
        if (!setting.wrong.empty()) row["wrong"] = setting.wrong;
        rows.push_back(std::move(row));
    }
    return rows;
}

}  // namespace depot::ctl
