#include "depotctl/directory_words.h"

#include <gtest/gtest.h>

#include "platform/directory_client.h"

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

}  // namespace
}  // namespace depot::ctl
