// The calls of samples/anywhere.* as each language passes them: which variants its variables and
// its values become.
#include "component/late_calls.h"
#include "component/progress_object.h"

namespace depot::test {
namespace {

using testing::ElementsAre;

// How a language calls by name.
struct Language {
    const char* name;
    bool variablesAreVariants;  // what is passed by reference is a reference to a VARIANT
    bool passesAllVariables;    // values that stand in variables are passed by reference, too
    VARTYPE number;             // of a small number in the text of the program
    VARTYPE handle;             // of the variable that holds a handle
};

void PrintTo(const Language& language, std::ostream* stream) {
    *stream << language.name;
}

class LateLanguagesTest : public ComponentTest, public testing::WithParamInterface<Language> {
protected:
    LateLanguagesTest() {
        folder_.MakeFolder("A\\Sub");
        folder_.MakeFile("A\\Sub\\a.kre", "[Host]\r\nName=host.example\r\n");
    }

    Variant Number(LONG number) const { return Variant::Raw(GetParam().number, number); }
    static Variant Truth(bool value) { return Variant::Raw(VT_BOOL, value ? VARIANT_TRUE : 0); }

    // The handle as an argument that is only read.
    Variant Handle() {
        if (GetParam().passesAllVariables) return Variant::Reference(GetParam().handle, &handle_);
        return Variant::Raw(GetParam().handle, handle_);
    }
    // A handle that the method fills in, with the variant that holds it in some languages.
    Variant HandleVariable(Variant& variant) {
        if (!GetParam().variablesAreVariants) {
            return Variant::Reference(GetParam().handle, &handle_);
        }
        V_VT(variant.get()) = GetParam().handle;
        V_I8(variant.get()) = handle_;
        return Variant::Reference(variant);
    }

    const std::string root_ = DefineDepot("A", "Depot A");
    LateClient late_{*api_};
    LONGLONG handle_ = 0;
    Variant result_;
};

TEST_P(LateLanguagesTest, SampleDoesItsWork) {
    ASSERT_THAT(late_.Call(L"DPInitialize", {}, &result_), IsOk());
    handle_ = result_.Number();
    ASSERT_THAT(late_.Call(L"Quiet", {Handle(), Truth(true)}, &result_), IsOk());
    Variant variable;
    ASSERT_THAT(late_.Call(L"DPLoadFile", {HandleVariable(variable), L"<A>\\Sub\\a.kre"}), IsOk());

    BSTR text = SysAllocString(L"");
    Variant textVariable(L"");
    const bool variants = GetParam().variablesAreVariants;
    ASSERT_THAT(late_.Call(L"DPGetProfileString", {Handle(), L"Host", L"Name", L"(not set)",
                                                   variants ? Variant::Reference(textVariable)
                                                            : Variant::Reference(VT_BSTR, &text),
                                                   Number(260)}),
                IsOk());
    EXPECT_EQ(L"host.example", variants ? textVariable.Text() : std::wstring(text));
    SysFreeString(text);

    ASSERT_THAT(late_.Call(L"Find", {Handle(), L"<A>\\Sub", L".kre"}, &result_), IsOk());
    EXPECT_THAT(TextsOf(*result_.get()), ElementsAre(L"<A>\\Sub\\a.kre"));
    ASSERT_THAT(
        late_.Call(L"Copy", {Handle(), L"<A>\\Sub\\a.kre", L"<A>\\b.kre", Truth(true)}, &result_),
        IsOk());
    EXPECT_EQ(VT_BOOL, result_.Type());
    EXPECT_EQ(VARIANT_TRUE, V_BOOL(result_.get()));
    ASSERT_THAT(
        late_.Call(L"Copy", {Handle(), L"<A>\\Sub\\a.kre", L"<A>\\b.kre", Number(0)}, &result_),
        IsOk());
    EXPECT_EQ(VARIANT_FALSE, V_BOOL(result_.get()));
    ASSERT_THAT(late_.Call(L"LastErrorCode", {Handle()}, &result_), IsOk());
    EXPECT_EQ(ERROR_FILE_EXISTS, static_cast<DWORD>(result_.Number()));
    ASSERT_THAT(late_.Call(L"LastErrorText", {Handle()}, &result_), IsOk());
    EXPECT_NE(L"", result_.Text());
    ASSERT_THAT(late_.Call(L"WriteText", {Handle(), L"<A>\\c.txt", L"x", Number(2)}, &result_),
                IsOk());
    EXPECT_EQ("\xEF\xBB\xBFx", FileBytes(folder_.At("A\\c.txt")));
    EXPECT_THAT(late_.Call(L"DPUnInitialize", {Handle()}), IsOk());
}

INSTANTIATE_TEST_SUITE_P(Languages, LateLanguagesTest,
                         testing::Values(Language{"PowerShell", true, false, VT_I4, VT_I4},
                                         Language{"Pywin32", false, false, VT_I4, VT_I4},
                                         Language{"Comtypes", true, false, VT_I4, VT_I4},
                                         Language{"CSharp", false, false, VT_I4, VT_I4},
                                         Language{"CSharpLong", false, false, VT_I4, VT_I8},
                                         Language{"Vba", false, true, VT_I2, VT_I4},
                                         Language{"VbaLongLong", false, true, VT_I2, VT_I8},
                                         Language{"VbaVariant", true, false, VT_I2, VT_I4}),
                         [](const testing::TestParamInfo<Language>& language) {
                             return language.param.name;
                         });

}  // namespace
}  // namespace depot::test
