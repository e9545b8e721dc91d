// The object as a part of another object.
#include "component/component.h"
#include "support/results.h"

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
        EXPECT_THAT(CoCreateInstance(CLSID_DepotIntrApi, &outer_, CLSCTX_INPROC_SERVER,
                                     IID_IUnknown, reinterpret_cast<void**>(&inner)),
                    IsOk());
        outer_.inner.reset(inner);
    }

    IDepotIntrApi* AskForApi() {
        IDepotIntrApi* api = nullptr;
        EXPECT_THAT(outer_.QueryInterface(IID_IDepotIntrApi, reinterpret_cast<void**>(&api)),
                    IsOk());
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
    ASSERT_THAT(api->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), IsOk());
    const Com<IUnknown> owned(identity);
    EXPECT_EQ(&outer_, identity);
    EXPECT_EQ(queries + 1, outer_.queries);
}

TEST_F(AggregationTest, InnerUnknownKeepsItsOwnCountAndIdentity) {
    IUnknown* same = nullptr;
    ASSERT_THAT(outer_.inner->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&same)),
                IsOk());
    EXPECT_EQ(outer_.inner.get(), same);
    EXPECT_EQ(1u, same->Release());
    EXPECT_EQ(1u, outer_.references);
    EXPECT_THAT(outer_.inner->QueryInterface(IID_IUnknown, nullptr), Fails(E_POINTER));
}

TEST_F(AggregationTest, InnerUnknownRefusesForeignInterfaces) {
    void* other = &other;
    EXPECT_THAT(outer_.inner->QueryInterface(IID_IClassFactory, &other), Fails(E_NOINTERFACE));
    EXPECT_EQ(nullptr, other);
}

TEST_F(AggregationTest, MethodsWorkThroughTheAggregate) {
    const Com<IDepotIntrApi> api(AskForApi());
    const Session session(*api);
    OutText path;
    EXPECT_THAT(api->DPGetPathFromDisplayName(session, Text("<My Depot>\\"), path), IsOk());
    EXPECT_EQ(Wide(folder_.At("Farrow\\")), path.Value());
}

TEST_F(AggregationTest, AggregateKeepsTheDllUntilItsInnerUnknownIsReleased) {
    const Library library(CopyComponent(folder_));
    IClassFactory* factory = nullptr;
    ASSERT_THAT(library.GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory,
                                       reinterpret_cast<void**>(&factory)),
                IsOk());
    IUnknown* inner = nullptr;
    EXPECT_THAT(factory->CreateInstance(&outer_, IID_IUnknown, reinterpret_cast<void**>(&inner)),
                IsOk());
    factory->Release();
    EXPECT_THAT(library.CanUnloadNow(), IsRefused());
    inner->Release();
    EXPECT_THAT(library.CanUnloadNow(), IsOk());
}

TEST_F(AggregationTest, AggregateCanOnlyBeAskedForItsUnknown) {
    IClassFactory* factory = nullptr;
    ASSERT_THAT(Library::Own().GetClassObject(CLSID_DepotIntrApi, IID_IClassFactory,
                                              reinterpret_cast<void**>(&factory)),
                IsOk());
    const Com<IClassFactory> owned(factory);
    void* object = &object;
    EXPECT_THAT(factory->CreateInstance(&outer_, IID_IDepotIntrApi, &object),
                Fails(CLASS_E_NOAGGREGATION));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(1u, outer_.references);
}

}  // namespace
}  // namespace depot::test
