// The words for a directory's refusals, where they come from and where they are shown.
#include "model/help_texts.h"

#include <gtest/gtest.h>

#include "directory/directory_help.h"
#include "model/localization.h"
#include "platform/directory_client.h"
#include "resource_ids.h"
#include "support/unseen_host.h"

namespace depot {
namespace {

std::optional<std::string> TextOfNumber(unsigned id) {
    return "text " + std::to_string(id);
}

class HelpTextsTest : public testing::Test {
protected:
    HelpTextsTest() { InstallLocalization({.text = TextOfNumber}); }
    ~HelpTextsTest() override {
        InstallLocalization({});
        InstallDirectoryHelp(nullptr);
    }
};

TEST_F(HelpTextsTest, CodesThatUsersCanDoSomethingAboutHaveWords) {
    const auto textOf = [](unsigned id) { return TextOfNumber(id); };
    EXPECT_EQ(textOf(IDS_CREDENTIALS_REFUSED), HelpForDirectoryCode(LDAP_INVALID_CREDENTIALS));
    EXPECT_EQ(textOf(IDS_CREDENTIALS_UNREACHABLE), HelpForDirectoryCode(LDAP_SERVER_DOWN));
    EXPECT_EQ(textOf(IDS_CREDENTIALS_STRONGER), HelpForDirectoryCode(LDAP_STRONG_AUTH_REQUIRED));
    EXPECT_EQ(textOf(IDS_CREDENTIALS_SECURED), HelpForDirectoryCode(LDAP_CONFIDENTIALITY_REQUIRED));
    EXPECT_EQ(textOf(IDS_CREDENTIALS_RIGHTS), HelpForDirectoryCode(LDAP_INSUFFICIENT_RIGHTS));
    EXPECT_EQ(textOf(IDS_CREDENTIALS_UNWILLING), HelpForDirectoryCode(LDAP_UNWILLING_TO_PERFORM));
    EXPECT_EQ(std::nullopt, HelpForDirectoryCode(LDAP_NO_SUCH_OBJECT));
    EXPECT_EQ(std::nullopt, HelpForDirectoryCode(0));
    EXPECT_EQ(std::nullopt, HelpForDirectoryCode(0xFFFFFFFF));
}

TEST_F(HelpTextsTest, WithoutTextsThereAreNoWords) {
    InstallLocalization({});
    EXPECT_EQ(std::nullopt, HelpForDirectoryCode(LDAP_SERVER_DOWN));
}

TEST_F(HelpTextsTest, MessageThatAPersonSeesIsAsItWas) {
    InstallDirectoryHelp(HelpForDirectoryCode);
    EXPECT_EQ("LDAP: x", WithHelpWhereUnseen("LDAP: x", LDAP_SERVER_DOWN));
}

TEST_F(HelpTextsTest, MessageThatNobodySeesHasTheWordsBehindIt) {
    const test::UnseenHost host;
    ASSERT_TRUE(host.IsInPlace());
    EXPECT_EQ("LDAP: x", WithHelpWhereUnseen("LDAP: x", LDAP_SERVER_DOWN));
    InstallDirectoryHelp(HelpForDirectoryCode);
    EXPECT_EQ("LDAP: x\n" + *TextOfNumber(IDS_CREDENTIALS_UNREACHABLE),
              WithHelpWhereUnseen("LDAP: x", LDAP_SERVER_DOWN));
    EXPECT_EQ("LDAP: x", WithHelpWhereUnseen("LDAP: x", LDAP_NO_SUCH_OBJECT));
}

}  // namespace
}  // namespace depot
