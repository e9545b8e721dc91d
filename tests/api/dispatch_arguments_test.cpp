#include "api/dispatch_arguments.h"

#include <gtest/gtest.h>

#include "support/leak_counts.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsOk;

using Parameter = DispatchAdapter::Parameter;

constexpr Parameter kHandleIn = {Parameter::Kind::kHandle, false, true, false};
constexpr Parameter kHandleInOut = {Parameter::Kind::kHandle, true, true, true};
constexpr Parameter kTextIn = {Parameter::Kind::kText, true, true, false};
constexpr Parameter kTextOut = {Parameter::Kind::kText, true, false, true};
constexpr Parameter kOther = {};

VARIANTARG Value(VARTYPE type, LONGLONG bits) {
    VARIANTARG value = {};
    V_VT(&value) = type;
    V_I8(&value) = bits;
    return value;
}

VARIANTARG Reference(VARTYPE type, void* variable) {
    VARIANTARG value = {};
    V_VT(&value) = static_cast<VARTYPE>(type | VT_BYREF);
    V_BYREF(&value) = variable;
    return value;
}

// One argument of one parameter.
class OneArgument {
public:
    OneArgument(const Parameter& parameter, VARIANTARG argument)
        : signature_{parameter}, argument_(argument) {}

    HRESULT Prepare() { return arguments_.Prepare(&wrongArgument_); }
    VARIANTARG& Passed() { return arguments_.Parameters()->rgvarg[0]; }
    void StoreOutputs() { arguments_.StoreOutputs(); }
    UINT WrongArgument() const { return wrongArgument_; }

private:
    DispatchAdapter::Signature signature_;
    VARIANTARG argument_;
    DISPPARAMS given_{&argument_, nullptr, 1, 0};
    DispatchArguments arguments_{signature_, given_};
    UINT wrongArgument_ = 99;
};

TEST(DispatchArgumentsTest, HandleByValueLosesTheForeignUpperHalfOfItsVariant) {
    OneArgument call(kHandleIn, Value(VT_I4, 0x1234567800000010));
    ASSERT_THAT(call.Prepare(), IsOk());
    EXPECT_EQ(VT_I4, V_VT(&call.Passed()));
    EXPECT_EQ(0x10, V_I8(&call.Passed()));
}

TEST(DispatchArgumentsTest, ReferencesToNothingAreRefusedBeforeTheyAreFollowed) {
    for (const Parameter& parameter : {kHandleIn, kHandleInOut, kTextIn, kTextOut, kOther}) {
        OneArgument call(parameter, Reference(VT_VARIANT, nullptr));
        EXPECT_THAT(call.Prepare(), Fails(DISP_E_TYPEMISMATCH));
        EXPECT_EQ(0u, call.WrongArgument());
    }
    OneArgument handle(kHandleInOut, Reference(VT_I4, nullptr));
    EXPECT_THAT(handle.Prepare(), Fails(DISP_E_TYPEMISMATCH));
    for (const VARTYPE type : {VT_BSTR, VT_I4}) {
        VARIANT inner = Reference(type, nullptr);
        for (const Parameter& parameter : {kHandleIn, kHandleInOut, kTextIn, kTextOut}) {
            OneArgument call(parameter, Reference(VT_VARIANT, &inner));
            EXPECT_THAT(call.Prepare(), Fails(DISP_E_TYPEMISMATCH));
        }
    }
}

TEST(DispatchArgumentsTest, LongWithItsHighestBitIsNoNegativeHandle) {
    OneArgument call(kHandleIn, Value(VT_I4, 0x80000000));
    ASSERT_THAT(call.Prepare(), IsOk());
    EXPECT_EQ(0x80000000, V_I8(&call.Passed()));
}

TEST(DispatchArgumentsTest, WholeHandleIsPassedInFullWidth) {
    OneArgument call(kHandleIn, Value(VT_I8, 0x1234567800000010));
    ASSERT_THAT(call.Prepare(), IsOk());
    EXPECT_EQ(0x1234567800000010, V_I8(&call.Passed()));
}

TEST(DispatchArgumentsTest, HandleVariableIsReplacedByOneOfPointerSize) {
    LONG variables[] = {0x10, 0x22222222};
    OneArgument call(kHandleInOut, Reference(VT_I4, variables));
    ASSERT_THAT(call.Prepare(), IsOk());
    ASSERT_EQ(VT_I4 | VT_BYREF, V_VT(&call.Passed()));
    auto* const slot = static_cast<LONGLONG*>(V_BYREF(&call.Passed()));
    EXPECT_EQ(0x10, *slot);
    *slot = 0x7654321000000020;
    call.StoreOutputs();
    EXPECT_EQ(0x20, variables[0]);
    EXPECT_EQ(0x22222222, variables[1]);
}

TEST(DispatchArgumentsTest, HandleAboveTwoGigabytesBecomesEightBytesInAScriptVariable) {
    VARIANT variable = Value(VT_EMPTY, 0);
    OneArgument call(kHandleInOut, Reference(VT_VARIANT, &variable));
    ASSERT_THAT(call.Prepare(), IsOk());
    *static_cast<LONGLONG*>(V_BYREF(&call.Passed())) = 0x1234567800000010;
    call.StoreOutputs();
    EXPECT_EQ(VT_I8, V_VT(&variable));
    EXPECT_EQ(0x1234567800000010, V_I8(&variable));
}

