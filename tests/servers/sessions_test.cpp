// A client's session on a depot of whichever server the program runs with, through the interface.
#include <gmock/gmock.h>

#include <optional>
#include <vector>

#include "component/component.h"
#include "servers/server_rows.h"
#include "support/box_log.h"
#include "support/component_depots.h"
#include "support/directory_kind.h"
#include "support/test_folders.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

using testing::UnorderedElementsAre;

class ServerSessionTest : public ComponentTest {
protected:
    ServerSessionTest() {
        DefineDepot("Work");
        depots_.Dword("Work", "DefaultDepot", 1);
        DefineDirectoryDepot(depots_, "Corp", server_.Port(), base_);
        corp_.MakeFile("a.kra", "[S]\r\nK=old\r\n");
    }

    Session& Client() {
        if (!session_) session_.emplace(*api_);
        return *session_;
    }
    void Load(const std::string& path) {
        ASSERT_THAT(api_->DPLoadFile(Client().Address(), Text(path)), IsOk());
    }
    HRESULT Set(const wchar_t* value) {
        return api_->DPSetProfileString(Client(), Text(L"S"), Text(L"K"), Text(value));
    }

    DirectoryServer& server_ = SharedServer();
    const std::string base_ = NewFolder();
    const BoxLog boxes_;
    const CleanWorkingFiles clean_;
    DirectoryTestFolder corp_{server_, base_, "<Corp>\\"};
    std::optional<Session> session_;
};

TEST_F(ServerSessionTest, ListingHandsOutTheFilesOfAType) {
    Row("list a folder's files");
    corp_.MakeFile("b.kra", "2");
    corp_.MakeFile("c.txt", "3");
    corp_.MakeFolder("Sub");
    LONG_PTR list = 0;
    LONG count = 0;
    ASSERT_THAT(api_->DPFindInit(&list, Text("<Corp>\\"), Text(".kra"), APP_SKEIN, &count), IsOk());
    std::vector<std::wstring> found;
    for (LONG index = 0; index < count; ++index) {
        OutText path;
        EXPECT_THAT(api_->DPFindNext(list, index, path), IsOk());
        found.push_back(path.Value());
    }
    EXPECT_THAT(api_->DPUnInitialize(list), IsOk());
    EXPECT_THAT(found, testing::IsSupersetOf({L"<Corp>\\a.kra", L"<Corp>\\b.kra"}));
}

TEST_F(ServerSessionTest, ValuesOfAProfileAreRead) {
    Row("load a profile and read its values");
    Load("<Corp>\\a.kra");
    EXPECT_EQ(L"old", Read(Client(), L"S", L"K"));
}

TEST_F(ServerSessionTest, FlushedEditIsStored) {
    Row("set a value and flush");
    Load("<Corp>\\a.kra");
    EXPECT_THAT(Set(L"new"), IsOk());
    EXPECT_THAT(api_->DPFlushFile(Client()), IsOk());
    EXPECT_EQ("[S]\r\nK=new\r\n", corp_.Bytes("a.kra"));
}

TEST_F(ServerSessionTest, FileIsRenamedDeletedAndCopiedOut) {
    Row("rename, copy out and delete a file");
    EXPECT_THAT(api_->DPRenameFile(Client(), Text("<Corp>\\a.kra"), Text("<Corp>\\b.kra")), IsOk());
    const std::string local = folder_.At("out.kra");
    EXPECT_THAT(
        api_->DPCopyFileToLocalFS(Client(), Text("<Corp>\\b.kra"), Text(local), VARIANT_FALSE),
        IsOk());
    EXPECT_EQ("[S]\r\nK=old\r\n", FileBytes(local));
    EXPECT_THAT(api_->DPDeleteFile(Client(), Text("<Corp>\\b.kra")), IsOk());
    EXPECT_EQ(StoreContents(), corp_.Contents());
}

TEST_F(ServerSessionTest, SecuredSessionReadsAndStores) {
    Row("the same secured: StartTLS and LDAPS");
    const bool isDomain = SharedKind() == DirectoryKind::kSamba;
    const std::pair<DWORD, unsigned> ways[] = {{1, isDomain ? kPlainPort : server_.Port()},
                                               {2, server_.TlsPort()}};
    for (const auto& [security, port] : ways) {
        SCOPED_TRACE(security);
        session_.reset();
        DefineDirectoryDepot(depots_, "Corp", port, base_);
        depots_.Dword("Corp", "Security1", security);
        Load("<Corp>\\a.kra");
        EXPECT_THAT(Set(std::to_wstring(security).c_str()), IsOk());
        EXPECT_THAT(api_->DPFlushFile(Client()), IsOk());
        EXPECT_EQ("[S]\r\nK=" + std::to_string(security) + "\r\n", corp_.Bytes("a.kra"));
    }
}

TEST_F(ServerSessionTest, EditOverAnotherUsersVersionIsRecovered) {
    Row("keep another user's version (DetectConflicts)");
    depots_.Dword("Corp", "DetectConflicts1", 1);
    Load("<Corp>\\a.kra");
    EXPECT_THAT(Set(L"new"), IsOk());
    corp_.MakeFile("a.kra", "[S]\r\nK=theirs\r\n");
    EXPECT_THAT(api_->DPFlushFile(Client()), IsOk());
    EXPECT_EQ("[S]\r\nK=theirs\r\n", corp_.Bytes("a.kra"));
    ASSERT_EQ(1u, RecoveredFiles().size());
    EXPECT_EQ("[S]\r\nK=new\r\n", FileBytes(RecoveredFiles().front()));
    EXPECT_THAT(boxes_.Texts(),
                testing::ElementsAre(testing::HasSubstr("was changed by someone else meanwhile")));
}

TEST_F(ServerSessionTest, ReaderReadsAndStoresNothing) {
    Row("a reader reads and changes nothing");
    DefineDirectoryDepot(depots_, "Corp", server_.Port(), base_, kReader, kReaderPassword);
    Load("<Corp>\\a.kra");
    EXPECT_EQ(L"old", Read(Client(), L"S", L"K"));
    EXPECT_THAT(api_->DPIsPathWriteAble(Client(), Text("<Corp>\\b.kra")), IsRefused());
    EXPECT_THAT(api_->DPDeleteFile(Client(), Text("<Corp>\\a.kra")), IsRefused());
    EXPECT_THAT(api_->DPRenameFile(Client(), Text("<Corp>\\a.kra"), Text("<Corp>\\b.kra")),
                IsRefused());
    EXPECT_EQ("[S]\r\nK=old\r\n", corp_.Bytes("a.kra"));
}

}  // namespace
}  // namespace depot::test
