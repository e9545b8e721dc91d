#include "host/module.h"

#include <gtest/gtest.h>

#include "DepotIntr.h"
#include "host/registrar.h"
#include "support/scratch.h"

namespace depot {
namespace {

int terminations = 0;
int classTerminations = 0;

HRESULT MakeNothing(REFIID, void**) {
    return E_FAIL;
}

HRESULT MakeNoAggregate(IUnknown*, void**) {
    return E_FAIL;
}

const ObjectMapEntry kTerminatedClass[] = {
    {IID_IUnknown, 0, MakeNothing, MakeNoAggregate, [] { ++classTerminations; }},
};
const ModuleIdentity kIdentity = {"{00000000-0000-0000-0000-000000000000}", IID_IUnknown,
                                  kTerminatedClass};

// Notes the locale in which registration runs its scripts.
class LocaleNotingModule final : public CComModule {
public:
    LocaleNotingModule() : CComModule(kIdentity) {}
    HRESULT AddCommonRGSReplacements(CRegistrar& registrar) noexcept override {
        seen = GetThreadLocale();
        return CComModule::AddCommonRGSReplacements(registrar);
    }
    LCID seen = 0;
};

class ModuleTest : public testing::Test {
protected:
    ModuleTest() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        terminations = 0;
    }
    ~ModuleTest() override { CoUninitialize(); }
};

TEST_F(ModuleTest, LockCountFollowsLocksAndUnlocks) {
    CDepotIntrModule module;
    EXPECT_EQ(0, module.GetLockCount());
    EXPECT_EQ(1, module.Lock());
    EXPECT_EQ(2, module.Lock());
    EXPECT_EQ(2, module.GetLockCount());
    EXPECT_EQ(1, module.Unlock());
    EXPECT_EQ(0, module.Unlock());
    EXPECT_EQ(0, module.GetLockCount());
}

TEST_F(ModuleTest, InterfaceTableIsHandedOutWithAnAddedReference) {
    CDepotIntrModule module;
    IGlobalInterfaceTable* first = nullptr;
    IGlobalInterfaceTable* second = nullptr;
    ASSERT_EQ(S_OK, module.GetGITPtr(&first));
    ASSERT_EQ(S_OK, module.GetGITPtr(&second));
    EXPECT_NE(nullptr, first);
    EXPECT_EQ(first, second);
    second->Release();
    first->Release();
    ASSERT_EQ(S_OK, module.GetGITPtr(&first));
    first->Release();
}

TEST_F(ModuleTest, InterfaceTableWithoutAnOutputIsRefused) {
    CDepotIntrModule module;
    EXPECT_EQ(E_POINTER, module.GetGITPtr(nullptr));
}

TEST_F(ModuleTest, RegisteredTerminationsRunWhenTheModuleGoes) {
    {
        CDepotIntrModule module;
        module.AddTermination([] { ++terminations; });
        module.AddTermination([] { terminations += 10; });
        EXPECT_EQ(0, terminations);
    }
    EXPECT_EQ(11, terminations);
}

TEST_F(ModuleTest, TerminationRoutinesOfTheObjectMapRunAtTheEnd) {
    classTerminations = 0;
    { const CComModule module(kIdentity); }
    EXPECT_EQ(1, classTerminations);
}

TEST_F(ModuleTest, RegistrationRunsInTheSystemsDefaultLocale) {
    const LCID before = GetThreadLocale();
    const LCID other = MAKELCID(MAKELANGID(LANG_RUSSIAN, SUBLANG_DEFAULT), SORT_DEFAULT);
    ASSERT_TRUE(SetThreadLocale(other));
    LocaleNotingModule module;
    module.RegisterServer();
    const LCID during = module.seen;
    const LCID after = GetThreadLocale();
    SetThreadLocale(before);
    EXPECT_EQ(GetSystemDefaultLCID(), during);
    EXPECT_EQ(other, after);
}

TEST_F(ModuleTest, OnlyItsOwnClassIsFound) {
    CDepotIntrModule module;
    void* object = &object;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
              module.GetClassObject(IID_IDepotIntrApi, IID_IUnknown, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(E_POINTER, module.GetClassObject(CLSID_DepotIntrApi, IID_IUnknown, nullptr));
    IUnknown* factory = nullptr;
    ASSERT_EQ(S_OK, module.GetClassObject(CLSID_DepotIntrApi, IID_IUnknown,
                                          reinterpret_cast<void**>(&factory)));
    EXPECT_NE(nullptr, factory);
    factory->Release();
}

TEST_F(ModuleTest, MissingScriptsFailTheRegistration) {
    // This program carries none of the component's scripts.
    CDepotIntrModule module;
    const HRESULT missing = HRESULT_FROM_WIN32(ERROR_RESOURCE_NAME_NOT_FOUND);
    EXPECT_EQ(missing, module.RegisterServer());
    EXPECT_EQ(missing, module.UnregisterServer());
}

TEST_F(ModuleTest, ObjectMapHoldsTheOneClass) {
    ASSERT_EQ(1u, ObjectMap().size());
    EXPECT_TRUE(IsEqualCLSID(CLSID_DepotIntrApi, ObjectMap().front().classId));
    EXPECT_EQ(101, ObjectMap().front().registryScript);
    EXPECT_EQ(100, CDepotIntrModule::kAppIdScript);
}

}  // namespace
}  // namespace depot
