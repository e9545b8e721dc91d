#include "depotctl/directory_words.h"

#include <gtest/gtest.h>

#include "model/localization.h"
#include "platform/directory_client.h"
#include "platform/handles.h"
#include "texts/resource_library.h"

namespace depot::ctl {
namespace {

TEST(DirectoryWordsTest, EveryCodeHasWordsThatNameIt) {
    for (std::uint32_t code = 1; code < 130; ++code) {
        const std::string text = WordsFor(code).text;
        EXPECT_NE(std::string::npos, text.find("(LDAP " + std::to_string(code) + ")"));
    }
    EXPECT_EQ("the user name or the password is wrong (LDAP 49)",
              WordsFor(LDAP_INVALID_CREDENTIALS).text);
}

TEST(DirectoryWordsTest, OnlyMissingServersAreUnreachable) {
    EXPECT_TRUE(MeansUnreachable(LDAP_SERVER_DOWN));
    EXPECT_TRUE(MeansUnreachable(LDAP_TIMEOUT));
    EXPECT_FALSE(MeansUnreachable(LDAP_SUCCESS));
    EXPECT_FALSE(MeansUnreachable(LDAP_INVALID_CREDENTIALS));
    EXPECT_FALSE(MeansUnreachable(LDAP_NO_SUCH_OBJECT));
}

// The texts of one language while it lives.
class TextsScope {
public:
    explicit TextsScope(const char* library)
        : library_(LoadLibraryExA(library, nullptr, LOAD_LIBRARY_AS_DATAFILE)) {
        EXPECT_NE(nullptr, library_.get());
        SetResourceLibrary(library_.get());
        InstallLocalization({[] { return std::string("deu"); }, ResourceText});
    }
    ~TextsScope() {
        InstallLocalization({});
        SetResourceLibrary(nullptr);
    }
    TextsScope(const TextsScope&) = delete;
    TextsScope& operator=(const TextsScope&) = delete;

private:
    const UniqueModule library_;
};

TEST(DirectoryWordsTest, HelpIsInTheLanguageOfTheTextsWhereTheseHaveIt) {
    constexpr std::uint32_t kWithTexts[] = {
        LDAP_INVALID_CREDENTIALS,      LDAP_SERVER_DOWN,         LDAP_STRONG_AUTH_REQUIRED,
        LDAP_CONFIDENTIALITY_REQUIRED, LDAP_INSUFFICIENT_RIGHTS, LDAP_UNWILLING_TO_PERFORM};
    for (const std::uint32_t code : kWithTexts) EXPECT_EQ("advice", HelpFor(code, "advice"));
    const TextsScope german("depotintr.deu.nls");
    for (const std::uint32_t code : kWithTexts) {
        const std::string help = HelpFor(code, "advice");
        EXPECT_NE("advice", help) << code;
        EXPECT_NE("", help) << code;
    }
    EXPECT_EQ("advice", HelpFor(LDAP_NO_SUCH_OBJECT, "advice"));
}

}  // namespace
}  // namespace depot::ctl
