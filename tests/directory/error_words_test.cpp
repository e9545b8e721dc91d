// What users see of a directory's codes, and the page that explains it.
#include <fstream>
#include <regex>
#include <sstream>

#include "platform/text.h"
#include "support/directory_fixture.h"

namespace depot::test {
namespace {

std::string TroubleshootingPage() {
    const std::ifstream file(DEPOTINTR_DOCS "/troubleshooting.md", std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

TEST(ErrorWordsTest, TroubleshootingQuotesTheMessagesThatUsersSee) {
    const std::string page = TroubleshootingPage();
    const std::regex quoted("\"(LDAP: [^\"]*)\" \\(LDAP_[A-Z_]+, (\\d+)\\)");
    int count = 0;
    for (std::sregex_iterator found(page.begin(), page.end(), quoted), end; found != end; ++found) {
        const auto code = static_cast<std::uint32_t>(std::stoul((*found)[2]));
        EXPECT_EQ((*found)[1].str(), TrimTrailingBlanks(MessageFor(code))) << "code " << code;
        ++count;
    }
    EXPECT_GE(count, 8);
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
        EXPECT_NE(std::string::npos, page.find(name + (", " + std::to_string(code)) + ")")) << name;
    }
}

}  // namespace
}  // namespace depot::test
