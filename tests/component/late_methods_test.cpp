// The methods of the second interface, called by name beside those of the first. A refusal comes
// back as S_OK here: some systems' dispatch loses S_FALSE.
#include "component/api2.h"
#include "component/late_calls.h"
#include "component/progress_object.h"

namespace depot::test {
namespace {

using testing::ElementsAre;

class LateMethodsTest : public ComponentTest {
protected:
    Variant Handle() const { return Variant(static_cast<LONG>(session_)); }

    static bool IsTrue(Variant& result) {
        EXPECT_EQ(VT_BOOL, result.Type());
        return V_BOOL(result.get()) == VARIANT_TRUE;
    }

    const std::string root_ = DefineDepot("A", "Depot A");
    const std::string file_ = folder_.MakeFile("A\\a.kra", "text");
    LateClient late_{*api_};
    Session session_{*api_};
    Variant result_;
};

TEST_F(LateMethodsTest, OneObjectHasTheMethodsOfBothInterfaces) {
    ASSERT_THAT(late_.Call(L"DPGetDefaultDPPath", {Handle()}, &result_), IsOk());
    EXPECT_EQ(L"<A>\\", result_.Text());
    ASSERT_THAT(late_.Call(L"Exists", {Handle(), L"<A>\\a.kra"}, &result_), IsOk());
    EXPECT_TRUE(IsTrue(result_));
    ASSERT_THAT(late_.Call(L"exists", {Handle(), L"<A>\\b.kra"}, &result_), IsOk());
    EXPECT_FALSE(IsTrue(result_));
    ASSERT_THAT(late_.Call(L"IsWritable", {Handle(), L"<A>"}, &result_), IsOk());
    EXPECT_TRUE(IsTrue(result_));
    ASSERT_THAT(late_.Call(L"ReadText", {Handle(), L"<A>\\a.kra"}, &result_), IsOk());
    EXPECT_EQ(L"text", result_.Text());
}

TEST_F(LateMethodsTest, ArgumentsThatMayBeLeftOutAre) {
    ASSERT_THAT(late_.Call(L"WriteText", {Handle(), L"<A>\\b.kra", L"new"}, &result_), IsOk());
    EXPECT_TRUE(IsTrue(result_));
    EXPECT_EQ("new", FileBytes(folder_.At("A\\b.kra")));
    ASSERT_THAT(late_.Call(L"Find", {Handle(), L"<A>"}, &result_), IsOk());
    EXPECT_THAT(TextsOf(*result_.get()), ElementsAre(L"<A>\\a.kra", L"<A>\\b.kra"));
    ASSERT_THAT(late_.Call(L"Copy", {Handle(), L"<A>\\a.kra", L"<A>\\c.kra"}, &result_), IsOk());
    EXPECT_TRUE(IsTrue(result_));
    ASSERT_THAT(late_.Call(L"Move", {Handle(), L"<A>\\c.kra", L"<A>\\b.kra"}, &result_), IsOk());
    EXPECT_FALSE(IsTrue(result_));
    ASSERT_THAT(late_.Call(L"MakeFolder", {Handle(), L"<A>\\Sub"}, &result_), IsOk());
    EXPECT_TRUE(IsTrue(result_));
}

TEST_F(LateMethodsTest, ArgumentsAreGivenByTheirNames) {
    std::wstring texts[] = {L"Copy", L"bMayExist", L"bstrTo", L"bstrFrom", L"lDPIntr"};
    LPOLESTR names[] = {texts[0].data(), texts[1].data(), texts[2].data(), texts[3].data(),
                        texts[4].data()};
    DISPID ids[5] = {};
    ASSERT_THAT(api_->GetIDsOfNames(IID_NULL, names, 5, LOCALE_USER_DEFAULT, ids), IsOk());
    folder_.MakeFile("A\\b.kra", "old");
    ASSERT_THAT(
        late_.Invoke(ids[0],
                     {Variant::Raw(VT_BOOL, VARIANT_TRUE), L"<A>\\b.kra", L"<A>\\a.kra", Handle()},
                     {ids[1], ids[2], ids[3], ids[4]}, &result_),
        IsOk());
    EXPECT_TRUE(IsTrue(result_));
    EXPECT_EQ("text", FileBytes(folder_.At("A\\b.kra")));
}

TEST_F(LateMethodsTest, VariablesOfScriptsAreTakenForEveryArgument) {
    Variant handle = Handle(), from(L"<A>\\a.kra"), to(L"<A>\\b.kra"), yes;
    V_VT(yes.get()) = VT_BOOL;
    V_BOOL(yes.get()) = VARIANT_TRUE;
    ProgressObject object;
    Variant progress;
    *progress.get() = object.AsVariant();
    object.AddRef();
    ASSERT_THAT(
        late_.Call(L"Copy",
                   {Variant::Reference(handle), Variant::Reference(from), Variant::Reference(to),
                    Variant::Reference(yes), Variant::Reference(progress)},
                   &result_),
        IsOk());
    EXPECT_TRUE(IsTrue(result_));
    EXPECT_EQ(1u, object.calls.size());
    BSTR text = V_BSTR(from.get());
    LONGLONG wide = session_;
    ASSERT_THAT(late_.Call(L"Exists",
                           {Variant::Reference(VT_I8, &wide), Variant::Reference(VT_BSTR, &text)},
                           &result_),
                IsOk());
    EXPECT_TRUE(IsTrue(result_));
}

TEST_F(LateMethodsTest, FailureIsSeenByItsCodeAndText) {
    ASSERT_THAT(late_.Call(L"ReadText", {Handle(), L"<A>\\none.kra"}, &result_), IsOk());
    ASSERT_THAT(late_.Call(L"LastErrorCode", {Handle()}, &result_), IsOk());
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, static_cast<DWORD>(result_.Number()));
    ASSERT_THAT(late_.Call(L"LastErrorText", {Handle()}, &result_), IsOk());
    EXPECT_NE(L"", result_.Text());
    ASSERT_THAT(late_.Call(L"LastErrorCode", {0}, &result_), IsOk());
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, static_cast<DWORD>(result_.Number()));
    ASSERT_THAT(late_.Call(L"LastErrorCode", {4711}, &result_), IsOk());
    EXPECT_EQ(ERROR_INVALID_HANDLE, static_cast<DWORD>(result_.Number()));
}

