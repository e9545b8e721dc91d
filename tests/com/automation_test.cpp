#include "com/automation.h"

#include <gtest/gtest.h>

#include "com/type_library.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsOk;

// Counts its references and lives on the stack.
class Sample final : public IUnknown {
public:
    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) noexcept override {
        return GiveInterface(*this, {&IID_IUnknown, &IID_IDispatch}, interfaceId, object);
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return --references; }

    ULONG references = 1;
};

TEST(GiveInterfaceTest, EachKnownInterfaceIsPutOutWithAReference) {
    Sample sample;
    ULONG references = 1;
    for (const IID& id : {IID_IUnknown, IID_IDispatch}) {
        void* object = nullptr;
        EXPECT_THAT(sample.QueryInterface(id, &object), IsOk());
        EXPECT_EQ(static_cast<IUnknown*>(&sample), object);
        EXPECT_EQ(++references, sample.references);
    }
}

TEST(GiveInterfaceTest, UnknownInterfaceIsRefusedWithANullOutput) {
    Sample sample;
    void* object = &object;
    EXPECT_THAT(sample.QueryInterface(IID_ITypeInfo, &object), Fails(E_NOINTERFACE));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(1u, sample.references);
}

TEST(GiveInterfaceTest, MissingOutputIsRefused) {
    Sample sample;
    EXPECT_THAT(sample.QueryInterface(IID_IUnknown, nullptr), Fails(E_POINTER));
    EXPECT_EQ(1u, sample.references);
}

TEST(UniqueComTest, OwnerReleasesItsReferenceAtTheEnd) {
    Sample sample;
    { const UniqueCom<Sample> owner(&sample); }
    EXPECT_EQ(0u, sample.references);
}

TEST(BstrTest, WideTextHasTheWholeBstr) {
    const std::wstring whole(L"one\0two", 7);
    EXPECT_EQ(whole, WideText(NewWideBstr(whole).get()));
    EXPECT_EQ(L"", WideText(NewWideBstr(L"").get()));
    EXPECT_EQ(L"", WideText(nullptr));
}

TEST(CreateAnywhereTest, ClassThatIsNotRegisteredMakesNothing) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    EXPECT_EQ(nullptr, CreateAnywhere<IUnknown>(IID_ITypeInfo, IID_IUnknown));
    CoUninitialize();
}

TEST(OpenTypeInfoTest, ModuleWithoutATypeLibraryPutsNothingOut) {
    UniqueCom<ITypeLib> library;
    EXPECT_THAT(OpenTypeLibrary(library), Fails());
    EXPECT_EQ(nullptr, library);
    UniqueCom<ITypeInfo> typeInfo;
    EXPECT_THAT(OpenTypeInfo(IID_IUnknown, typeInfo), Fails());
    EXPECT_EQ(nullptr, typeInfo);
}

}  // namespace
}  // namespace depot