TEST(DispatchArgumentsTest, VariableTooNarrowForAHandleIsRefused) {
    SHORT variable = 0;
    OneArgument call(kHandleInOut, Reference(VT_I2, &variable));
    EXPECT_THAT(call.Prepare(), Fails(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(0u, call.WrongArgument());
}

TEST(DispatchArgumentsTest, ValueForAHandleToBeSetIsReadAndNotStored) {
    OneArgument call(kHandleInOut, Value(VT_I4, 0x10));
    ASSERT_THAT(call.Prepare(), IsOk());
    EXPECT_EQ(0x10, *static_cast<LONGLONG*>(V_BYREF(&call.Passed())));
    call.StoreOutputs();
}

TEST(DispatchArgumentsTest, TextVariableIsPassedOnAsItIs) {
    BSTR variable = nullptr;
    OneArgument call(kTextIn, Reference(VT_BSTR, &variable));
    ASSERT_THAT(call.Prepare(), IsOk());
    EXPECT_EQ(&variable, V_BSTRREF(&call.Passed()));
}

TEST(DispatchArgumentsTest, OutputTextReplacesTheFormerOneOfATextVariable) {
    BSTR variable = SysAllocString(L"a former text");
    const BSTR former = variable;
    {
        OneArgument call(kTextOut, Reference(VT_BSTR, &variable));
        ASSERT_THAT(call.Prepare(), IsOk());
        ASSERT_NE(&variable, V_BSTRREF(&call.Passed()));
        EXPECT_EQ(nullptr, *V_BSTRREF(&call.Passed()));
        *V_BSTRREF(&call.Passed()) = SysAllocString(L"text");
        EXPECT_EQ(former, variable);
        call.StoreOutputs();
    }
    EXPECT_STREQ(L"text", variable);
    SysFreeString(variable);
}

TEST(DispatchArgumentsTest, OutputTextThatIsNotStoredIsReleased) {
    BSTR variable = SysAllocString(L"a former text");
    EXPECT_EQ(0u, test::CountLeftovers([&] {
                  OneArgument call(kTextOut, Reference(VT_BSTR, &variable));
                  ASSERT_THAT(call.Prepare(), IsOk());
                  *V_BSTRREF(&call.Passed()) = SysAllocString(L"text");
              }));
    EXPECT_STREQ(L"a former text", variable);
    SysFreeString(variable);
}

TEST(DispatchArgumentsTest, MissingTextVariableIsPassedOnAsItIs) {
    for (const Parameter& parameter : {kTextIn, kTextOut}) {
        OneArgument call(parameter, Reference(VT_BSTR, nullptr));
        ASSERT_THAT(call.Prepare(), IsOk());
        EXPECT_EQ(nullptr, V_BSTRREF(&call.Passed()));
        call.StoreOutputs();
    }
}

TEST(DispatchArgumentsTest, NumberForATextIsConverted) {
    OneArgument call(kTextIn, Value(VT_I4, 42));
    ASSERT_THAT(call.Prepare(), IsOk());
    ASSERT_EQ(VT_BSTR | VT_BYREF, V_VT(&call.Passed()));
    EXPECT_STREQ(L"42", *V_BSTRREF(&call.Passed()));
}

TEST(DispatchArgumentsTest, OutputTextReplacesTheValueOfAScriptVariable) {
    VARIANT variable = Value(VT_I4, 42);
    OneArgument call(kTextOut, Reference(VT_VARIANT, &variable));
    ASSERT_THAT(call.Prepare(), IsOk());
    EXPECT_EQ(nullptr, *V_BSTRREF(&call.Passed()));
    *V_BSTRREF(&call.Passed()) = SysAllocString(L"text");
    call.StoreOutputs();
    ASSERT_EQ(VT_BSTR, V_VT(&variable));
    EXPECT_STREQ(L"text", V_BSTR(&variable));
    VariantClear(&variable);
}

TEST(DispatchArgumentsTest, OtherParametersArePassedOnAsTheyAre) {
    OneArgument call(kOther, Value(VT_NULL, 0x1234567800000010));
    ASSERT_THAT(call.Prepare(), IsOk());
    EXPECT_EQ(VT_NULL, V_VT(&call.Passed()));
    EXPECT_EQ(0x1234567800000010, V_I8(&call.Passed()));
}

TEST(DispatchArgumentsTest, NamedArgumentsAreMatchedByTheirIdentifiers) {
    const DispatchAdapter::Signature signature = {kOther, kHandleIn};
    VARIANTARG values[] = {Value(VT_I4, 0x1234567800000010), Value(VT_I4, 0x1234567800000020)};
    DISPID names[] = {1};
    DISPPARAMS given = {values, names, 2, 1};
    DispatchArguments arguments(signature, given);
    ASSERT_THAT(arguments.Prepare(nullptr), IsOk());
    EXPECT_EQ(0x10, V_I8(&arguments.Parameters()->rgvarg[0]));
    EXPECT_EQ(0x1234567800000020, V_I8(&arguments.Parameters()->rgvarg[1]));
}

TEST(DispatchArgumentsTest, UnknownNamesArePassedOnAsTheyAre) {
    const DispatchAdapter::Signature signature = {kHandleIn};
    VARIANTARG values[] = {Value(VT_NULL, 7)};
    for (const DISPID unknown : {5, -3}) {
        DISPID names[] = {unknown};
        DISPPARAMS given = {values, names, 1, 1};
        DispatchArguments arguments(signature, given);
        ASSERT_THAT(arguments.Prepare(nullptr), IsOk());
        EXPECT_EQ(VT_NULL, V_VT(&arguments.Parameters()->rgvarg[0]));
    }
}

}  // namespace
}  // namespace depot
