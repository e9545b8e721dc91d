// What keeps the DLL loaded, and who gets its class factory.
#include "component/component.h"
#include "support/leak_counts.h"
#include "support/results.h"

namespace depot::test {
namespace {

// Works on the entry points themselves of a module that COM knows nothing of: what COM caches or
// keeps for marshalled clients does not count here.
class LifetimeTest : public testing::Test {
protected:
    Com<IClassFactory> Factory() const {
        IClassFactory* factory = nullptr;
        EXPECT_THAT(library_.GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory,
                                            reinterpret_cast<void**>(&factory)),
                    IsOk());
        return Com<IClassFactory>(factory);
    }

    ScratchFolder folder_;
    Apartment apartment_;
    const Library library_{CopyComponent(folder_, "qdirsvc.dll")};
};

TEST_F(LifetimeTest, DllCanBeUnloadedWhenNothingIsInUse) {
    EXPECT_THAT(library_.CanUnloadNow(), IsOk());
}

TEST_F(LifetimeTest, LiveObjectKeepsTheDllUntilItsLastRelease) {
    Com<IDepotIntrApi> first = library_.CreateApi();
    Com<IDepotIntrApi> second = library_.CreateApi();
    EXPECT_THAT(library_.CanUnloadNow(), IsRefused());
    first.reset();
    EXPECT_THAT(library_.CanUnloadNow(), IsRefused());
    second->AddRef();
    EXPECT_EQ(1u, second->Release());
    EXPECT_THAT(library_.CanUnloadNow(), IsRefused());
    second.reset();
    EXPECT_THAT(library_.CanUnloadNow(), IsOk());
}

TEST_F(LifetimeTest, ServerLockKeepsTheDllAfterTheFactoryIsReleased) {
    ASSERT_THAT(Factory()->LockServer(TRUE), IsOk());
    ASSERT_THAT(Factory()->LockServer(TRUE), IsOk());
    EXPECT_THAT(library_.CanUnloadNow(), IsRefused());
    ASSERT_THAT(Factory()->LockServer(FALSE), IsOk());
    EXPECT_THAT(library_.CanUnloadNow(), IsRefused());
    ASSERT_THAT(Factory()->LockServer(FALSE), IsOk());
    EXPECT_THAT(library_.CanUnloadNow(), IsOk());
}

TEST_F(LifetimeTest, FactoryHeldByAClientKeepsTheDll) {
    Com<IClassFactory> factory = Factory();
    EXPECT_THAT(library_.CanUnloadNow(), IsRefused());
    factory.reset();
    EXPECT_THAT(library_.CanUnloadNow(), IsOk());
}

TEST_F(LifetimeTest, SessionWithoutAnObjectDoesNotKeepTheDll) {
    Com<IDepotIntrApi> api = library_.CreateApi();
    LONG_PTR session = 0;
    ASSERT_THAT(api->DPInitialize(&session), IsOk());
    api.reset();
    EXPECT_THAT(library_.CanUnloadNow(), IsOk());
}

TEST_F(LifetimeTest, FactoryIsTheSameForEveryCaller) {
    const Com<IClassFactory> first = Factory();
    const Com<IClassFactory> second = Factory();
    EXPECT_EQ(first.get(), second.get());
}

TEST_F(LifetimeTest, FactoryAnswersItsOwnInterfacesOnly) {
    const Com<IClassFactory> factory = Factory();
    IUnknown* same = nullptr;
    ASSERT_THAT(factory->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&same)), IsOk());
    const Com<IUnknown> owned(same);
    void* other = &same;
    EXPECT_THAT(factory->QueryInterface(IID_IDispatch, &other), Fails(E_NOINTERFACE));
    EXPECT_EQ(nullptr, other);
    EXPECT_THAT(factory->QueryInterface(IID_IUnknown, nullptr), Fails(E_POINTER));
}

TEST_F(LifetimeTest, UnknownClassIsNotAvailable) {
    for (const GUID& other : {IID_IDepotIntrApi, LIBID_DepotIntrLib, GUID_NULL}) {
        void* object = &object;
        EXPECT_THAT(library_.GetClassObject(other, IID_IClassFactory, &object),
                    Fails(CLASS_E_CLASSNOTAVAILABLE));
        EXPECT_EQ(nullptr, object);
    }
    EXPECT_THAT(library_.CanUnloadNow(), IsOk());
}

