#include "model/localization.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

TEST(LocalizationTest, TheLanguageIsEnglishUntilASourceIsInstalled) {
    InstallLocalization({});
    EXPECT_EQ("eng", LanguageCode());
    InstallLocalization({[] { return std::string("deu"); }});
    EXPECT_EQ("deu", LanguageCode());
    InstallLocalization({});
    EXPECT_EQ("eng", LanguageCode());
}

}  // namespace
}  // namespace depot
