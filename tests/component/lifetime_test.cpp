// What keeps the DLL loaded, and who gets its class factory.
#include "component/component.h"
#include "support/leak_counts.h"

namespace depot::test {
namespace {

// Works on the entry points themselves of a module that COM knows nothing of: what COM caches or
// keeps for marshalled clients does not count here.
class LifetimeTest : public testing::Test {
protected:
    Com<IClassFactory> Factory() const {
        IClassFactory* factory = nullptr;
        EXPECT_EQ(S_OK, library_.GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory,
                                                reinterpret_cast<void**>(&factory)));
        return Com<IClassFactory>(factory);
    }

    ScratchFolder folder_;
    Apartment apartment_;
    const Library library_{CopyComponent(folder_, "qdirsvc.dll")};
};

TEST_F(LifetimeTest, DllCanBeUnloadedWhenNothingIsInUse) {
    EXPECT_EQ(S_OK, library_.CanUnloadNow());
}

TEST_F(LifetimeTest, LiveObjectKeepsTheDllUntilItsLastRelease) {
    Com<IDepotIntrApi> first = library_.CreateApi();
    Com<IDepotIntrApi> second = library_.CreateApi();
    EXPECT_EQ(S_FALSE, library_.CanUnloadNow());
    first.reset();
    EXPECT_EQ(S_FALSE, library_.CanUnloadNow());
    second->AddRef();
    EXPECT_EQ(1u, second->Release());
    EXPECT_EQ(S_FALSE, library_.CanUnloadNow());
    second.reset();
    EXPECT_EQ(S_OK, library_.CanUnloadNow());
}

TEST_F(LifetimeTest, ServerLockKeepsTheDllAfterTheFactoryIsReleased) {
    ASSERT_EQ(S_OK, Factory()->LockServer(TRUE));
    ASSERT_EQ(S_OK, Factory()->LockServer(TRUE));
    EXPECT_EQ(S_FALSE, library_.CanUnloadNow());
    ASSERT_EQ(S_OK, Factory()->LockServer(FALSE));
    EXPECT_EQ(S_FALSE, library_.CanUnloadNow());
    ASSERT_EQ(S_OK, Factory()->LockServer(FALSE));
    EXPECT_EQ(S_OK, library_.CanUnloadNow());
}

TEST_F(LifetimeTest, FactoryHeldByAClientKeepsTheDll) {
    Com<IClassFactory> factory = Factory();
    EXPECT_EQ(S_FALSE, library_.CanUnloadNow());
    factory.reset();
    EXPECT_EQ(S_OK, library_.CanUnloadNow());
}

TEST_F(LifetimeTest, SessionWithoutAnObjectDoesNotKeepTheDll) {
    Com<IDepotIntrApi> api = library_.CreateApi();
    LONG_PTR session = 0;
    ASSERT_EQ(S_OK, api->DPInitialize(&session));
    api.reset();
    EXPECT_EQ(S_OK, library_.CanUnloadNow());
}

TEST_F(LifetimeTest, FactoryIsTheSameForEveryCaller) {
    const Com<IClassFactory> first = Factory();
    const Com<IClassFactory> second = Factory();
    EXPECT_EQ(first.get(), second.get());
}

TEST_F(LifetimeTest, FactoryAnswersItsOwnInterfacesOnly) {
    const Com<IClassFactory> factory = Factory();
    IUnknown* same = nullptr;
    ASSERT_EQ(S_OK, factory->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&same)));
    const Com<IUnknown> owned(same);
    void* other = &same;
    EXPECT_EQ(E_NOINTERFACE, factory->QueryInterface(IID_IDispatch, &other));
    EXPECT_EQ(nullptr, other);
    EXPECT_EQ(E_POINTER, factory->QueryInterface(IID_IUnknown, nullptr));
}

TEST_F(LifetimeTest, UnknownClassIsNotAvailable) {
    for (const GUID& other : {IID_IDepotIntrApi, LIBID_DepotIntrLib, GUID_NULL}) {
        void* object = &object;
        EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
                  library_.GetClassObject(other, IID_IClassFactory, &object));
        EXPECT_EQ(nullptr, object);
    }
    EXPECT_EQ(S_OK, library_.CanUnloadNow());
}