TEST_F(LifetimeTest, ClassObjectWithoutAnOutputIsRefused) {
    EXPECT_THAT(library_.GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory, nullptr),
                Fails(E_POINTER));
}

TEST_F(LifetimeTest, ClassObjectUnderAForeignInterfaceIsRefused) {
    void* object = &object;
    EXPECT_THAT(library_.GetClassObject(CLSID_DepotIntrApi, IID_IDepotIntrApi, &object),
                Fails(E_NOINTERFACE));
    EXPECT_EQ(nullptr, object);
    EXPECT_THAT(library_.CanUnloadNow(), IsOk());
}

TEST_F(LifetimeTest, CreationUnderAForeignInterfaceLeavesNoObject) {
    void* object = &object;
    EXPECT_THAT(Factory()->CreateInstance(nullptr, IID_IClassFactory, &object),
                Fails(E_NOINTERFACE));
    EXPECT_EQ(nullptr, object);
    EXPECT_THAT(Factory()->CreateInstance(nullptr, IID_IUnknown, nullptr), Fails(E_POINTER));
    EXPECT_THAT(library_.CanUnloadNow(), IsOk());
}

TEST_F(LifetimeTest, ObjectHasItsThreeInterfacesOnly) {
    const Com<IDepotIntrApi> api = library_.CreateApi();
    for (const IID& id : {IID_IUnknown, IID_IDispatch, IID_IDepotIntrApi}) {
        IUnknown* found = nullptr;
        ASSERT_THAT(api->QueryInterface(id, reinterpret_cast<void**>(&found)), IsOk());
        EXPECT_EQ(static_cast<IUnknown*>(api.get()), found);
        found->Release();
    }
    void* other = &other;
    EXPECT_THAT(api->QueryInterface(IID_IClassFactory, &other), Fails(E_NOINTERFACE));
    EXPECT_EQ(nullptr, other);
    EXPECT_THAT(api->QueryInterface(IID_IUnknown, nullptr), Fails(E_POINTER));
}

using UnloadTest = ComponentTest;

TEST_F(UnloadTest, SessionsLeftBehindDoNotDisturbTheUnloading) {
    const std::string copy = CopyComponent(folder_, "qdirsvc.dll");
    {
        const Library library(copy);
        ASSERT_NE(Library::Own().Module(), library.Module());
        const Com<IDepotIntrApi> api = library.CreateApi();
        LONG_PTR session = 0;
        ASSERT_THAT(api->DPLoadFile(&session, Text(folder_.At("a.kra"))), IsOk());
        OutText path;
        EXPECT_THAT(api->DPGetDefaultDPPath(session, path), IsRefused());
    }
    EXPECT_EQ(nullptr, GetModuleHandleA(copy.c_str()));
}

TEST_F(UnloadTest, SessionsTypeLibraryAndFactoryAreReleasedWithTheLibrary) {
    const std::string copy = CopyComponent(folder_, "qdirsvc.dll");
    const auto use = [&](bool endsSession) {
        const Library library(copy);
        const Com<IDepotIntrApi> api = library.CreateApi();
        LONG_PTR session = 0;
        EXPECT_THAT(api->DPLoadFile(&session, Text(folder_.At("a.kra"))), IsOk());
        ITypeInfo* type = nullptr;
        EXPECT_THAT(api->GetTypeInfo(0, LOCALE_USER_DEFAULT, &type), IsOk());
        type->Release();
        if (!endsSession) return;
        EXPECT_THAT(api->DPUnInitialize(session), IsOk());
    };
    constexpr int kRounds = 20;
    // What the loader and the runtime keep of a library that was only loaded.
    const std::size_t loaded = CountLeftovers([&] { const Library library(copy); }, kRounds);
    // The system itself may need a block more now and then; a leak is one in every round.
    EXPECT_LT(CountLeftovers([&] { use(true); }, kRounds), loaded + kRounds);
    EXPECT_LT(CountLeftovers([&] { use(false); }, kRounds), loaded + kRounds);
}

}  // namespace
}  // namespace depot::test
