// Handles and arguments of late-bound calls.
#include "component/late_calls.h"
#include "support/failing_memory.h"
#include "support/results.h"

namespace depot::test {
namespace {

class LateHandlesTest : public ComponentTest {
protected:
    LateHandlesTest() {
        folder_.MakeFile("A\\a.kra", "[S]\r\nK=1\r\n");
        EXPECT_THAT(api_->DPLoadFile(session_.Address(), Text("<A>\\a.kra")), IsOk());
    }

    LONG Handle() const { return static_cast<LONG>(session_); }

    // Reads a number with the handle given in some form. The result of a refused call is 0.
    LONG ReadWith(const Variant& handle) {
        Variant result;
        EXPECT_THAT(late_.Call(L"DPGetProfileInt", {handle, L"S", L"K", 5}, &result), IsOk());
        return result.Number();
    }

    const std::string root_ = DefineDepot("A", "Depot A");
    LateClient late_{*api_};
    Session session_{*api_};
};

TEST_F(LateHandlesTest, InitializingReturnsALong) {
    Variant handle;
    ASSERT_THAT(late_.Call(L"DPInitialize", {}, &handle), IsOk());
    EXPECT_GT(handle.Number(), 0);
    EXPECT_THAT(api_->DPSetSelItemPath(handle.Number(), Text("x")), IsOk());
    EXPECT_THAT(late_.Call(L"DPUnInitialize", {handle}), IsOk());
    EXPECT_THAT(api_->DPSetSelItemPath(handle.Number(), Text("x")), IsRefused());
}

TEST_F(LateHandlesTest, HandleByValueIsTakenInEveryNumericType) {
    EXPECT_EQ(1, ReadWith(Handle()));
    EXPECT_EQ(1, ReadWith(Variant::Raw(VT_I8, session_)));
    EXPECT_EQ(1, ReadWith(Variant::Raw(VT_UI8, session_)));
    EXPECT_EQ(1, ReadWith(Variant::Raw(VT_UI4, session_)));
    EXPECT_EQ(1, ReadWith(std::to_string(Handle())));
    Variant real = Variant::Raw(VT_R8, 0);
    V_R8(real.get()) = Handle();
    EXPECT_EQ(1, ReadWith(real));
}

TEST_F(LateHandlesTest, ForeignUpperHalfOfALongDoesNotCount) {
    EXPECT_EQ(1, ReadWith(Variant::Raw(VT_I4, session_ | (LONGLONG{0x12345678} << 32))));
}

TEST_F(LateHandlesTest, ForeignUpperHalfOfEightBytesDoesNotCount) {
    EXPECT_EQ(1, ReadWith(Variant::Raw(VT_I8, session_ | (LONGLONG{0x12345678} << 32))));
    EXPECT_EQ(0, ReadWith(Variant::Raw(VT_I8, (session_ + 8) | (LONGLONG{0x12345678} << 32))));
}

TEST_F(LateHandlesTest, HandleByValueIsTakenFromVariables) {
    LONG four = Handle();
    LONGLONG eight = session_;
    Variant variable(Handle());
    EXPECT_EQ(1, ReadWith(Variant::Reference(VT_I4, &four)));
    EXPECT_EQ(1, ReadWith(Variant::Reference(VT_I8, &eight)));
    EXPECT_EQ(1, ReadWith(Variant::Reference(variable)));
}

TEST_F(LateHandlesTest, EmptyAndZeroAreHandleZero) {
    EXPECT_EQ(0, ReadWith(Variant()));
    EXPECT_EQ(0, ReadWith(0));
    EXPECT_EQ(0, ReadWith(Variant::Raw(VT_I2, 0)));
    EXPECT_THAT(late_.Call(L"DPUnInitialize", {Variant()}), IsOk());
}

TEST_F(LateHandlesTest, TextThatIsNoNumberIsNoHandle) {
    EXPECT_THAT(late_.Call(L"DPGetProfileInt", {L"abc", L"S", L"K", 5}),
                Fails(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(3u, late_.wrongArgument);
}

TEST_F(LateHandlesTest, LoadingStoresANewHandleBetweenIntactNeighbours) {
    LONG variables[] = {0x11111111, 0, 0x22222222};
    ASSERT_THAT(
        late_.Call(L"DPLoadFile", {Variant::Reference(VT_I4, &variables[1]), L"<A>\\a.kra"}),
        IsOk());
    EXPECT_EQ(0x11111111, variables[0]);
    EXPECT_GT(variables[1], 0);
    EXPECT_EQ(0x22222222, variables[2]);
    EXPECT_THAT(api_->DPUnInitialize(variables[1]), IsOk());
}

TEST_F(LateHandlesTest, LoadingKeepsAGivenHandleAndItsNeighbours) {
    LONG variables[] = {0x11111111, Handle(), 0x22222222};
    ASSERT_THAT(
        late_.Call(L"DPLoadFile", {Variant::Reference(VT_I4, &variables[1]), L"<A>\\a.kra"}),
        IsOk());
    EXPECT_EQ(0x11111111, variables[0]);
    EXPECT_EQ(Handle(), variables[1]);
    EXPECT_EQ(0x22222222, variables[2]);
}

TEST_F(LateHandlesTest, EveryVariableThatIsWideEnoughTakesANewHandle) {
    for (const VARTYPE type : {VT_I4, VT_UI4, VT_INT, VT_UINT}) {
        LONG variables[] = {0, 0x22222222};
        ASSERT_THAT(late_.Call(L"DPLoadFile", {Variant::Reference(type, variables), L"<A>\\a.kra"}),
                    IsOk());
        EXPECT_EQ(0x22222222, variables[1]);
        EXPECT_THAT(api_->DPFlushFile(variables[0]), IsOk());
        EXPECT_THAT(api_->DPUnInitialize(variables[0]), IsOk());
    }
    for (const VARTYPE type : {VT_I8, VT_UI8}) {
        LONGLONG handle = 0;
        ASSERT_THAT(late_.Call(L"DPLoadFile", {Variant::Reference(type, &handle), L"<A>\\a.kra"}),
                    IsOk());
        EXPECT_THAT(api_->DPFlushFile(handle), IsOk());
        EXPECT_THAT(api_->DPUnInitialize(handle), IsOk());
    }
}

TEST_F(LateHandlesTest, EmptyScriptVariableBecomesALong) {
    Variant variable;
    ASSERT_THAT(late_.Call(L"DPLoadFile", {Variant::Reference(variable), L"<A>\\a.kra"}), IsOk());
    EXPECT_THAT(api_->DPFlushFile(variable.Number()), IsOk());
    EXPECT_THAT(api_->DPUnInitialize(variable.Number()), IsOk());
}

TEST_F(LateHandlesTest, ScriptVariableKeepsItsHandle) {
    Variant variable(Handle());
    ASSERT_THAT(late_.Call(L"DPLoadFile", {Variant::Reference(variable), L"<A>\\a.kra"}), IsOk());
    EXPECT_EQ(Handle(), variable.Number());
}

TEST_F(LateHandlesTest, HandleToBeSetMayBeGivenByValue) {
    ASSERT_THAT(late_.Call(L"DPLoadFile", {Handle(), L"<A>\\other.kra"}), IsOk());
    EXPECT_EQ(L"(default)", Read(session_, L"S", L"K"));
}

TEST_F(LateHandlesTest, NarrowVariableIsRefusedAndLeftAlone) {
    for (const VARTYPE type : {VT_I2, VT_UI1, VT_BOOL, VT_R8, VT_BSTR}) {
        LONGLONG variables[] = {0, 0x2222222222222222};
        EXPECT_THAT(late_.Call(L"DPLoadFile", {Variant::Reference(type, variables), L"<A>\\a.kra"}),
                    Fails(DISP_E_TYPEMISMATCH))
            << type;
        EXPECT_EQ(1u, late_.wrongArgument);
        EXPECT_EQ(0, variables[0]);
        EXPECT_EQ(0x2222222222222222, variables[1]);
    }
}

using LateCallsTest = LateHandlesTest;

TEST_F(LateCallsTest, NamesAreFoundInAnyCase) {
    EXPECT_EQ(1, late_.IdOf(L"DPInitialize"));
    EXPECT_EQ(1, late_.IdOf(L"dpinitialize"));
    EXPECT_EQ(23, late_.IdOf(L"DPMakeCopyFromSrcFile"));
}

TEST_F(LateCallsTest, UnknownNamesAndIdentifiersAreRefused) {
    std::wstring name = L"DPNothing";
    LPOLESTR names[] = {name.data()};
    DISPID id = 4711;
    EXPECT_THAT(api_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id),
                Fails(DISP_E_UNKNOWNNAME));
    EXPECT_THAT(api_->GetIDsOfNames(IID_NULL, nullptr, 1, LOCALE_USER_DEFAULT, &id),
                Fails(E_POINTER));
    EXPECT_THAT(api_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, nullptr),
                Fails(E_POINTER));
    for (const DISPID unknown : {0, 99, -1, 4711}) {
        EXPECT_THAT(late_.Invoke(unknown, {}, {}), Fails(DISP_E_MEMBERNOTFOUND)) << unknown;
    }
}

TEST_F(LateCallsTest, MissingParametersAreRefused) {
    EXPECT_THAT(api_->Invoke(1, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, nullptr, nullptr,
                             nullptr, nullptr),
                Fails(E_POINTER));
}

TEST_F(LateCallsTest, WrongNumberOfArgumentsIsRefused) {
    Variant result;
    EXPECT_THAT(late_.Call(L"DPUnInitialize", {Handle(), 1}), Fails(DISP_E_BADPARAMCOUNT));
    EXPECT_THAT(late_.Call(L"DPUnInitialize", {}), Fails());
    EXPECT_THAT(late_.Call(L"DPGetProfileInt", {Handle(), L"S", L"K"}, &result), Fails());
    EXPECT_THAT(late_.Call(L"DPGetProfileInt", {Handle(), L"S", L"K", 5, 6, 7}, &result),
                Fails(DISP_E_BADPARAMCOUNT));
    EXPECT_THAT(api_->DPFlushFile(session_), IsOk()) << "the session was ended";
}

TEST_F(LateCallsTest, ArgumentsMayAllBeNamed) {
    Variant result;
    EXPECT_THAT(late_.Invoke(6, {5, L"K", L"S", Handle()}, {3, 2, 1, 0}, &result), IsOk());
    EXPECT_EQ(1, result.Number());
}

TEST_F(LateCallsTest, NamedArgumentsFollowPositionalOnes) {
    Variant result;
    EXPECT_THAT(late_.Invoke(6, {Handle(), L"S", 5, L"K"}, {3, 2}, &result), IsOk());
    EXPECT_EQ(1, result.Number());
}

TEST_F(LateCallsTest, NamedHandleVariableIsSet) {
    LONG variables[] = {0, 0x22222222};
    EXPECT_THAT(late_.Invoke(4, {L"<A>\\a.kra", Variant::Reference(VT_I4, variables)}, {1, 0}),
                IsOk());
    EXPECT_GT(variables[0], 0);
    EXPECT_EQ(0x22222222, variables[1]);
    EXPECT_THAT(api_->DPUnInitialize(variables[0]), IsOk());
}

TEST_F(LateCallsTest, ParameterNamesAreFoundForNamedArguments) {
    std::wstring method = L"DPGetProfileInt";
    std::wstring first = L"lDPIntr";
    std::wstring last = L"nDefVal";
    LPOLESTR names[] = {method.data(), first.data(), last.data()};
    DISPID ids[] = {-1, -1, -1};
    EXPECT_THAT(api_->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids), IsOk());
    EXPECT_EQ(6, ids[0]);
    EXPECT_EQ(0, ids[1]);
    EXPECT_EQ(3, ids[2]);
}

TEST_F(LateCallsTest, RefusedOperationIsNoError) {
    EXPECT_TRUE(SUCCEEDED(late_.Call(L"DPFlushFile", {0})));
    EXPECT_TRUE(SUCCEEDED(late_.Call(L"DPFileExists", {0, L"<A>\\missing.kra"})));
    EXPECT_TRUE(SUCCEEDED(late_.Call(L"DPRenameFile", {0, L"<A>\\a.kra", L"<A>\\b.kra"})));
}

// A library of the test's own, whose first late-bound call loads the type library.
class LateMemoryTest : public ComponentTest {
protected:
    // Makes the call with memory running out at every point of its way.
    template <class Call>
    void ExpectReports(const Call& call) {
        const auto checked = [&] {
            const HRESULT result = call();
            EXPECT_EQ(FailingMemory::RanOut() ? E_OUTOFMEMORY : S_OK, result);
        };
        EXPECT_LT(20, FailEachAllocation(checked, library_.Module()));
    }

