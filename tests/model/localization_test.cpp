#include "model/localization.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

TEST(LocalizationTest, LanguageIsEnglishUntilASourceIsInstalled) {
    InstallLocalization({});
    EXPECT_EQ("eng", LanguageCode());
    InstallLocalization({[] { return std::string("deu"); }});
    EXPECT_EQ("deu", LanguageCode());
    InstallLocalization({});
    EXPECT_EQ("eng", LanguageCode());
}

std::optional<std::string> NumberedText(unsigned id) {
    if (id == 404) return std::nullopt;
    return "text " + std::to_string(id);
}

TEST(LocalizationTest, TextsComeFromTheInstalledSourceOnly) {
    InstallLocalization({});
    EXPECT_EQ(std::nullopt, LocalizedText(501));
    InstallLocalization({.text = NumberedText});
    EXPECT_EQ("text 501", LocalizedText(501));
    EXPECT_EQ(std::nullopt, LocalizedText(404));
    EXPECT_EQ("eng", LanguageCode());
    InstallLocalization({});
    EXPECT_EQ(std::nullopt, LocalizedText(501));
}

}  // namespace
}  // namespace depot
