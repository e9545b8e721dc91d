// Files of a depot in a directory, used through the interface as any other file.
#include "component/api2.h"
#include "component/late_calls.h"
#include "platform/handles.h"
#include "support/component_depots.h"
#include "support/directory_fixture.h"
#include "support/relay.h"
#include "support/results.h"
#include "support/test_folders.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kOld[] = "[S]\r\nK=old\r\n";
constexpr char kNew[] = "[S]\r\nK=new\r\n";

// The depot "Corp" in a directory, shown as "Company", beside the folder depot "Work".
class DirectoryFilesTest : public ComponentTest {
protected:
    DirectoryFilesTest() {
        DefineDirectoryDepot(depots_, "Corp", server_.Port(), base_);
        depots_.Text("Corp", "DisplayName.eng", "Company");
        server_.AddFolder("Sessions", base_);
        server_.AddFile("office.kra", "cn=Sessions," + base_, kOld);
    }

    // What the entry holds, read through a connection of the test's own.
    std::string Contents() {
        return DirectoryTestFolder(server_, base_, {}).Bytes("Sessions\\office.kra");
    }

    void Load(Session& session, const std::string& path = kFile) {
        ASSERT_THAT(api_->DPLoadFile(session.Address(), Text(path)), IsOk());
    }
    void Change(LONG_PTR session, const wchar_t* value = L"new") {
        EXPECT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Text(value)), IsOk());
    }

    void ExpectRecovered(const std::string& bytes) {
        const std::vector<std::string> files = RecoveredFiles();
        ASSERT_EQ(1u, files.size());
        EXPECT_EQ(bytes, FileBytes(files.front()));
        ASSERT_FALSE(boxes_.Texts().empty());
        EXPECT_THAT(boxes_.Texts().back(), EndsWith(files.front()));
    }

    static constexpr char kFile[] = "<Corp>\\Sessions\\office.kra";

    DirectoryServer& server_ = SharedServer();
    std::string base_ = NewFolder();
    BoxLog boxes_;
    CleanWorkingFiles clean_;
    const std::string work_ = DefineDepot("Work", "My Work");
};

TEST_F(DirectoryFilesTest, ValuesAreReadWrittenAndFlushed) {
    Session session(*api_);
    Load(session);
    EXPECT_EQ(L"old", Read(session, L"S", L"K"));
    Change(session);
    EXPECT_EQ(L"new", Read(session, L"S", L"K"));
    EXPECT_EQ(kOld, Contents());
    EXPECT_THAT(api_->DPFlushFile(session), IsOk());
    EXPECT_EQ(kNew, Contents());
    EXPECT_EQ(L"new", Read(session, L"S", L"K"));
    EXPECT_THAT(WorkingCopies(), SizeIs(1));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(boxes_.Texts(), IsEmpty());
}

TEST_F(DirectoryFilesTest, RootOfTheDepotIsNotDeleted) {
    Session session(*api_);
    for (const char* path : {"<Corp>\\", "<Corp>\\Sessions\\.."}) {
        EXPECT_THAT(api_->DPDeleteFile(session, Text(path)), IsRefused());
    }
    EXPECT_EQ(kOld, Contents());
}

TEST_F(DirectoryFilesTest, NextLoadWritesTheFirstFileBack) {
    Session session(*api_);
    Load(session);
    Change(session);
    Load(session, "<Work>\\other.kra");
    EXPECT_EQ(kNew, Contents());
    EXPECT_THAT(WorkingCopies(), IsEmpty());
}

TEST_F(DirectoryFilesTest, LoadOfTheSameFileStoresWhatWasChangedBeforeItIsRead) {
    Session session(*api_);
    Load(session);
    Change(session);
    Load(session);
    EXPECT_EQ(kNew, Contents());
    EXPECT_EQ(L"new", Read(session, L"S", L"K"));
    EXPECT_THAT(WorkingCopies(), SizeIs(1));
}

