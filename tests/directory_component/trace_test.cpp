// The trace of the requests to a directory server.
#include "platform/trace.h"
#include "platform/local_file.h"
#include "support/directory_fixture.h"
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
    ASSERT_EQ(1, items.ConnectLocation(nullptr));
    FileBuffer buffer;
    EXPECT_EQ(1, items.ReadFileContents("cn=office.kra," + base_, buffer));
    EXPECT_EQ(0, items.ReadFileContents("cn=missing.kra," + base_, buffer));
    const std::string written = Written();
    EXPECT_THAT(written, HasSubstr(" ldap_bind_s \"" + std::string(kEditor) + "\" "));
    EXPECT_THAT(written, HasSubstr(" ldap_search_s \"cn=office.kra," + base_ + "\" "));
    EXPECT_THAT(written, HasSubstr(" ms 0\r\n"));
    EXPECT_THAT(written, HasSubstr(" ms 32\r\n"));
    EXPECT_THAT(written, Not(HasSubstr(kEditorPassword)));
    EXPECT_THAT(written, Not(HasSubstr("secret")));
}

}  // namespace
}  // namespace depot::test
