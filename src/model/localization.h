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
};

// Replaces the source of localized texts. Called once, before any other thread uses the component.
void InstallLocalization(const Localization& localization);

// The language code of the user interface; "eng" until a source is installed.
std::string LanguageCode();

}  // namespace depot
