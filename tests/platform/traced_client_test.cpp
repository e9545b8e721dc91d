// What the trace shows of requests to a directory.
#include "platform/traced_client.h"

#include <gmock/gmock.h>

#include "platform/trace.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::Not;

// The arguments with which the entry points behind the traced ones were called last.
struct Received {
    LDAP* connection;
    std::string name;
    std::string secret;
};
Received received;
LDAP* const kConnection = reinterpret_cast<LDAP*>(0x1000);

ULONG LDAPAPI Bind(LDAP* connection, PCHAR name, PCHAR secret) {
    received = {connection, name != nullptr ? name : "(null)", secret};
    return LDAP_INVALID_CREDENTIALS;
}

ULONG LDAPAPI Delete(LDAP* connection, PCHAR name) {
    received = {connection, name != nullptr ? name : "(null)", {}};
    return LDAP_SUCCESS;
}

class TracedClientTest : public testing::Test {
protected:
    TracedClientTest() {
        client_.ldap_simple_bind_s = &Bind;
        client_.ldap_delete_s = &Delete;
        SetEnvironmentVariableA(kTraceVariable, path_.c_str());
        StartTrace();
        TraceRequests(client_);
    }
    ~TracedClientTest() override {
        StopTrace();
        SetEnvironmentVariableA(kTraceVariable, nullptr);
    }

    ScratchFolder folder_;
    const std::string path_ = folder_.At("trace.txt");
    DirectoryClient client_;
};

TEST_F(TracedClientTest, RequestIsPassedOnAndTracedWithItsNameAndCode) {
    char name[] = "cn=ann,dc=farrow";
    char secret[] = "s3cret";
    EXPECT_THAT(client_.ldap_simple_bind_s(kConnection, name, secret),
                Fails(LDAP_INVALID_CREDENTIALS));
    EXPECT_EQ(kConnection, received.connection);
    EXPECT_EQ(name, received.name);
    EXPECT_EQ(secret, received.secret);
    const std::string trace = FileBytes(path_);
    EXPECT_THAT(trace, HasSubstr(" ldap_simple_bind_s \"cn=ann,dc=farrow\" "));
    EXPECT_THAT(trace, HasSubstr(" ms 49\r\n"));
    EXPECT_THAT(trace, Not(HasSubstr(secret)));
}

TEST_F(TracedClientTest, RequestWithoutANameIsTracedWithoutASubject) {
    EXPECT_THAT(client_.ldap_delete_s(kConnection, nullptr), IsDone());
    EXPECT_EQ("(null)", received.name);
    EXPECT_THAT(FileBytes(path_), testing::ContainsRegex(" ldap_delete_s \\d+\\.\\d+ ms 0\r\n"));
}

TEST_F(TracedClientTest, EntryPointThatIsMissingStaysRecognizable) {
    EXPECT_TRUE(IsMissing(client_.ldap_search_s));
    EXPECT_FALSE(IsMissing(client_.ldap_delete_s));
}

}  // namespace
}  // namespace depot::test
