// Sessions whose location has them keep their connection between calls.
#include "component/component.h"
#include "support/box_log.h"
#include "support/component_depots.h"
#include "support/directory_fixture.h"
#include "support/results.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

using testing::IsEmpty;

class KeptConnectionsTest : public ComponentTest {
protected:
    KeptConnectionsTest() {
        DefineDirectoryDepot(depots_, "Corp", server_.Port(), kSuffix);
        depots_.Dword("Corp", "KeepConnection1", 60);
        server_.AddFile("a.kra", kSuffix, "[S]\r\nK=1\r\n");
        session_.emplace(*api_);
    }
    ~KeptConnectionsTest() override { EXPECT_THAT(boxes_.Texts(), IsEmpty()); }

    HRESULT Load() { return api_->DPLoadFile(session_->Address(), Text(kFile)); }

    static constexpr char kFile[] = "<Corp>\\a.kra";

    DirectoryServer server_;
    const BoxLog boxes_;
    const CleanWorkingFiles clean_;
    std::optional<Session> session_;
};

TEST_F(KeptConnectionsTest, CallsOfASessionBindOnce) {
    server_.Mark();
    for (int call = 0; call < 3; ++call) {
        EXPECT_THAT(Load(), IsOk());
        EXPECT_EQ(L"1", Read(*session_, L"S", L"K"));
        EXPECT_THAT(api_->DPFileExists(*session_, Text(kFile)), IsOk());
    }
    EXPECT_EQ(1, server_.Counts().binds);
}

TEST_F(KeptConnectionsTest, RestartOfTheServerIsNotNoticed) {
    ASSERT_THAT(Load(), IsOk());
    server_.Stop();
    server_.Continue();
    EXPECT_THAT(Load(), IsOk());
    EXPECT_EQ(L"1", Read(*session_, L"S", L"K"));
    ASSERT_THAT(api_->DPSetProfileString(*session_, Text("S"), Text("K"), Text("2")), IsOk());
    server_.Stop();
    server_.Continue();
    EXPECT_THAT(api_->DPFlushFile(*session_), IsOk());
    EXPECT_EQ(L"2", Read(*session_, L"S", L"K"));
}

// A session keeps the definitions that it began with; a new one has its own.
TEST_F(KeptConnectionsTest, ChangedDefinitionIsThatOfTheNextSession) {
    ASSERT_THAT(Load(), IsOk());
    DirectoryServer other;
    other.AddFile("a.kra", kSuffix, "[S]\r\nK=other\r\n");
    depots_.Dword("Corp", "Port1", other.Port());
    EXPECT_THAT(Load(), IsOk());
    EXPECT_EQ(L"1", Read(*session_, L"S", L"K"));
    Session next(*api_);
    EXPECT_THAT(api_->DPLoadFile(next.Address(), Text(kFile)), IsOk());
    EXPECT_EQ(L"other", Read(next, L"S", L"K"));
}

TEST_F(KeptConnectionsTest, EndOfTheSessionEndsTheConnection) {
    ASSERT_THAT(Load(), IsOk());
    server_.Mark();
    session_.reset();
    EXPECT_TRUE(server_.WaitForLog("UNBIND"));
    session_.emplace(*api_);
}

}  // namespace
}  // namespace depot::test
