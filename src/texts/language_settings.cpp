#include "texts/language_settings.h"

#include <array>
#include <optional>
#include <utility>

#include "platform/compiler.h"
#include "platform/managed_key.h"

namespace depot {
namespace {

using LanguageQuery = LANGID(WINAPI*)();

// Returns a value of the key, or nothing when the key did not open.
std::optional<std::string> ReadSetting(const std::optional<RegistryKey>& key, const char* name) {
    return key ? key->ReadString(name, kLanguageTextBytes) : std::nullopt;
}

void ApplyPolicies(LanguageSettings& settings) {
    const ManagedKey policies(kLocaleKey, ManagedKey::Part::kPoliciesOnly);
    if (policies.IsEmpty()) return;
    const auto apply = [&](const char* name, std::optional<std::string>& setting) {
        if (auto policy = policies.Text(name)) setting = std::move(policy->value);
    };
    apply("Language Search Method", settings.searchMethod);
    apply("Default UI Language", settings.defaultLanguage);
    apply("Available UI Languages", settings.availableLanguages);
    apply("Global Default UI Language", settings.globalDefaultLanguage);
}

}  // namespace

LanguageSettings ReadLanguageSettings() {
    const auto user = RegistryKey::Open(HKEY_CURRENT_USER, kLocaleKey, KEY_QUERY_VALUE);
    const auto machine = RegistryKey::Open(HKEY_LOCAL_MACHINE, kLocaleKey, KEY_QUERY_VALUE);
    const auto& userFirst = user ? user : machine;
    const auto& machineFirst = machine ? machine : user;
    LanguageSettings settings;
    settings.searchMethod = ReadSetting(userFirst, "Language Search Method");
    settings.defaultLanguage = ReadSetting(userFirst, "Default UI Language");
    settings.availableLanguages = ReadSetting(machineFirst, "Available UI Languages");
    settings.globalDefaultLanguage = ReadSetting(machine, "Global Default UI Language");
    ApplyPolicies(settings);
    return settings;
}

LANGID UserLanguageId(HMODULE systemLibrary) {
    const auto query =
        FunctionCast<LanguageQuery>(GetProcAddress(systemLibrary, "GetUserDefaultUILanguage"));
    return query != nullptr ? query() : GetUserDefaultLangID();
}

std::string CurrentDottedLanguage() {
    std::array<char, kLanguageTextBytes> name = {};
    // A failed choice leaves an empty text.
    ChooseDottedLanguage(ReadLanguageSettings(), UserLanguageId(), name);
    return name.data();
}

std::string CurrentLanguageCode() {
    std::string language = CurrentDottedLanguage();
    if (!language.empty()) language.erase(0, 1);
    return language;
}

}  // namespace depot