TEST_F(DirectoryFilesTest, EndOfTheSessionWritesTheFileBack) {
    {
        Session session(*api_);
        Load(session);
        Change(session, L" 'new' ");
    }
    EXPECT_EQ("[S]\r\nK=' 'new' '\r\n", Contents());
    EXPECT_THAT(WorkingCopies(), IsEmpty());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(DirectoryFilesTest, LoadFlushAndEndCostWhatTheyNeed) {
    {
        Session session(*api_);
        Load(session);
        server_.Mark();
        Load(session);
        EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
        Change(session);
        server_.Mark();
        EXPECT_THAT(api_->DPFlushFile(session), IsOk());
        EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1, .modifications = 1}),
                  server_.Counts());
        server_.Mark();
        EXPECT_THAT(api_->DPFileExists(session, Text(kFile)), IsOk());
        EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
        Change(session, L"other");
        server_.Mark();
    }
    EXPECT_EQ((OperationCounts{.binds = 1, .modifications = 1}), server_.Counts());
}

TEST_F(DirectoryFilesTest, LateBoundClientEditsTheFile) {
    IDispatch& object = *api_;
    const auto call = [&](const wchar_t* name, std::vector<Variant> arguments, Variant& result) {
        DISPID id = 0;
        LPOLESTR names = const_cast<LPOLESTR>(name);
        EXPECT_THAT(object.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id), IsOk());
        std::vector<VARIANT> reversed;
        for (auto it = arguments.rbegin(); it != arguments.rend(); ++it) {
            reversed.push_back(*it->get());
        }
        DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        EXPECT_THAT(object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                  result.get(), nullptr, nullptr),
                    IsOk());
    };
    Variant handle, loaded, none, value;
    call(L"DPInitialize", {}, handle);
    LONG session = handle.Number();
    call(L"DPLoadFile", {Variant::Reference(VT_I4, &session), Variant(std::string(kFile))}, loaded);
    call(L"DPSetProfileString", {session, L"S", L"K", L"new"}, none);
    call(L"DPFlushFile", {session}, none);
    EXPECT_EQ(kNew, Contents());
    call(L"DPUnInitialize", {session}, none);
    EXPECT_THAT(WorkingCopies(), IsEmpty());
}

TEST_F(DirectoryFilesTest, ServerGoneBeforeAFlushLeavesTheBytesRecovered) {
    Session session(*api_);
    Load(session);
    Change(session);
    server_.Stop();
    EXPECT_THAT(api_->DPFlushFile(session), IsOk());
    server_.Continue();
    ASSERT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_EQ(kNew, FileBytes(RecoveredFiles().front()));
    // The fresh fetch after it fails with a box of its own.
    EXPECT_THAT(boxes_.Texts(), testing::Contains(EndsWith(RecoveredFiles().front())));
    EXPECT_THAT(WorkingCopies(), IsEmpty());
    EXPECT_EQ(kOld, Contents());
}

TEST_F(DirectoryFilesTest, ServerGoneBeforeTheEndOfTheSessionLeavesTheBytesRecovered) {
    {
        Session session(*api_);
        Load(session);
        Change(session);
        server_.Stop();
    }
    server_.Continue();
    ExpectRecovered(kNew);
    EXPECT_THAT(WorkingCopies(), IsEmpty());
}

TEST_F(DirectoryFilesTest, WithdrawnRightsLeaveTheBytesRecovered) {
    DefineDirectoryDepot(depots_, "Corp", server_.Port(), base_, kReader, kReaderPassword);
    {
        Session session(*api_);
        Load(session);
        EXPECT_EQ(L"old", Read(session, L"S", L"K"));
        Change(session);
    }
    ExpectRecovered(kNew);
    EXPECT_EQ(kOld, Contents());
}

TEST_F(DirectoryFilesTest, FlushThatCannotStoreIsASuccessThatSaysWhy) {
    DefineDirectoryDepot(depots_, "Corp", server_.Port(), base_, kReader, kReaderPassword);
    const Com<IDepotIntrApi2> api2 = Api2Of(*api_);
    Session session(*api_);
    Load(session);
    Change(session);
    EXPECT_THAT(api_->DPFlushFile(session), IsOk());
    EXPECT_EQ(ERROR_ACCESS_DENIED, static_cast<DWORD>(LastErrorOf(*api2, session).code));
    ExpectRecovered(kNew);
    EXPECT_THAT(api_->DPFlushFile(session), IsOk());
    EXPECT_EQ(ERROR_SUCCESS, static_cast<DWORD>(LastErrorOf(*api2, session).code));
}

