// The list of depots that clients go through.
#include "component/api2.h"
#include "component/late_calls.h"

namespace depot::test {
namespace {

class DepotsTest : public ComponentTest {
protected:
    // A session knows the depots that were there before it.
    bool DefineFar() {
        depots_.Text("Far", "Path1", "dc=example,dc=test");
        depots_.Dword("Far", "Type1", 1);
        depots_.Text("Far", "Host1", "127.0.0.1");
        depots_.Dword("Far", "Port1", 9);
        depots_.Dword("Far", "ConnectTimeout1", 1);
        depots_.Dword("Far", "Authentication1", 0);
        return true;
    }

    Com<IDepotInfos> Depots(LONG_PTR handle) {
        IDepotInfos* depots = nullptr;
        EXPECT_THAT(api2_->Depots(handle, &depots), IsOk());
        return Com<IDepotInfos>(depots);
    }
    Com<IDepotInfo> Item(IDepotInfos& depots, Variant index) {
        IDepotInfo* depot = nullptr;
        EXPECT_THAT(depots.get_Item(*index.get(), &depot), IsOk());
        return Com<IDepotInfo>(depot);
    }
    using Getter = HRESULT (STDMETHODCALLTYPE IDepotInfo::*)(BSTR* text);
    static std::wstring TextOf(IDepotInfo& depot, Getter getter) {
        OutText text;
        EXPECT_THAT((depot.*getter)(text), IsOk());
        return text.Value();
    }

