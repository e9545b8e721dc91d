#include "com/class_factory.h"

#include <gtest/gtest.h>

#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsOk;

// What the factory asked its class to make.
int plainObjects = 0;
IUnknown* outerOfAggregate = nullptr;

HRESULT MakePlain(REFIID, void** object) {
    ++plainObjects;
    *object = &plainObjects;
    return S_OK;
}

HRESULT MakeAggregate(IUnknown* outer, void** object) {
    outerOfAggregate = outer;
    *object = &outerOfAggregate;
    return S_OK;
}

class ClassFactoryTest : public testing::Test {
protected:
    ClassFactoryTest() {
        plainObjects = 0;
        outerOfAggregate = nullptr;
    }

    const ObjectMapEntry entry_{IID_IUnknown, 0, MakePlain, MakeAggregate, nullptr};
    CComObjectCached factory_{entry_};
    const LONG locksBefore_ = Module().GetLockCount();
};

TEST_F(ClassFactoryTest, PlainCreationMakesAnObject) {
    void* object = nullptr;
    EXPECT_THAT(factory_.CreateInstance(nullptr, IID_IDispatch, &object), IsOk());
    EXPECT_EQ(1, plainObjects);
    EXPECT_EQ(&plainObjects, object);
}

TEST_F(ClassFactoryTest, CreationWithAnOuterObjectMakesAnAggregate) {
    void* object = nullptr;
    EXPECT_THAT(factory_.CreateInstance(&factory_, IID_IUnknown, &object), IsOk());
    EXPECT_EQ(0, plainObjects);
    EXPECT_EQ(static_cast<IUnknown*>(&factory_), outerOfAggregate);
}

TEST_F(ClassFactoryTest, AggregateUnderAnotherInterfaceIsRefused) {
    void* object = &object;
    EXPECT_THAT(factory_.CreateInstance(&factory_, IID_IDispatch, &object),
                Fails(CLASS_E_NOAGGREGATION));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(nullptr, outerOfAggregate);
}

TEST_F(ClassFactoryTest, MissingOutputsAreRefused) {
    EXPECT_THAT(factory_.CreateInstance(nullptr, IID_IUnknown, nullptr), Fails(E_POINTER));
    EXPECT_THAT(factory_.QueryInterface(IID_IUnknown, nullptr), Fails(E_POINTER));
    EXPECT_EQ(0, plainObjects);
}

TEST_F(ClassFactoryTest, FirstReferenceLocksTheModuleAndTheLastUnlocksIt) {
    EXPECT_EQ(1u, factory_.AddRef());
    EXPECT_EQ(locksBefore_ + 1, Module().GetLockCount());
    EXPECT_EQ(2u, factory_.AddRef());
    EXPECT_EQ(locksBefore_ + 1, Module().GetLockCount());
    EXPECT_EQ(1u, factory_.Release());
    EXPECT_EQ(0u, factory_.Release());
    EXPECT_EQ(locksBefore_, Module().GetLockCount());
}

TEST_F(ClassFactoryTest, ServerLocksAreCountedOneByOne) {
    EXPECT_THAT(factory_.LockServer(TRUE), IsOk());
    EXPECT_THAT(factory_.LockServer(TRUE), IsOk());
    EXPECT_EQ(locksBefore_ + 2, Module().GetLockCount());
    EXPECT_THAT(factory_.LockServer(FALSE), IsOk());
    EXPECT_THAT(factory_.LockServer(FALSE), IsOk());
    EXPECT_EQ(locksBefore_, Module().GetLockCount());
}

TEST_F(ClassFactoryTest, OwnInterfacesAreReturnedWithAReference) {
    for (const IID& id : {IID_IUnknown, IID_IClassFactory}) {
        void* found = nullptr;
        ASSERT_THAT(factory_.QueryInterface(id, &found), IsOk());
        EXPECT_EQ(static_cast<IClassFactory*>(&factory_), found);
        EXPECT_EQ(0u, factory_.Release());
    }
    void* other = &other;
    EXPECT_THAT(factory_.QueryInterface(IID_IDispatch, &other), Fails(E_NOINTERFACE));
    EXPECT_EQ(nullptr, other);
}

}  // namespace
}  // namespace depot
