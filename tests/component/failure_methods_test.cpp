// Why calls failed, and sessions that show no boxes.
#include <thread>

#include "component/api2.h"
#include "platform/handles.h"
#include "support/box_log.h"
#include "support/full_disk.h"

namespace depot::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class FailureMethodsTest : public ComponentTest {
protected:
    LastError Last() { return LastErrorOf(*api2_, session_); }

    // A depot whose server does not answer.
    std::string DefineFar() {
        depots_.Text("Far", "Path1", "dc=example,dc=test");
        depots_.Dword("Far", "Type1", 1);
        depots_.Text("Far", "Host1", "127.0.0.1");
        depots_.Dword("Far", "Port1", 9);
        depots_.Dword("Far", "Authentication1", 0);
        depots_.Dword("Work", "DefaultDepot", 1);
        return "<Far>\\a.kra";
    }

    const std::string root_ = DefineDepot("Work");
    const std::string far_ = DefineFar();
    const Com<IDepotIntrApi2> api2_ = Api2Of(*api_);
    Session session_{*api_};
    OutBool answer_;
};

TEST_F(FailureMethodsTest, EachInterfaceLeadsToTheOtherOnTheSameObject) {
    void* back = nullptr;
    ASSERT_THAT(api2_->QueryInterface(IID_IDepotIntrApi, &back), IsOk());
    const Com<IDepotIntrApi> first(static_cast<IDepotIntrApi*>(back));
    EXPECT_EQ(api_.get(), first.get());
    OutText path;
    EXPECT_THAT(api2_->DPGetDefaultDPPath(session_, path), IsOk());
    EXPECT_EQ(L"<Work>\\", path.Value());
}

TEST_F(FailureMethodsTest, SessionKeepsItsLastFailureUntilItsNextCall) {
    EXPECT_EQ(ERROR_SUCCESS, Last().code);
    EXPECT_EQ(L"", Last().text);
    OutText text;
    EXPECT_THAT(api2_->ReadText(session_, Bstr("<Work>\\none.kra"), text), IsRefused());
    EXPECT_TRUE(text.IsNull());
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(ERROR_FILE_NOT_FOUND, static_cast<DWORD>(Last().code));
        EXPECT_THAT(Last().text, HasSubstr(L"none.kra"));
    }
    EXPECT_THAT(api2_->Exists(session_, Bstr("<Work>\\none.kra"), answer_), IsOk());
    EXPECT_EQ(ERROR_SUCCESS, Last().code);
    EXPECT_EQ(L"", Last().text);
}

TEST_F(FailureMethodsTest, MethodsOfTheFirstInterfaceLeaveTheirFailuresToo) {
    EXPECT_THAT(api_->DPRenameFile(session_, Text("<Work>\\none.kra"), Text("<Work>\\a.kra")),
                IsRefused());
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, static_cast<DWORD>(Last().code));
    EXPECT_NE(L"", Last().text);
    EXPECT_THAT(api_->DPDeleteFile(session_, Text("<Work>\\none.kra")), IsRefused());
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, static_cast<DWORD>(Last().code));
    EXPECT_THAT(api_->DPSetSelItemPath(session_, Text("x")), IsOk());
    EXPECT_EQ(ERROR_SUCCESS, Last().code);
}

