// The trace of the requests to a directory server.
#include "platform/trace.h"
#include "platform/local_file.h"
#include "support/directory_fixture.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class DirectoryTraceTest : public testing::Test {
protected:
    DirectoryTraceTest() {
        SetEnvironmentVariableA(kTraceVariable, path_.c_str());
        StartTrace();
    }
    ~DirectoryTraceTest() override {
        StopTrace();
        SetEnvironmentVariableA(kTraceVariable, nullptr);
    }

    std::string Written() const {
        const auto bytes = ReadLocalFile(path_);
        return bytes ? std::string(bytes->begin(), bytes->end()) : "(no file)";
    }

    ScratchFolder folder_;
    const std::string path_ = folder_.At("trace.txt");
    DirectoryServer& server_ = SharedServer();
    const std::string base_ = NewFolder();
};

TEST_F(DirectoryTraceTest, EveryRequestLeavesALineWithoutPasswordOrValue) {
    server_.AddFile("office.kra", base_, "a secret");
    auto location = server_.Location(base_).Clone();
    CLDAPItems items(location.get());
    ASSERT_THAT(items.ConnectLocation(nullptr), IsDone());
    FileBuffer buffer;
    EXPECT_THAT(items.ReadFileContents("cn=office.kra," + base_, buffer), IsDone());
    EXPECT_THAT(items.ReadFileContents("cn=missing.kra," + base_, buffer), Fails());
    const std::string written = Written();
    EXPECT_THAT(written, HasSubstr(" ldap_bind_s \"" + std::string(kEditor) + "\" "));
    EXPECT_THAT(written, HasSubstr(" ldap_search_s \"cn=office.kra," + base_ + "\" "));
    EXPECT_THAT(written, HasSubstr(" ms 0\r\n"));
    EXPECT_THAT(written, HasSubstr(" ms 32\r\n"));
    EXPECT_THAT(written, Not(HasSubstr(kEditorPassword)));
    EXPECT_THAT(written, Not(HasSubstr("secret")));
}

TEST_F(DirectoryTraceTest, ConditionalWriteLeavesALineWithoutEitherVersion) {
    const std::string dn = "cn=office.kra," + base_;
    server_.AddFile("office.kra", base_, "the first secret");
    auto location = server_.Location(base_).Clone();
    CLDAPItems items(location.get());
    ASSERT_THAT(items.ConnectLocation(nullptr), IsDone());
    FileBuffer present;
    ASSERT_THAT(items.ReadFileContents(dn, present), IsDone());
    const std::string text = "the second secret";
    const auto length = static_cast<std::uint32_t>(text.size());
    EXPECT_EQ(ULONG{LDAP_SUCCESS},
              CodeOf(items.Entries().ReplaceUnchanged(dn, text.data(), length, present)));
    EXPECT_THAT(Written(), HasSubstr(" ldap_modify_ext_s \"" + dn + "\" "));
    EXPECT_EQ(kContentsChanged,
              CodeOf(items.Entries().ReplaceUnchanged(dn, text.data(), length, present)));
    EXPECT_THAT(Written(), HasSubstr(" ms 122\r\n"));
    EXPECT_THAT(Written(), Not(HasSubstr("secret")));
}

TEST_F(DirectoryTraceTest, EveryPageOfAListingLeavesALine) {
    DirectoryServer server("database limits * size.soft=500 size.hard=500 size.prtotal=unlimited");
    ForgetServer(server.Port());
    std::string ldif;
    for (int number = 0; number < 501; ++number) {
        const std::string name = "f" + std::to_string(number);
        ldif +=
            "dn: cn=" + name + "," + kSuffix + "\nobjectClass: quillonFolder\ncn: " + name + "\n\n";
    }
    server.Apply(ldif);
    auto location = server.Location().Clone();
    CLDAPItems items(location.get());
    ASSERT_THAT(items.ConnectLocation(nullptr), IsDone());
    LdapItemList children;
    EXPECT_THAT(items.ListChildren(kSuffix, children), IsDone());
    const std::string written = Written();
    const std::string page = std::string(" ldap_search_ext_s \"") + kSuffix + "\" ";
    const std::size_t first = written.find(page);
    ASSERT_NE(std::string::npos, first) << written;
    EXPECT_NE(std::string::npos, written.find(page, first + 1)) << "there are two pages";
}

}  // namespace
}  // namespace depot::test
