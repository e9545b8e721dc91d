#include "model/localization.h"

namespace depot {
namespace {

Localization installed;

}  // namespace

void InstallLocalization(const Localization& localization) {
    installed = localization;
}

std::string LanguageCode() {
    return installed.languageCode ? installed.languageCode() : "eng";
}

std::optional<LanguageOrigin> OriginOfLanguage() {
    if (installed.settingsKey == nullptr || installed.systemLanguage == nullptr) {
        return std::nullopt;
    }
    return LanguageOrigin{installed.settingsKey, installed.systemLanguage()};
}

std::optional<std::string> LocalizedText(unsigned id) {
    return installed.text ? installed.text(id) : std::nullopt;
}

}  // namespace depot
