// What users see of a directory's codes, and the page that explains it.
#include <fstream>
#include <regex>
#include <sstream>

#include "support/directory_fixture.h"

namespace depot::test {
namespace {

std::string TroubleshootingPage() {
    const std::ifstream file(DEPOTINTR_DOCS "/troubleshooting.md", std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The words are the system's, and other ones in every language; which error of its own stands for
// a code is the same everywhere.
TEST(ErrorWordsTest, TroubleshootingNamesTheSystemErrorsWhoseWordsUsersSee) {
    const std::string page = TroubleshootingPage();
    const std::regex quoted("\"LDAP: [^\"]+\" \\(LDAP_[A-Z_]+, (\\d+), system error (\\d+)\\)");
    DirectoryClient client;
    BindDirectoryClient(client);
    int count = 0;
    for (std::sregex_iterator found(page.begin(), page.end(), quoted), end; found != end; ++found) {
        const auto code = static_cast<std::uint32_t>(std::stoul((*found)[1]));
        const auto error = static_cast<DWORD>(std::stoul((*found)[2]));
        EXPECT_EQ(error, client.LdapMapErrorToWin32(code)) << "code " << code;
        std::string words;
        FormatErrorText(error, nullptr, nullptr, &words, nullptr);
        EXPECT_EQ("LDAP: " + words, MessageFor(code));
        ++count;
    }
    EXPECT_EQ(7, count);
}

TEST(ErrorWordsTest, CodesOfTheTroubleshootingPageHaveTheirNames) {
    const std::string page = TroubleshootingPage();
    const std::pair<const char*, std::uint32_t> names[] = {
        {"LDAP_TIMELIMIT_EXCEEDED", LDAP_TIMELIMIT_EXCEEDED},
        {"LDAP_SIZELIMIT_EXCEEDED", LDAP_SIZELIMIT_EXCEEDED},
        {"LDAP_UNDEFINED_TYPE", LDAP_UNDEFINED_TYPE},
        {"LDAP_NO_SUCH_OBJECT", LDAP_NO_SUCH_OBJECT},
        {"LDAP_INVALID_CREDENTIALS", LDAP_INVALID_CREDENTIALS},
        {"LDAP_INSUFFICIENT_RIGHTS", LDAP_INSUFFICIENT_RIGHTS},
        {"LDAP_OBJECT_CLASS_VIOLATION", LDAP_OBJECT_CLASS_VIOLATION},
        {"LDAP_SERVER_DOWN", LDAP_SERVER_DOWN},
        {"LDAP_TIMEOUT", LDAP_TIMEOUT}};
    for (const auto& [name, code] : names) {
        const bool isNamed =
            page.find(name + (", " + std::to_string(code))) != std::string::npos ||
            page.find(name + (" (" + std::to_string(code)) + ")") != std::string::npos;
        EXPECT_TRUE(isNamed) << name;
    }
}

}  // namespace
}  // namespace depot::test
