#include "com/com_object.h"

#include <gtest/gtest.h>
// After the Windows headers.
#include <unknwn.h>

#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsOk;

int liveObjects = 0;

// A class with one interface of its own, IClassFactory, which serves here for its two methods.
class Sample : public IClassFactory {
public:
    HRESULT InternalQueryInterface(REFIID interfaceId, void** object) {
        *object = nullptr;
        if (!IsEqualIID(interfaceId, IID_IUnknown) && !IsEqualIID(interfaceId, IID_IClassFactory)) {
            return E_NOINTERFACE;
        }
        *object = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP CreateInstance(IUnknown*, REFIID, void**) noexcept override { return S_OK; }
    STDMETHODIMP LockServer(BOOL) noexcept override { return S_OK; }

protected:
    Sample() { ++liveObjects; }
    ~Sample() { --liveObjects; }
};

// Counts like any object, but lives on the stack.
class Outer final : public IUnknown {
public:
    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) noexcept override {
        asked = interfaceId;
        *object = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return --references; }

    ULONG references = 1;
    IID asked = {};
};

class ComObjectTest : public testing::Test {
protected:
    ComObjectTest() { liveObjects = 0; }

    const LONG locksBefore_ = Module().GetLockCount();
};

TEST_F(ComObjectTest, ObjectLivesAndLocksTheModuleUntilItsLastRelease) {
    IClassFactory* object = nullptr;
    ASSERT_THAT(
        CreateComObject<CComObject<Sample>>(IID_IClassFactory, reinterpret_cast<void**>(&object)),
        IsOk());
    EXPECT_EQ(1, liveObjects);
    EXPECT_EQ(locksBefore_ + 1, Module().GetLockCount());
    EXPECT_EQ(2u, object->AddRef());
    EXPECT_EQ(1u, object->Release());
    EXPECT_EQ(1, liveObjects);
    EXPECT_EQ(0u, object->Release());
    EXPECT_EQ(0, liveObjects);
    EXPECT_EQ(locksBefore_, Module().GetLockCount());
}

TEST_F(ComObjectTest, CreationUnderAMissingInterfaceLeavesNothing) {
    void* object = &object;
    EXPECT_THAT(CreateComObject<CComObject<Sample>>(IID_IDispatch, &object), Fails(E_NOINTERFACE));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(0, liveObjects);
    EXPECT_EQ(locksBefore_, Module().GetLockCount());
}

TEST_F(ComObjectTest, AggregateCountsItselfAndItsInterfacesCountTheOuterObject) {
    Outer outer;
    IUnknown* inner = nullptr;
    ASSERT_THAT(CreateComObject<CComAggObject<Sample>>(IID_IUnknown,
                                                       reinterpret_cast<void**>(&inner), &outer),
                IsOk());
    EXPECT_EQ(1u, outer.references);
    IClassFactory* contained = nullptr;
    ASSERT_THAT(inner->QueryInterface(IID_IClassFactory, reinterpret_cast<void**>(&contained)),
                IsOk());
    EXPECT_EQ(2u, outer.references);
    EXPECT_EQ(3u, contained->AddRef());
    EXPECT_EQ(2u, contained->Release());
    EXPECT_EQ(1u, contained->Release());
    EXPECT_EQ(1, liveObjects);
    EXPECT_EQ(0u, inner->Release());
    EXPECT_EQ(0, liveObjects);
    EXPECT_EQ(locksBefore_, Module().GetLockCount());
}

TEST_F(ComObjectTest, ContainedObjectAsksTheOuterObject) {
    Outer outer;
    CComContainedObject<Sample> contained(&outer);
    void* found = &found;
    EXPECT_THAT(contained.QueryInterface(IID_IClassFactory, &found), Fails(E_NOINTERFACE));
    EXPECT_TRUE(IsEqualIID(IID_IClassFactory, outer.asked));
    EXPECT_EQ(nullptr, found);
}

TEST_F(ComObjectTest, AggregateWithoutAnOutputIsRefused) {
    Outer outer;
    IUnknown* inner = nullptr;
    ASSERT_THAT(CreateComObject<CComAggObject<Sample>>(IID_IUnknown,
                                                       reinterpret_cast<void**>(&inner), &outer),
                IsOk());
    EXPECT_THAT(inner->QueryInterface(IID_IUnknown, nullptr), Fails(E_POINTER));
    inner->Release();
}

}  // namespace
}  // namespace depot