TEST_F(DirectoryFilesTest, FileThatCannotBeReadIsLoadedAsASuccessThatSaysWhy) {
    Relay relay(server_.Port());
    DefineDirectoryDepot(depots_, "Corp", relay.Port(), base_);
    const Com<IDepotIntrApi2> api2 = Api2Of(*api_);
    Session session(*api_);
    relay.Disturb({.dropBeforeRequest = 2});
    Load(session);
    EXPECT_EQ(ERROR_HOST_UNREACHABLE, static_cast<DWORD>(LastErrorOf(*api2, session).code));
    relay.Disturb({});
    Load(session, "<Corp>\\Sessions\\new.kra");
    EXPECT_EQ(ERROR_SUCCESS, static_cast<DWORD>(LastErrorOf(*api2, session).code));
}

TEST_F(DirectoryFilesTest, FlushOfAConflictRecoversTheEditAndShowsTheOtherVersion) {
    depots_.Dword("Corp", "DetectConflicts1", 1);
    Session session(*api_);
    Session someoneElse(*api_);
    Load(session);
    Load(someoneElse);
    Change(someoneElse, L"theirs");
    EXPECT_THAT(api_->DPFlushFile(someoneElse), IsOk());
    Change(session);
    EXPECT_THAT(api_->DPFlushFile(session), IsOk());
    EXPECT_EQ("[S]\r\nK=theirs\r\n", Contents());
    ExpectRecovered(kNew);
    EXPECT_EQ(L"theirs", Read(session, L"S", L"K"));
}

TEST_F(DirectoryFilesTest, PathMethodsAnswerForADirectory) {
    Session session(*api_);
    OutText display, depotPath, fileSystem, byDefault;
    EXPECT_THAT(api_->DPGetDepotDisplayPath(session, Text(kFile), display), IsOk());
    EXPECT_EQ(L"<Company>\\Sessions\\", display.Value());
    EXPECT_THAT(
        api_->DPGetPathFromDisplayName(session, Text("<company>\\Sessions\\office.kra"), depotPath),
        IsOk());
    EXPECT_EQ(Wide(kFile), depotPath.Value());
    EXPECT_THAT(api_->DPPathConvertDPtoFS(Text(kFile), fileSystem), IsRefused());
    EXPECT_TRUE(fileSystem.IsNull());
    EXPECT_THAT(WorkingCopies(), IsEmpty());
    EXPECT_THAT(api_->DPFileExists(0, Text(kFile)), IsOk());
    EXPECT_THAT(api_->DPFileExists(0, Text("<Corp>\\Sessions\\none.kra")), IsRefused());
    depots_.Dword("Corp", "DefaultDepot", 1);
    EXPECT_THAT(api_->DPGetDefaultDPPath(0, byDefault), IsOk());
    EXPECT_EQ(L"<Corp>\\", byDefault.Value());
    EXPECT_THAT(boxes_.Texts(), IsEmpty());
}

TEST_F(DirectoryFilesTest, SessionAndHandleZeroGiveTheSameAnswers) {
    depots_.Dword("Corp", "DefaultDepot", 1);
    const Session session(*api_);
    const auto answers = [&](LONG_PTR handle, const std::string& name) {
        OutText display, depotPath, byDefault;
        const HRESULT results[] = {
            api_->DPFileExists(handle, Text(name)),
            api_->DPGetDepotDisplayPath(handle, Text(name), display),
            api_->DPGetPathFromDisplayName(handle, Text(name), depotPath),
            api_->DPGetDefaultDPPath(handle, byDefault),
        };
        std::wstring all = display.Value() + L"|" + depotPath.Value() + L"|" + byDefault.Value();
        for (const HRESULT result : results) all += L"|" + std::to_wstring(result);
        return all;
    };
    for (const char* name : {kFile, "<Company>\\Sessions\\office.kra", "<Corp>\\missing.kra",
                             "<Corp>\\Sessions\\", "<Corp>", "office.kra"}) {
        EXPECT_EQ(answers(session, name), answers(0, name)) << name;
    }
    EXPECT_THAT(WorkingCopies(), IsEmpty());
}

