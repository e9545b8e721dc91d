// The interface as its type library describes it, and late binding through it.
#include <gtest/gtest.h>

#include <map>

#include "depotbrowser/browser_library.h"
#include "depotbrowser/dialog_user.h"

namespace depot::test {
namespace {

class TypeLibraryTest : public testing::Test {
protected:
    // Opens the library in the DLL's resources; registration is not needed for that.
    UniqueCom<ITypeLib> Open() const {
        ITypeLib* library = nullptr;
        EXPECT_EQ(S_OK, LoadTypeLibEx(library_.Path().c_str(), REGKIND_NONE, &library));
        return UniqueCom<ITypeLib>(library);
    }

    UniqueCom<ITypeInfo> OpenInterface(REFIID id = IID_IUserPasswordPromptDialog) const {
        ITypeInfo* typeInfo = nullptr;
        EXPECT_EQ(S_OK, Open()->GetTypeInfoOfGuid(id, &typeInfo));
        return UniqueCom<ITypeInfo>(typeInfo);
    }

    const ComApartment apartment_;
    const BrowserLibrary library_;
};

std::wstring NameOf(ITypeInfo& typeInfo, MEMBERID id) {
    Bstr name;
    EXPECT_EQ(S_OK, typeInfo.GetDocumentation(id, name.Receive(), nullptr, nullptr, nullptr));
    return name.Text();
}

TEST_F(TypeLibraryTest, InterfaceIsDual) {
    const auto typeInfo = OpenInterface();
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, typeInfo->GetTypeAttr(&attributes));
    EXPECT_EQ(TKIND_DISPATCH, attributes->typekind);
    EXPECT_EQ(TYPEFLAG_FDUAL | TYPEFLAG_FDISPATCHABLE,
              attributes->wTypeFlags & (TYPEFLAG_FDUAL | TYPEFLAG_FDISPATCHABLE));
    typeInfo->ReleaseTypeAttr(attributes);
    EXPECT_EQ(L"IUserPasswordPromptDialog", NameOf(*typeInfo, MEMBERID_NIL));
}

struct Operation {
    std::wstring name;
    INVOKEKIND kind;
};

// Functions of a dual interface include those of IDispatch; its own slots come after these.
std::vector<Operation> OperationsInSlotOrder(ITypeInfo& typeInfo) {
    constexpr SHORT kDispatchSlots = 7;
    std::vector<Operation> operations;
    FUNCDESC* function = nullptr;
    for (UINT index = 0; SUCCEEDED(typeInfo.GetFuncDesc(index, &function)); ++index) {
        const SHORT slot = static_cast<SHORT>(function->oVft / static_cast<SHORT>(sizeof(void*)));
        if (slot >= kDispatchSlots) {
            const auto position = static_cast<std::size_t>(slot - kDispatchSlots);
            if (operations.size() <= position) operations.resize(position + 1);
            operations[position] = {NameOf(typeInfo, function->memid), function->invkind};
        }
        typeInfo.ReleaseFuncDesc(function);
    }
    return operations;
}

TEST_F(TypeLibraryTest, SixOperationsStandInTheirSlots) {
    const struct {
        const wchar_t* name;
        INVOKEKIND kind;
    } expected[] = {
        {L"ShowModal", INVOKE_FUNC},       {L"UserName", INVOKE_PROPERTYGET},
        {L"UserName", INVOKE_PROPERTYPUT}, {L"Password", INVOKE_PROPERTYGET},
        {L"Password", INVOKE_PROPERTYPUT}, {L"ServerName", INVOKE_PROPERTYPUT},
    };
    const auto operations = OperationsInSlotOrder(*OpenInterface());
    ASSERT_EQ(std::size(expected), operations.size());
    for (std::size_t slot = 0; slot < operations.size(); ++slot) {
        SCOPED_TRACE(slot);
        EXPECT_EQ(expected[slot].name, operations[slot].name);
        EXPECT_EQ(expected[slot].kind, operations[slot].kind);
    }
}

TEST_F(TypeLibraryTest, BrowseOperationsStandInTheirSlots) {
    const std::map<std::size_t, std::wstring> expected = {
        {7, L"ShowModal"},
        {9, L"Mode"},
        {10, L"ChosenPath"},
        {11, L"InitialFileName"},
        {12, L"ChosenPaths"},
        {15, L"AllowEditing"},
        {17, L"AllowFileOperations"},
        {18, L"FileType"},
        {24, L"SortColumn"},
        {26, L"SortDescending"},
        {28, L"ResourceFolder"},
        {30, L"HelpTopic"},
        {32, L"ShowFolderTree"},
        {34, L"AskBeforeOverwriting"},
        {36, L"RememberSize"},
        {37, L"OwnerWindow"},
    };
    const auto operations = OperationsInSlotOrder(*OpenInterface(IID_IDepotBrowseDialog));
    ASSERT_EQ(38u - 7u, operations.size());
    for (std::size_t slot = 7; slot < 38; ++slot) {
        const auto named = expected.find(slot);
        const std::wstring name =
            named != expected.end() ? named->second : L"Reserved" + std::to_wstring(slot);
        EXPECT_EQ(name, operations[slot - 7].name);
    }
}

TEST_F(TypeLibraryTest, BrowseDialogIsFoundUnderAllOfItsInterfaces) {
    const auto dialog = CreateBrowseObject();
    void* first = nullptr;
    ASSERT_EQ(S_OK, dialog->QueryInterface(IID_IDepotBrowseDialog, &first));
    const UniqueCom<IDepotBrowseDialog> owned(static_cast<IDepotBrowseDialog*>(first));
    EXPECT_EQ(S_OK, owned->put_Mode(26));
    void* second = nullptr;
    ASSERT_EQ(S_OK, dialog->QueryInterface(IID_IDepotBrowseDialog2, &second));
    EXPECT_EQ(S_OK, UniqueCom<IDepotBrowseDialog2>(static_cast<IDepotBrowseDialog2*>(second))
                        ->put_AllowMultipleSelection(1));
    EXPECT_EQ(E_NOINTERFACE, dialog->QueryInterface(IID_IUserPasswordPromptDialog, &first));
}

// Calls by slot number, the way clients do that know the order only.
template <class... Arguments>
HRESULT CallSlot(IUnknown* object, std::size_t slot, Arguments... arguments) {
    using SlotCall = HRESULT(STDMETHODCALLTYPE*)(IUnknown*, Arguments...);
    void** const table = *reinterpret_cast<void***>(object);
    return reinterpret_cast<SlotCall>(table[slot])(object, arguments...);
}

TEST_F(TypeLibraryTest, SlotsDoWhatTheirOrderStates) {
    const auto dialog = CreateDialogObject();
    EXPECT_EQ(S_OK, CallSlot(dialog.get(), 9, Bstr(L"mary").Get()));
    EXPECT_EQ(S_OK, CallSlot(dialog.get(), 11, Bstr(L"secret").Get()));
    EXPECT_EQ(S_OK, CallSlot(dialog.get(), 12, Bstr(L"slots.test").Get()));
    Bstr userName, password;
    EXPECT_EQ(S_OK, CallSlot(dialog.get(), 8, userName.Receive()));
    EXPECT_EQ(S_OK, CallSlot(dialog.get(), 10, password.Receive()));
    EXPECT_EQ(L"mary", userName.Text());
    EXPECT_EQ(L"secret", password.Text());
    const DialogUser user(L"slots.test", [](const OpenDialog& open) { open.Press(VK_RETURN); });
    LONG result = 0x5A5A5A5A;
    EXPECT_EQ(S_OK, CallSlot(dialog.get(), 7, LONG{0}, &result));
    EXPECT_EQ(1, result);
}

DISPID IdOf(IDispatch& object, std::wstring name) {
    LPOLESTR names[] = {name.data()};
    DISPID id = DISPID_UNKNOWN;
    EXPECT_EQ(S_OK, object.GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id));
    return id;
}

