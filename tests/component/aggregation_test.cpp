// The object as a part of another object.
#include "component/component.h"

namespace depot::test {
namespace {

// An outer object that lives on the stack and counts what is done to it.
class Outer final : public IUnknown {
public:
    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) override {
        ++queries;
        *object = nullptr;
        if (!IsEqualIID(interfaceId, IID_IUnknown)) {
            return inner ? inner->QueryInterface(interfaceId, object) : E_NOINTERFACE;
        }
        *object = this;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }

    ULONG references = 1;
    int queries = 0;
    Com<IUnknown> inner;
};

class AggregationTest : public ComponentTest {
protected:
    AggregationTest() {
        IUnknown* inner = nullptr;
        EXPECT_EQ(S_OK, CoCreateInstance(CLSID_DepotIntrApi, &outer_, CLSCTX_INPROC_SERVER,
                                         IID_IUnknown, reinterpret_cast<void**>(&inner)));
        outer_.inner.reset(inner);
    }

    IDepotIntrApi* AskForApi() {
        IDepotIntrApi* api = nullptr;
        EXPECT_EQ(S_OK, outer_.QueryInterface(IID_IDepotIntrApi, reinterpret_cast<void**>(&api)));
        return api;
    }

    Outer outer_;
};

TEST_F(AggregationTest, InterfaceCountsOnTheOuterObject) {
    IDepotIntrApi* const api = AskForApi();
    EXPECT_EQ(2u, outer_.references);
    EXPECT_EQ(3u, api->AddRef());
    EXPECT_EQ(3u, outer_.references);
    EXPECT_EQ(2u, api->Release());
    EXPECT_EQ(1u, api->Release());
    EXPECT_EQ(1u, outer_.references);
}

TEST_F(AggregationTest, InterfaceAsksTheOuterObjectForOthers) {
    const Com<IDepotIntrApi> api(AskForApi());
    const int queries = outer_.queries;
    IUnknown* identity = nullptr;
    ASSERT_EQ(S_OK, api->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)));
    const Com<IUnknown> owned(identity);
    EXPECT_EQ(&outer_, identity);
    EXPECT_EQ(queries + 1, outer_.queries);
}

TEST_F(AggregationTest, InnerUnknownKeepsItsOwnCountAndIdentity) {
    IUnknown* same = nullptr;
    ASSERT_EQ(S_OK, outer_.inner->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&same)));
    EXPECT_EQ(outer_.inner.get(), same);
    EXPECT_EQ(1u, same->Release());
    EXPECT_EQ(1u, outer_.references);
    EXPECT_EQ(E_POINTER, outer_.inner->QueryInterface(IID_IUnknown, nullptr));
}

TEST_F(AggregationTest, InnerUnknownRefusesForeignInterfaces) {
    void* other = &other;
    EXPECT_EQ(E_NOINTERFACE, outer_.inner->QueryInterface(IID_IClassFactory, &other));
    EXPECT_EQ(nullptr, other);
}

TEST_F(AggregationTest, MethodsWorkThroughTheAggregate) {
    const Com<IDepotIntrApi> api(AskForApi());
    const Session session(*api);
    OutText path;
    EXPECT_EQ(S_OK, api->DPGetPathFromDisplayName(session, Text("<My Depot>\\"), path));
    EXPECT_EQ(Wide(folder_.At("Farrow\\")), path.Value());
}

TEST_F(AggregationTest, AggregateKeepsTheDllUntilItsInnerUnknownIsReleased) {
    const Library library(CopyComponent(folder_));
    IClassFactory* factory = nullptr;
    ASSERT_EQ(S_OK, library.GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory,
                                           reinterpret_cast<void**>(&factory)));
    IUnknown* inner = nullptr;
    EXPECT_EQ(S_OK,
              factory->CreateInstance(&outer_, IID_IUnknown, reinterpret_cast<void**>(&inner)));
    factory->Release();
    EXPECT_EQ(S_FALSE, library.CanUnloadNow());
    inner->Release();
    EXPECT_EQ(S_OK, library.CanUnloadNow());
}

TEST_F(AggregationTest, AggregateCanOnlyBeAskedForItsUnknown) {
    IClassFactory* factory = nullptr;
    ASSERT_EQ(S_OK, Library::Own().GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory,
                                                  reinterpret_cast<void**>(&factory)));
    const Com<IClassFactory> owned(factory);
    void* object = &object;
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(&outer_, IID_IDepotIntrApi, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(1u, outer_.references);
}

}  // namespace
}  // namespace depot::test