    const std::string root_ = DefineDepot("Work", "Work profiles");
    const bool isFarDefined_ = DefineFar();
    const Com<IDepotIntrApi2> api2_ = Api2Of(*api_);
    Session session_{*api_};
};

TEST_F(DepotsTest, DepotsAreFoundByNumberAndByKey) {
    const auto depots = Depots(session_);
    LONG count = 0;
    ASSERT_THAT(depots->get_Count(&count), IsOk());
    EXPECT_EQ(2, count);
    const auto work = Item(*depots, L"WORK");
    EXPECT_EQ(L"Work", TextOf(*work, &IDepotInfo::get_Key));
    EXPECT_EQ(L"Work profiles", TextOf(*work, &IDepotInfo::get_Name));
    EXPECT_EQ(Wide(root_), TextOf(*work, &IDepotInfo::get_Location));
    EXPECT_EQ(L"Far", TextOf(*Item(*depots, L"Far"), &IDepotInfo::get_Key));
    EXPECT_EQ(L"ldap://127.0.0.1:9/dc=example,dc=test",
              TextOf(*Item(*depots, L"Far"), &IDepotInfo::get_Location));
    EXPECT_NE(TextOf(*Item(*depots, 1), &IDepotInfo::get_Key),
              TextOf(*Item(*depots, 2), &IDepotInfo::get_Key));
    EXPECT_EQ(L"Work", TextOf(*Item(*Depots(0), L"Work"), &IDepotInfo::get_Key));
}

TEST_F(DepotsTest, OtherIndexesAreRefused) {
    const auto depots = Depots(session_);
    for (Variant index : {Variant(0), Variant(3), Variant(-1), Variant(L"None"), Variant(L""),
                          Variant(), Variant::Raw(VT_DISPATCH, 0),
                          Variant::Raw(VT_I4 | VT_BYREF, 0), Variant::Raw(VT_BSTR, 0)}) {
        IDepotInfo* depot = reinterpret_cast<IDepotInfo*>(this);
        EXPECT_THAT(depots->get_Item(*index.get(), &depot), Fails(DISP_E_BADINDEX));
        EXPECT_EQ(nullptr, depot);
    }
    EXPECT_THAT(depots->get_Item(*Variant(1).get(), nullptr), Fails(E_POINTER));
    EXPECT_THAT(depots->get_Count(nullptr), Fails(E_POINTER));
    EXPECT_THAT(depots->get__NewEnum(nullptr), Fails(E_POINTER));
    EXPECT_THAT(Item(*depots, 1)->get_Key(nullptr), Fails(E_POINTER));
    EXPECT_THAT(Item(*depots, 1)->get_Reachable(nullptr), IsRefused());
    EXPECT_THAT(api2_->Depots(session_, nullptr), IsRefused());
}

TEST_F(DepotsTest, ReachableIsAskedOfTheSessionAsLongAsItLives) {
    OutBool reachable;
    LONG_PTR session = 0;
    ASSERT_THAT(api_->DPInitialize(&session), IsOk());
    const auto depots = Depots(session);
    EXPECT_THAT(Item(*depots, L"Work")->get_Reachable(reachable), IsOk());
    EXPECT_TRUE(reachable.IsTrue());
    EXPECT_THAT(Item(*depots, L"Far")->get_Reachable(reachable), IsRefused());
    EXPECT_TRUE(reachable.IsFalse());
    EXPECT_EQ(ERROR_HOST_UNREACHABLE, static_cast<DWORD>(LastErrorOf(*api2_, session).code));
    ASSERT_THAT(api_->DPUnInitialize(session), IsOk());
    EXPECT_THAT(Item(*depots, L"Work")->get_Reachable(reachable), IsRefused());
    EXPECT_TRUE(reachable.IsFalse());
    EXPECT_EQ(L"Work", TextOf(*Item(*depots, L"Work"), &IDepotInfo::get_Key));
}

TEST_F(DepotsTest, EnumeratorGoesThroughAllDepots) {
    const auto depots = Depots(session_);
    IUnknown* made = nullptr;
    ASSERT_THAT(depots->get__NewEnum(&made), IsOk());
    const Com<IUnknown> owned(made);
    void* found = nullptr;
    ASSERT_THAT(made->QueryInterface(IID_IEnumVARIANT, &found), IsOk());
    const Com<IEnumVARIANT> enumerator(static_cast<IEnumVARIANT*>(found));
    VARIANT values[3] = {};
    ULONG fetched = 99;
    EXPECT_THAT(enumerator->Next(3, values, &fetched), IsRefused());
    EXPECT_EQ(2u, fetched);
    for (VARIANT& value : values) VariantClear(&value);
    EXPECT_THAT(enumerator->Next(1, values, nullptr), IsRefused());
    EXPECT_THAT(enumerator->Reset(), IsOk());
    EXPECT_THAT(enumerator->Skip(1), IsOk());
    IEnumVARIANT* copied = nullptr;
    ASSERT_THAT(enumerator->Clone(&copied), IsOk());
    const Com<IEnumVARIANT> clone(copied);
    EXPECT_THAT(clone->Next(1, values, nullptr), IsOk());
    EXPECT_EQ(VT_DISPATCH, V_VT(&values[0]));
    VariantClear(&values[0]);
    EXPECT_THAT(clone->Next(1, values, nullptr), IsRefused());
    EXPECT_THAT(enumerator->Skip(2), IsRefused());
    EXPECT_THAT(enumerator->Next(1, nullptr, nullptr), Fails(E_POINTER));
    EXPECT_THAT(enumerator->Next(2, values, nullptr), Fails(E_POINTER));
    EXPECT_THAT(enumerator->Clone(nullptr), Fails(E_POINTER));
}

TEST_F(DepotsTest, ListAndDepotsAreUsedByName) {
    Variant list;
    ASSERT_THAT(LateClient(*api_).Call(L"Depots", {Variant(static_cast<LONG>(session_))}, &list),
                IsOk());
    ASSERT_EQ(VT_DISPATCH, list.Type());
    const auto get = [](IDispatch& object, DISPID id, Variant* argument, Variant& result) {
        DISPPARAMS parameters = {argument ? argument->get() : nullptr, nullptr, argument ? 1u : 0u,
                                 0};
        return object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT,
                             DISPATCH_METHOD | DISPATCH_PROPERTYGET, &parameters, result.get(),
                             nullptr, nullptr);
    };
    Variant key(L"Work"), depot, name, none(L"None"), enumerator;
    ASSERT_THAT(get(*V_DISPATCH(list.get()), DISPID_VALUE, &key, depot), IsOk());
    ASSERT_EQ(VT_DISPATCH, depot.Type());
    std::wstring text = L"Name";
    LPOLESTR names[] = {text.data()};
    DISPID id = 0;
    ASSERT_THAT(
        V_DISPATCH(depot.get())->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id),
        IsOk());
    ASSERT_THAT(get(*V_DISPATCH(depot.get()), id, nullptr, name), IsOk());
    EXPECT_EQ(L"Work profiles", name.Text());
    EXPECT_THAT(get(*V_DISPATCH(list.get()), DISPID_NEWENUM, nullptr, enumerator), IsOk());
    EXPECT_EQ(VT_UNKNOWN, enumerator.Type());
    Variant nothing;
    EXPECT_FALSE(SUCCEEDED(get(*V_DISPATCH(list.get()), DISPID_VALUE, &none, nothing)));
}

}  // namespace
}  // namespace depot::test