TEST_F(LifetimeTest, ClassObjectWithoutAnOutputIsRefused) {
    EXPECT_EQ(E_POINTER, library_.GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory, nullptr));
}

TEST_F(LifetimeTest, ClassObjectUnderAForeignInterfaceIsRefused) {
    void* object = &object;
    EXPECT_EQ(E_NOINTERFACE,
              library_.GetClassObject(CLSID_DepotIntrApi, IID_IDepotIntrApi, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(S_OK, library_.CanUnloadNow());
}

TEST_F(LifetimeTest, CreationUnderAForeignInterfaceLeavesNoObject) {
    void* object = &object;
    EXPECT_EQ(E_NOINTERFACE, Factory()->CreateInstance(nullptr, IID_IClassFactory, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(E_POINTER, Factory()->CreateInstance(nullptr, IID_IUnknown, nullptr));
    EXPECT_EQ(S_OK, library_.CanUnloadNow());
}

TEST_F(LifetimeTest, ObjectHasItsThreeInterfacesOnly) {
    const Com<IDepotIntrApi> api = library_.CreateApi();
    for (const IID& id : {IID_IUnknown, IID_IDispatch, IID_IDepotIntrApi}) {
        IUnknown* found = nullptr;
        ASSERT_EQ(S_OK, api->QueryInterface(id, reinterpret_cast<void**>(&found)));
        EXPECT_EQ(static_cast<IUnknown*>(api.get()), found);
        found->Release();
    }
    void* other = &other;
    EXPECT_EQ(E_NOINTERFACE, api->QueryInterface(IID_IClassFactory, &other));
    EXPECT_EQ(nullptr, other);
    EXPECT_EQ(E_POINTER, api->QueryInterface(IID_IUnknown, nullptr));
}

class UnloadTest : public ComponentTest {};

TEST_F(UnloadTest, SessionsLeftBehindDoNotDisturbTheUnloading) {
    const std::string copy = CopyComponent(folder_, "qdirsvc.dll");
    {
        const Library library(copy);
        ASSERT_NE(Library::Own().Module(), library.Module());
        const Com<IDepotIntrApi> api = library.CreateApi();
        LONG_PTR session = 0;
        ASSERT_EQ(S_OK, api->DPLoadFile(&session, Text(folder_.At("a.kra"))));
        OutText path;
        EXPECT_EQ(S_FALSE, api->DPGetDefaultDPPath(session, path));
    }
    EXPECT_EQ(nullptr, GetModuleHandleA(copy.c_str()));
}

TEST_F(UnloadTest, SessionsTypeLibraryAndFactoryAreReleasedWithTheLibrary) {
    const std::string copy = CopyComponent(folder_, "qdirsvc.dll");
    const auto use = [&](bool endsSession) {
        const Library library(copy);
        const Com<IDepotIntrApi> api = library.CreateApi();
        LONG_PTR session = 0;
        EXPECT_EQ(S_OK, api->DPLoadFile(&session, Text(folder_.At("a.kra"))));
        ITypeInfo* type = nullptr;
        EXPECT_EQ(S_OK, api->GetTypeInfo(0, LOCALE_USER_DEFAULT, &type));
        type->Release();
        if (!endsSession) return;
        EXPECT_EQ(S_OK, api->DPUnInitialize(session));
    };
    constexpr int kRounds = 10;
    // What the loader and the runtime keep of a library that was only loaded.
    const std::size_t loaded = CountLeftovers([&] { const Library library(copy); }, kRounds);
    // The system itself may need a block more now and then; a leak is one in every round.
    EXPECT_LT(CountLeftovers([&] { use(true); }, kRounds), loaded + kRounds);
    EXPECT_LT(CountLeftovers([&] { use(false); }, kRounds), loaded + kRounds);
}

}  // namespace
}  // namespace depot::test