TEST_F(LateMethodsTest, ArgumentsOfWrongTypesAreErrors) {
    EXPECT_FALSE(SUCCEEDED(late_.Call(L"Exists", {Handle()})));
    EXPECT_FALSE(SUCCEEDED(late_.Call(L"Exists", {Handle(), L"<A>", 3, 4})));
    EXPECT_FALSE(SUCCEEDED(late_.Call(L"Exists", {L"abc", L"<A>"})));
    EXPECT_FALSE(SUCCEEDED(late_.Call(L"Exists", {Handle(), Variant::Raw(VT_DISPATCH, 0)})));
    EXPECT_FALSE(SUCCEEDED(late_.Call(L"Exists", {Handle(), Variant::Raw(VT_BSTR | VT_BYREF, 0)})));
    EXPECT_FALSE(
        SUCCEEDED(late_.Call(L"Exists", {Handle(), Variant::Raw(VT_VARIANT | VT_BYREF, 0)})));
    EXPECT_FALSE(SUCCEEDED(late_.Call(L"WriteText", {Handle(), L"<A>\\a.kra", L"x", L"abc"})));
    ASSERT_THAT(late_.Call(L"WriteText", {Handle(), L"<A>\\a.kra", L"x", 4}, &result_), IsOk());
    EXPECT_FALSE(IsTrue(result_));
    ASSERT_THAT(late_.Call(L"Find", {Handle(), L"<A>", L"", 3}, &result_), IsOk());
    EXPECT_EQ(VT_EMPTY, result_.Type());
    ASSERT_THAT(late_.Call(L"Copy", {Handle(), L"<A>\\a.kra", L"<A>\\b.kra", 0, L"abc"}, &result_),
                IsOk());
    EXPECT_FALSE(IsTrue(result_));
    EXPECT_EQ("text", FileBytes(file_));
}

TEST_F(LateMethodsTest, TextThatWouldBeReadInAnotherEncodingIsRefused) {
    // The letters of a byte order mark in the code page, or none of it.
    for (const wchar_t* text : {L"\xFEFFx", L"\xFF\xFEx"}) {
        if (GetACP() == CP_UTF8 && text[0] != 0xFEFF) continue;
        ASSERT_THAT(late_.Call(L"WriteText", {Handle(), L"<A>\\a.kra", text}, &result_), IsOk());
        EXPECT_FALSE(IsTrue(result_));
        ASSERT_THAT(late_.Call(L"LastErrorCode", {Handle()}, &result_), IsOk());
        EXPECT_EQ(ERROR_NO_UNICODE_TRANSLATION, static_cast<DWORD>(result_.Number()));
        EXPECT_EQ("text", FileBytes(file_));
    }
}

TEST_F(LateMethodsTest, LongTextsAreRefusedOrPassedOnWhole) {
    const std::wstring text(100000, L'x');
    ASSERT_THAT(late_.Call(L"Exists", {Handle(), (L"<A>\\" + text).c_str()}, &result_), IsOk());
    EXPECT_FALSE(IsTrue(result_));
    ASSERT_THAT(late_.Call(L"WriteText", {Handle(), L"<A>\\a.kra", text.c_str()}, &result_),
                IsOk());
    ASSERT_THAT(late_.Call(L"ReadText", {Handle(), L"<A>\\a.kra"}, &result_), IsOk());
    EXPECT_EQ(text, result_.Text());
}

}  // namespace
}  // namespace depot::test