TEST_F(TypeLibraryTest, ScriptsSetAndReadTextsByName) {
    const auto dialog = CreateDialogObject();
    const Bstr text(L"mary");
    VARIANT value = {};
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = text.Get();
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS set = {&value, &put, 1, 1};
    const DISPID id = IdOf(*dialog, L"username");
    EXPECT_EQ(S_OK, dialog->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &set,
                                   nullptr, nullptr, nullptr));
    DISPPARAMS none = {};
    VARIANT result = {};
    EXPECT_EQ(S_OK, dialog->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                   &result, nullptr, nullptr));
    ASSERT_EQ(VT_BSTR, V_VT(&result));
    EXPECT_STREQ(L"mary", V_BSTR(&result));
    VariantClear(&result);
}

TEST_F(TypeLibraryTest, ObjectOffersOneTypeDescription) {
    const auto dialog = CreateDialogObject();
    UINT count = 99;
    EXPECT_EQ(S_OK, dialog->GetTypeInfoCount(&count));
    EXPECT_EQ(1u, count);
    ITypeInfo* typeInfo = nullptr;
    EXPECT_EQ(DISP_E_BADINDEX, dialog->GetTypeInfo(1, 0, &typeInfo));
    EXPECT_EQ(nullptr, typeInfo);
    ASSERT_EQ(S_OK, dialog->GetTypeInfo(0, 0, &typeInfo));
    const UniqueCom<ITypeInfo> owned(typeInfo);
    EXPECT_EQ(L"IUserPasswordPromptDialog4", NameOf(*owned, MEMBERID_NIL));
}

}  // namespace
}  // namespace depot::test
