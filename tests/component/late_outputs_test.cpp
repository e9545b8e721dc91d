// Texts and numbers that late-bound calls take and return.
#include "component/late_calls.h"
#include "support/leak_counts.h"
#include "support/results.h"

namespace depot::test {
namespace {

class LateOutputsTest : public ComponentTest {
protected:
    LateOutputsTest() {
        folder_.MakeFile("A\\a.kra", "[S]\r\nK=text\r\nN=42\r\nBig=4294967295\r\n7=seven\r\n");
        EXPECT_THAT(api_->DPLoadFile(session_.Address(), Text("<A>\\a.kra")), IsOk());
    }

    LONG Handle() const { return static_cast<LONG>(session_); }

    HRESULT ReadInto(const Variant& output) {
        return late_.Call(L"DPGetProfileString", {Handle(), L"S", L"K", L"D", output, 100});
    }

    const std::string root_ = DefineDepot("A", "Depot A");
    LateClient late_{*api_};
    Session session_{*api_};
};

TEST_F(LateOutputsTest, TextIsStoredInATextVariable) {
    BSTR variable = nullptr;
    ASSERT_THAT(ReadInto(Variant::Reference(VT_BSTR, &variable)), IsOk());
    EXPECT_STREQ(L"text", variable);
    SysFreeString(variable);
}

TEST_F(LateOutputsTest, TextIsStoredInAScriptVariableOfAnyType) {
    Variant empty;
    ASSERT_THAT(ReadInto(Variant::Reference(empty)), IsOk());
    EXPECT_EQ(L"text", empty.Text());
    Variant number(4711);
    ASSERT_THAT(ReadInto(Variant::Reference(number)), IsOk());
    EXPECT_EQ(L"text", number.Text());
    Variant other(L"a former text");
    ASSERT_THAT(ReadInto(Variant::Reference(other)), IsOk());
    EXPECT_EQ(L"text", other.Text());
}

TEST_F(LateOutputsTest, TextForNoVariableIsDropped) {
    EXPECT_THAT(ReadInto(L"a literal"), IsOk());
    EXPECT_THAT(ReadInto(Variant()), IsOk());
}

TEST_F(LateOutputsTest, RefusedTextIsNullInTheVariable) {
    BSTR variable = nullptr;
    EXPECT_TRUE(
        SUCCEEDED(late_.Call(L"DPGetProfileString",
                             {0, L"S", L"K", L"D", Variant::Reference(VT_BSTR, &variable), 100})));
    EXPECT_EQ(nullptr, variable);
    Variant script(L"a former text");
    EXPECT_TRUE(SUCCEEDED(
        late_.Call(L"DPGetProfileString", {0, L"S", L"K", L"D", Variant::Reference(script), 100})));
    EXPECT_EQ(L"", script.Text());
}

TEST_F(LateOutputsTest, FormerTextOfATextVariableIsReleased) {
    EXPECT_EQ(0u, CountLeftovers([&] {
                  BSTR variable = SysAllocString(L"a former text");
                  ASSERT_THAT(ReadInto(Variant::Reference(VT_BSTR, &variable)), IsOk());
                  EXPECT_STREQ(L"text", variable);
                  // Refused, which stores a null text.
                  EXPECT_TRUE(SUCCEEDED(late_.Call(
                      L"DPGetProfileString",
                      {0, L"S", L"K", L"D", Variant::Reference(VT_BSTR, &variable), 100})));
                  EXPECT_EQ(nullptr, variable);
              }));
}

TEST_F(LateOutputsTest, ScriptVariableThatRefersToATextStoresItThere) {
    EXPECT_EQ(0u, CountLeftovers([&] {
                  BSTR text = SysAllocString(L"a former text");
                  Variant inner = Variant::Reference(VT_BSTR, &text);
                  ASSERT_THAT(ReadInto(Variant::Reference(inner)), IsOk());
                  EXPECT_EQ(VT_BSTR | VT_BYREF, inner.Type());
                  EXPECT_STREQ(L"text", text);
                  SysFreeString(text);
              }));
}

TEST_F(LateOutputsTest, ScriptVariablesAndResultsLeaveNothing) {
    EXPECT_EQ(0u, CountLeftovers([&] {
                  Variant variable(L"a former text"), result;
                  ASSERT_THAT(ReadInto(Variant::Reference(variable)), IsOk());
                  ASSERT_THAT(ReadInto(L"a literal"), IsOk());
                  ASSERT_THAT(late_.Call(L"DPGetDefaultDPPath", {Handle()}, &result), IsOk());
                  ASSERT_THAT(late_.Call(L"DPGetDefaultDPPath", {Handle()}), IsOk());
              }));
}

TEST_F(LateOutputsTest, FailedCallLeavesTheVariableAndNothingElse) {
    EXPECT_EQ(0u, CountLeftovers([&] {
                  BSTR text = SysAllocString(L"a former text");
                  Variant variable(L"another one");
                  for (const Variant& output :
                       {Variant::Reference(VT_BSTR, &text), Variant::Reference(variable)}) {
                      EXPECT_THAT(late_.Call(L"DPGetProfileString",
                                             {Handle(), L"S", L"K", L"D", output, L"no size"}),
                                  Fails(DISP_E_TYPEMISMATCH));
                  }
                  EXPECT_STREQ(L"a former text", text);
                  EXPECT_EQ(L"another one", variable.Text());
                  SysFreeString(text);
              }));
}

TEST_F(LateOutputsTest, VariableThatIsAlsoAnInputIsReadBeforeItIsStored) {
    BSTR variable = SysAllocString(L"by default");
    const Variant both = Variant::Reference(VT_BSTR, &variable);
    EXPECT_THAT(late_.Call(L"DPGetProfileString", {Handle(), L"S", L"Absent", both, both, 100}),
                IsOk());
    EXPECT_STREQ(L"by default", variable);
    SysFreeString(variable);
}

TEST_F(LateOutputsTest, TextIsReturnedAsTheResult) {
    Variant result;
    ASSERT_THAT(late_.Call(L"DPGetDefaultDPPath", {Handle()}, &result), IsOk());
    EXPECT_EQ(L"<A>\\", result.Text());
    ASSERT_THAT(late_.Call(L"DPPathConvertDPtoFS", {L"<A>\\a.kra"}, &result), IsOk());
    EXPECT_EQ(Wide(folder_.At("A\\a.kra")), result.Text());
}

TEST_F(LateOutputsTest, ResultMayBeIgnored) {
    EXPECT_THAT(late_.Call(L"DPGetDefaultDPPath", {Handle()}), IsOk());
    EXPECT_THAT(late_.Call(L"DPGetProfileInt", {Handle(), L"S", L"N", 5}), IsOk());
}

TEST_F(LateOutputsTest, NumberThatFitsIsReturnedSigned) {
    Variant result;
    ASSERT_THAT(late_.Call(L"DPGetProfileInt", {Handle(), L"S", L"N", 5}, &result), IsOk());
    EXPECT_EQ(42, result.Number());
    ASSERT_THAT(late_.Call(L"DPGetProfileInt", {Handle(), L"S", L"None", 0x7FFFFFFF}, &result),
                IsOk());
    EXPECT_EQ(0x7FFFFFFF, result.Number());
}

TEST_F(LateOutputsTest, NumberThatDoesNotFitStaysUnsigned) {
    Variant result;
    ASSERT_THAT(late_.Call(L"DPGetProfileInt",
                           {Handle(), L"S", L"None", Variant::Raw(VT_UI4, 0x80000000)}, &result),
                IsOk());
    EXPECT_EQ(VT_UI4, result.Type());
    EXPECT_EQ(0x80000000u, V_UI4(result.get()));
}

TEST_F(LateOutputsTest, InputTextIsTakenInEveryForm) {
    Variant result;
    BSTR text = SysAllocString(L"K");
    Variant variable(L"K");
    for (const Variant& key :
         {Variant(L"K"), Variant::Reference(VT_BSTR, &text), Variant::Reference(variable)}) {
        BSTR value = nullptr;
        EXPECT_THAT(late_.Call(L"DPGetProfileString", {Handle(), L"S", key, L"D",
                                                       Variant::Reference(VT_BSTR, &value), 100}),
                    IsOk());
        EXPECT_STREQ(L"text", value);
        SysFreeString(value);
    }
    EXPECT_STREQ(L"K", text);
    EXPECT_EQ(L"K", variable.Text());
    SysFreeString(text);
}

TEST_F(LateOutputsTest, InputOfAnotherTypeIsConverted) {
    Variant value;
    EXPECT_THAT(late_.Call(L"DPGetProfileString",
                           {Handle(), L"S", 7, L"D", Variant::Reference(value), 100}),
                IsOk());
    EXPECT_EQ(L"seven", value.Text());
    EXPECT_THAT(late_.Call(L"DPSetProfileString", {Handle(), L"S", L"N", 43}), IsOk());
    EXPECT_EQ(L"43", Read(session_, L"S", L"N"));
    EXPECT_THAT(late_.Call(L"DPSetProfileString", {Handle(), L"S", L"N", Variant()}), IsOk());
    EXPECT_EQ(L"(default)", Read(session_, L"S", L"N"));
}

TEST_F(LateOutputsTest, InputThatIsNoTextIsRefused) {
    EXPECT_THAT(late_.Call(L"DPSetProfileString", {Handle(), L"S", L"N", Variant::Raw(VT_NULL, 0)}),
                Fails(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(0u, late_.wrongArgument);
    EXPECT_EQ(L"42", Read(session_, L"S", L"N"));
}

TEST_F(LateOutputsTest, BlanksAndQuotesComeBackExactly) {
    for (const wchar_t* written : {L"   three blanks", L"\"quoted\"", L" '\" "}) {
        ASSERT_THAT(late_.Call(L"DPSetProfileString", {Handle(), L"S", L"V", written}), IsOk());
        Variant value;
        ASSERT_THAT(late_.Call(L"DPGetProfileString",
                               {Handle(), L"S", L"V", L"D", Variant::Reference(value), 100}),
                    IsOk());
        EXPECT_EQ(written, value.Text());
    }
}

}  // namespace
}  // namespace depot::test