TEST_F(FailureMethodsTest, RenameOfAFileThatIsHeldSaysWhy) {
    const std::string file = folder_.MakeFile("Work\\a.kra", "[S]\r\nK=old\r\n");
    const UniqueHandle held =
        OwnFile(CreateFileA(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_THAT(api_->DPRenameFile(session_, Text("<Work>\\a.kra"), Text("<Work>\\b.kra")),
                IsRefused());
    EXPECT_EQ(ERROR_SHARING_VIOLATION, static_cast<DWORD>(Last().code));
    EXPECT_NE(L"", Last().text);
}

TEST_F(FailureMethodsTest, RenameOfAHiddenFileFailsWithTheSystemsWordsAlone) {
    const std::string file = folder_.MakeFile("Work\\a.kra", "[S]\r\nK=old\r\n");
    SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_HIDDEN);
    const UniqueHandle held =
        OwnFile(CreateFileA(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    for (const char* const to : {"<Work>\\b.kra", "<Work>\\None\\b.kra", "b.kra", "<Far>\\b.kra"}) {
        EXPECT_THAT(api_->DPRenameFile(session_, Text("<Work>\\a.kra"), Text(to)), IsRefused());
        EXPECT_NE(ERROR_SUCCESS, Last().code);
        EXPECT_THAT(Last().text, Not(HasSubstr(L"LDAP"))) << to;
    }
}

TEST_F(FailureMethodsTest, ValueThatCouldNotBeWrittenIsASuccessThatSaysWhy) {
    const auto write = [&](Text&& value) {
        return api_->DPSetProfileString(session_, Text("S"), Text("K"), value);
    };
    const std::string file = folder_.MakeFile("Work\\a.kra", "[S]\r\nK=old\r\n");
    EXPECT_THAT(write(Text("new")), IsRefused());
    EXPECT_EQ(ERROR_CAN_NOT_COMPLETE, static_cast<DWORD>(Last().code));
    ASSERT_THAT(api_->DPLoadFile(session_.Address(), Text("<Work>\\a.kra")), IsOk());
    {
        const UniqueHandle held =
            OwnFile(CreateFileA(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_THAT(write(Text("new")), IsOk());
        EXPECT_EQ(ERROR_SHARING_VIOLATION, static_cast<DWORD>(Last().code));
        EXPECT_NE(L"", Last().text);
    }
    EXPECT_THAT(write(Text(std::wstring(100'000, L'x'))), IsOk());
    EXPECT_EQ(ERROR_BUFFER_OVERFLOW, static_cast<DWORD>(Last().code));
    EXPECT_EQ(L"old", Read(session_, L"S", L"K"));
    EXPECT_THAT(write(Text("new")), IsOk());
    EXPECT_EQ(0, Last().code);
    EXPECT_EQ(L"new", Read(session_, L"S", L"K"));
}

TEST_F(FailureMethodsTest, SessionsKnowNothingOfEachOther) {
    Session other(*api_);
    EXPECT_THAT(api_->DPDeleteFile(session_, Text("<Work>\\none.kra")), IsRefused());
    EXPECT_EQ(ERROR_SUCCESS, LastErrorOf(*api2_, other).code);
    EXPECT_NE(0, Last().code);
}

TEST_F(FailureMethodsTest, ThreadKnowsItsLastCallWhateverTheSession) {
    EXPECT_THAT(api_->DPDeleteFile(session_, Text("<Work>\\none.kra")), IsRefused());
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, static_cast<DWORD>(LastErrorOf(*api2_, 0).code));
    EXPECT_THAT(api_->DPFileExists(0, Text("<Work>\\none.kra")), IsRefused());
    EXPECT_NE(0, LastErrorOf(*api2_, 0).code);
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, static_cast<DWORD>(Last().code));
    EXPECT_THAT(api_->DPSetSelItemPath(session_, Text("x")), IsOk());
    EXPECT_EQ(ERROR_SUCCESS, LastErrorOf(*api2_, 0).code);
}

TEST_F(FailureMethodsTest, ThreadsKnowNothingOfEachOther) {
    EXPECT_THAT(api_->DPDeleteFile(session_, Text("<Work>\\none.kra")), IsRefused());
    LONG other = -1;
    std::thread([&] {
        const Apartment apartment;
        const Com<IDepotIntrApi> api = Library::Own().CreateApi();
        other = LastErrorOf(*Api2Of(*api), 0).code;
    }).join();
    EXPECT_EQ(0, other);
    EXPECT_NE(0, LastErrorOf(*api2_, 0).code);
}

TEST_F(FailureMethodsTest, FailuresOfManyThreadsTakeBoundedRoom) {
    for (int times = 0; times < 200; ++times) {
        std::thread([&] {
            const Apartment apartment;
            const Com<IDepotIntrApi> api = Library::Own().CreateApi();
            EXPECT_THAT(api->DPSetSelItemPath(kJunkHandle, Text("x")), IsRefused());
            EXPECT_EQ(ERROR_INVALID_HANDLE, static_cast<DWORD>(LastErrorOf(*Api2Of(*api), 0).code));
        }).join();
    }
}

TEST_F(FailureMethodsTest, StaleHandleIsAFailureOfItsOwn) {
    LONG_PTR ended = 0;
    ASSERT_THAT(api_->DPInitialize(&ended), IsOk());
    ASSERT_THAT(api_->DPUnInitialize(ended), IsOk());
    for (const LONG_PTR handle : {ended, kJunkHandle, LONG_PTR{-1}}) {
        EXPECT_EQ(ERROR_INVALID_HANDLE, static_cast<DWORD>(LastErrorOf(*api2_, handle).code));
        EXPECT_NE(L"", LastErrorOf(*api2_, handle).text);
        EXPECT_THAT(api2_->Quiet(handle, VARIANT_TRUE, answer_), IsRefused());
        EXPECT_TRUE(answer_.IsFalse());
        EXPECT_THAT(api2_->Exists(handle, Bstr("<Work>"), answer_), IsRefused());
        EXPECT_TRUE(answer_.IsFalse());
    }
}

TEST_F(FailureMethodsTest, MissingOutputsAreRefusedAndTold) {
    LONG code = 0;
    for (const HRESULT result :
         {api2_->LastErrorCode(session_, nullptr), api2_->LastErrorText(session_, nullptr),
          api2_->Quiet(session_, VARIANT_TRUE, nullptr),
          api2_->Exists(session_, Bstr("<Work>"), nullptr),
          api2_->IsWritable(session_, Bstr("<Work>"), nullptr),
          api2_->ReadText(session_, Bstr("<Work>\\a"), nullptr),
          api2_->WriteText(session_, Bstr("<Work>\\a"), Bstr("x"), TEXT_ANSI, nullptr)}) {
        EXPECT_THAT(result, IsRefused());
        EXPECT_THAT(api2_->LastErrorCode(0, &code), IsOk());
        EXPECT_EQ(ERROR_INVALID_PARAMETER, static_cast<DWORD>(code));
    }
    EXPECT_FALSE(Exists(folder_.At("Work\\a")));
}

TEST_F(FailureMethodsTest, NameThatTheCodePageLacksIsRefusedAsAName) {
    EXPECT_THAT(api2_->Exists(session_, Bstr(L"<Work>\\\xD800.kra"), answer_), IsRefused());
    EXPECT_EQ(ERROR_INVALID_NAME, static_cast<DWORD>(Last().code));
}

TEST_F(FailureMethodsTest, QuietReturnsWhatItWas) {
    EXPECT_THAT(api2_->Quiet(session_, VARIANT_TRUE, answer_), IsOk());
    EXPECT_TRUE(answer_.IsFalse());
    EXPECT_THAT(api2_->Quiet(session_, VARIANT_FALSE, answer_), IsOk());
    EXPECT_TRUE(answer_.IsTrue());
    EXPECT_THAT(api2_->Quiet(session_, VARIANT_FALSE, answer_), IsOk());
    EXPECT_TRUE(answer_.IsFalse());
}

TEST_F(FailureMethodsTest, QuietSessionShowsNoBoxAndKeepsItsText) {
    const BoxLog boxes;
    EXPECT_THAT(api_->DPLoadFile(session_.Address(), Text(far_)), IsOk());
    ASSERT_EQ(1u, boxes.Texts().size());
    EXPECT_EQ(ERROR_HOST_UNREACHABLE, static_cast<DWORD>(Last().code));
    EXPECT_THAT(api2_->Quiet(session_, VARIANT_TRUE, answer_), IsOk());
    EXPECT_THAT(api_->DPLoadFile(session_.Address(), Text(far_)), IsOk());
    EXPECT_EQ(1u, boxes.Texts().size());
    EXPECT_EQ(ERROR_HOST_UNREACHABLE, static_cast<DWORD>(Last().code));
    EXPECT_THAT(Last().text, HasSubstr(Wide(boxes.Texts().front())));
    EXPECT_EQ(Last().text, LastErrorOf(*api2_, 0).text);
    EXPECT_THAT(api2_->Exists(session_, Bstr(far_), answer_), IsRefused());
    EXPECT_EQ(ERROR_HOST_UNREACHABLE, static_cast<DWORD>(Last().code));
    EXPECT_EQ(1u, boxes.Texts().size());
}

TEST_F(FailureMethodsTest, OtherSessionsOfAQuietOneStillShowTheirs) {
    const BoxLog boxes;
    Session loud(*api_);
    EXPECT_THAT(api2_->Quiet(session_, VARIANT_TRUE, answer_), IsOk());
    EXPECT_THAT(api_->DPLoadFile(loud.Address(), Text(far_)), IsOk());
    EXPECT_EQ(1u, boxes.Texts().size());
}

TEST_F(FailureMethodsTest, ReadOnlyFileIsNotReplacedAndSaysWhy) {
    const std::string file = folder_.MakeFile("Work\\a.kra", "old");
    ASSERT_TRUE(SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_THAT(api2_->WriteText(session_, Bstr(file), Bstr(L"new"), TEXT_AS_IT_IS, answer_),
                IsRefused());
    EXPECT_TRUE(answer_.IsFalse());
    EXPECT_EQ(ERROR_ACCESS_DENIED, static_cast<DWORD>(Last().code));
    EXPECT_EQ("old", FileBytes(file));
    EXPECT_TRUE(SetFileAttributesA(file.c_str(), FILE_ATTRIBUTE_NORMAL));
}

}  // namespace
}  // namespace depot::test
