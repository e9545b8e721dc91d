#include "host/module.h"

#include <gtest/gtest.h>

#include "DepotIntr.h"
#include "api/depot_intr_api.h"
#include "support/failing_memory.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsOk;

TEST(ModuleTest, OnlyItsOwnClassIsFound) {
    CDepotIntrModule module;
    void* object = &object;
    EXPECT_THAT(module.GetClassObject(IID_IDepotIntrApi, IID_IUnknown, &object),
                Fails(CLASS_E_CLASSNOTAVAILABLE));
    EXPECT_EQ(nullptr, object);
    EXPECT_THAT(module.GetClassObject(CLSID_DepotIntrApi, IID_IUnknown, nullptr), Fails(E_POINTER));
    IUnknown* factory = nullptr;
    ASSERT_THAT(
        module.GetClassObject(CLSID_DepotIntrApi, IID_IUnknown, reinterpret_cast<void**>(&factory)),
        IsOk());
    EXPECT_NE(nullptr, factory);
    factory->Release();
}

TEST(ModuleTest, FactoryThatCannotBeMadeIsReportedAndTriedAgain) {
    CDepotIntrModule module;
    void* factory = nullptr;
    EXPECT_LT(0, test::FailEachAllocation([&] {
                  factory = &factory;
                  const HRESULT result =
                      module.GetClassObject(CLSID_DepotIntrApi, IID_IUnknown, &factory);
                  const bool ranOut = test::FailingMemory::RanOut();
                  EXPECT_EQ(ranOut ? E_OUTOFMEMORY : S_OK, result);
                  EXPECT_EQ(ranOut, factory == nullptr);
              }));
    static_cast<IUnknown*>(factory)->Release();
}

TEST(ModuleTest, MissingScriptsFailTheRegistration) {
    // This program carries none of the component's scripts.
    CDepotIntrModule module;
    const HRESULT missing = HRESULT_FROM_WIN32(ERROR_RESOURCE_NAME_NOT_FOUND);
    EXPECT_EQ(missing, module.RegisterServer());
    EXPECT_EQ(missing, module.UnregisterServer());
}

TEST(ModuleTest, ObjectMapHoldsTheOneClass) {
    ASSERT_EQ(1u, ObjectMap().size());
    EXPECT_TRUE(IsEqualCLSID(CLSID_DepotIntrApi, ObjectMap().front().classId));
    EXPECT_EQ(101, ObjectMap().front().registryScript);
    EXPECT_EQ(100, CDepotIntrModule::kAppIdScript);
}

TEST(ModuleTest, ObjectsOfTheClassHoldNoStateOfTheirOwn) {
    EXPECT_EQ(sizeof(IDepotIntrApi), sizeof(CDepotIntrApi));
}

}  // namespace
}  // namespace depot
