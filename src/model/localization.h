// What the model needs to know of the user's language. The host, which loads the localized
// resources, supplies it.
#pragma once

#include <optional>
#include <string>

namespace depot {

struct Localization {
    // Returns the language code of the user interface without a leading dot, such as "eng"; empty
    // when none can be found.
    std::string (*languageCode)() = nullptr;
    // Returns a string of the localized resources by its number (see resource_ids.h); nothing when
    // it cannot be had.
    std::optional<std::string> (*text)(unsigned id) = nullptr;
    // What the language code depends on: the key in both hives below which the settings stand, and
    // the system's language. Without these nobody can see whether the code has changed.
    const char* settingsKey = nullptr;
    unsigned (*systemLanguage)() = nullptr;
};

// Replaces the source of localized texts. Called once, before any other thread uses the component.
void InstallLocalization(const Localization& localization);

// The language code of the user interface at this moment: a change of the settings shows in the
// next answer. "eng" until a source is installed.
std::string LanguageCode();

// What the language code depends on; nothing when that cannot be seen.
struct LanguageOrigin {
    std::string settingsKey;
    unsigned systemLanguage = 0;
};
std::optional<LanguageOrigin> OriginOfLanguage();

// A string of the localized resources; nothing when it cannot be had or no source is installed, so
// that the caller uses its own English text.
std::optional<std::string> LocalizedText(unsigned id);

}  // namespace depot