TEST_F(DirectoryFilesTest, ShortPathOfAFileIsThatFilesBesideADefaultDepotInADirectory) {
    depots_.Dword("Corp", "DefaultDepot", 1);
    for (const std::string path : {"C:\\a.in", "C:\\a.ini"}) {
        SCOPED_TRACE(path);
        const UniqueHandle file(CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                            CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
        ASSERT_TRUE(file);
        OutText converted;
        EXPECT_THAT(api_->DPPathConvertDPtoFS(Text(path), converted), IsOk());
        EXPECT_EQ(Wide(path), converted.Value());
    }
    EXPECT_THAT(WorkingCopies(), IsEmpty());
}

TEST_F(DirectoryFilesTest, BracketedNameOfNoDepotIsNotConvertedWhereTheDefaultIsADirectory) {
    depots_.Dword("Corp", "DefaultDepot", 1);
    OutText converted;
    EXPECT_THAT(api_->DPPathConvertDPtoFS(Text("<Nowhere>\\office.kra"), converted), IsRefused());
    EXPECT_TRUE(converted.IsNull());
    EXPECT_THAT(WorkingCopies(), IsEmpty());
}

TEST_F(DirectoryFilesTest, WritabilityIsFoundByTryingAndLeavesNothing) {
    Session session(*api_);
    EXPECT_THAT(api_->DPIsPathWriteAble(session, Text(kFile)), IsOk());
    EXPECT_THAT(api_->DPIsPathWriteAble(session, Text("<Corp>\\x\\y\\new.kra")), IsOk());
    EXPECT_FALSE(server_.Holds("cn=x," + base_));
    EXPECT_THAT(api_->DPIsPathWriteAble(0, Text(kFile)), IsRefused());
    EXPECT_THAT(api_->DPIsPathWriteAble(session, Text("<Nobody>\\a.kra")), IsRefused());
    EXPECT_EQ(kOld, Contents());
}

TEST_F(DirectoryFilesTest, ReaderCannotWriteAMissingPlace) {
    DefineDirectoryDepot(depots_, "Corp", server_.Port(), base_, kReader, kReaderPassword);
    Session session(*api_);
    EXPECT_THAT(api_->DPIsPathWriteAble(session, Text("<Corp>\\x\\new.kra")), IsRefused());
    EXPECT_FALSE(server_.Holds("cn=x," + base_));
}

TEST_F(DirectoryFilesTest, IdleSessionKeepsNoConnectionAndEachCallBindsOnceAtMost) {
    Session session(*api_);
    Load(session);
    const auto expectClosed = [&](const char* call, int binds) {
        SCOPED_TRACE(call);
        EXPECT_LE(server_.Counts().binds, binds);
        const auto count = [&](const std::string& word) {
            const std::string log = server_.Log();
            int found = 0;
            for (std::size_t at = log.find(word); at != std::string::npos;
                 at = log.find(word, at + 1)) {
                ++found;
            }
            return found;
        };
        // The server notices the end of a connection a moment later.
        for (int attempt = 0; attempt < 100 && count(" closed") < count("ACCEPT"); ++attempt) {
            Sleep(10);
        }
        EXPECT_EQ(count("ACCEPT"), count(" closed"));
        server_.Mark();
    };
    server_.Mark();
    Load(session);
    expectClosed("load", 1);
    EXPECT_EQ(L"old", Read(session, L"S", L"K"));
    Change(session);
    expectClosed("values", 0);
    EXPECT_THAT(api_->DPFlushFile(session), IsOk());
    expectClosed("flush: a write-back and a load", 2);
    EXPECT_THAT(api_->DPFileExists(session, Text(kFile)), IsOk());
    expectClosed("exists", 1);
    EXPECT_THAT(api_->DPIsPathWriteAble(session, Text("<Corp>\\x\\y\\new.kra")), IsOk());
    expectClosed("writable", 1);
    OutText display;
    EXPECT_THAT(api_->DPGetDepotDisplayPath(session, Text(kFile), display), IsOk());
    expectClosed("display path", 0);
}

TEST_F(DirectoryFilesTest, LongPathsAreAnswered) {
    Session session(*api_);
    for (const std::size_t length : {259, 260, 261, 100'000}) {
        const std::string path = "<Corp>\\" + std::string(length - 11, 'x') + ".kra";
        ASSERT_EQ(length, path.size());
        Load(session, path);
        EXPECT_EQ(L"(default)", Read(session, L"S", L"K")) << length;
        EXPECT_THAT(api_->DPFileExists(session, Text(path)), IsRefused()) << length;
    }
}

}  // namespace
}  // namespace depot::test
