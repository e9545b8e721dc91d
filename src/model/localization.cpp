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

}  // namespace depot