    const Library library_{CopyComponent(folder_, "qdirsvc.dll")};
    const Com<IDepotIntrApi> fresh_ = library_.CreateApi();
};

TEST_F(LateMemoryTest, TypeInformationReportsThatMemoryIsExhausted) {
    ITypeInfo* type = nullptr;
    ExpectReports([&] {
        type = reinterpret_cast<ITypeInfo*>(this);
        const HRESULT result = fresh_->GetTypeInfo(0, LOCALE_USER_DEFAULT, &type);
        EXPECT_EQ(FAILED(result), type == nullptr);
        return result;
    });
    const Com<ITypeInfo> owned(type);
}

TEST_F(LateMemoryTest, NamesReportThatMemoryIsExhausted) {
    std::wstring name = L"DPUnInitialize";
    LPOLESTR names[] = {name.data()};
    DISPID id = 0;
    ExpectReports(
        [&] { return fresh_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id); });
    EXPECT_EQ(3, id);
}

TEST_F(LateMemoryTest, CallsReportThatMemoryIsExhausted) {
    VARIANT handle = {};
    V_VT(&handle) = VT_I4;
    DISPPARAMS parameters = {&handle, nullptr, 1, 0};
    ExpectReports([&] {
        return fresh_->Invoke(3, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                              nullptr, nullptr, nullptr);
    });
}

}  // namespace
}  // namespace depot::test
