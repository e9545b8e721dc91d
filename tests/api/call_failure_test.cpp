// The texts of failures that clients ask for.
#include "api/call_failure.h"

#include <gtest/gtest.h>

#include "model/localization.h"
#include "platform/directory_client.h"

namespace depot {
namespace {

class CallFailureTest : public testing::Test {
protected:
    ~CallFailureTest() override { InstallLocalization({}); }

    static CallFailure Of(std::uint32_t code) {
        return FailureOf(Result(Error(Reason::kRefused, CodeKind::kDirectory, code, "LDAP: x")));
    }
};

TEST_F(CallFailureTest, RefusalOfADirectoryIsToldInItsOwnWordsWithItsNumber) {
    InstallLocalization({.text = [](unsigned) { return std::optional<std::string>("Worte."); }});
    EXPECT_EQ("Worte. (LDAP 49)", Of(LDAP_INVALID_CREDENTIALS).text);
    EXPECT_EQ(DWORD{ERROR_LOGON_FAILURE}, Of(LDAP_INVALID_CREDENTIALS).code);
    EXPECT_EQ("Worte. (LDAP 53)", Of(LDAP_UNWILLING_TO_PERFORM).text);
    EXPECT_EQ("LDAP: x", Of(LDAP_NAMING_VIOLATION).text);
}

TEST_F(CallFailureTest, WithoutTextsTheSystemsWordsStay) {
    EXPECT_EQ("LDAP: x", Of(LDAP_INVALID_CREDENTIALS).text);
}

TEST_F(CallFailureTest, CodesOfTheSystemKeepTheirTexts) {
    InstallLocalization({.text = [](unsigned) { return std::optional<std::string>("Worte."); }});
    const Error error(Reason::kRefused, CodeKind::kSystem, LDAP_INVALID_CREDENTIALS, "own");
    EXPECT_EQ("own", FailureOf(Result(error)).text);
}

}  // namespace
}  // namespace depot
