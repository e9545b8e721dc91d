#include "component/scripted_dialog.h"

#include <gtest/gtest.h>

#include "support/results.h"

namespace depot::test {
namespace {

std::string Narrow(BSTR text) {
    const std::wstring wide(text != nullptr ? text : L"(null)");
    std::string narrow;
    for (const wchar_t character : wide) narrow += static_cast<char>(character);
    return narrow;
}

// An object that goes with its last reference. Its maker holds the first one.
template <class Interface>
class CountedObject : public Interface {
public:
    STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) override {
        const bool known = interfaceId == IID_IUnknown || Has(interfaceId);
        if (known) AddRef();
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

protected:
    virtual ~CountedObject() = default;

private:
    virtual bool Has(REFIID interfaceId) const = 0;

    ULONG references_ = 1;
};

class ScriptedDialog final : public CountedObject<IDepotBrowseDialog2> {
public:
    explicit ScriptedDialog(ScriptedDialogs& script) : script_(script) { ++script_.living; }
    ~ScriptedDialog() override { --script_.living; }

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) override {
        return E_NOTIMPL;
    }

    STDMETHODIMP ShowModal(LONG* result) override {
        Note("ShowModal");
        script_.whileShown();
        *result = script_.result;
        return script_.showResult;
    }
    STDMETHODIMP get_ChosenPath(BSTR* path) override {
        Note("get ChosenPath");
        *path = SysAllocStringLen(script_.chosenPath.data(),
                                  static_cast<UINT>(script_.chosenPath.size()));
        return script_.pathResult;
    }
    STDMETHODIMP get_ChosenPaths(SAFEARRAY** paths) override {
        Note("get ChosenPaths");
        *paths = script_.chosenPaths();
        return script_.pathsResult;
    }
    STDMETHODIMP put_InitialFileName(BSTR name) override {
        return Note("InitialFileName " + Narrow(name));
    }
    STDMETHODIMP put_ResourceFolder(BSTR folder) override {
        return Note("ResourceFolder " + Narrow(folder));
    }
    STDMETHODIMP put_Mode(LONG value) override { return Note("Mode", value); }
    STDMETHODIMP put_AllowEditing(LONG value) override { return Note("AllowEditing", value); }
    STDMETHODIMP put_AllowFileOperations(LONG value) override {
        return Note("AllowFileOperations", value);
    }
    STDMETHODIMP put_FileType(LONG value) override { return Note("FileType", value); }
    STDMETHODIMP put_SortColumn(LONG value) override { return Note("SortColumn", value); }
    STDMETHODIMP put_SortDescending(LONG value) override { return Note("SortDescending", value); }
    STDMETHODIMP put_HelpTopic(LONG value) override { return Note("HelpTopic", value); }
    STDMETHODIMP put_ShowFolderTree(LONG value) override { return Note("ShowFolderTree", value); }
    STDMETHODIMP put_AskBeforeOverwriting(LONG value) override {
        return Note("AskBeforeOverwriting", value);
    }
    STDMETHODIMP put_RememberSize(LONG value) override { return Note("RememberSize", value); }
    STDMETHODIMP put_OwnerWindow(LONG value) override { return Note("OwnerWindow", value); }
    STDMETHODIMP put_AllowMultipleSelection(LONG value) override {
        return Note("AllowMultipleSelection", value);
    }

    STDMETHODIMP Reserved8() override { return Note("reserved"); }
    STDMETHODIMP Reserved13() override { return Note("reserved"); }
    STDMETHODIMP Reserved14() override { return Note("reserved"); }
    STDMETHODIMP Reserved16() override { return Note("reserved"); }
    STDMETHODIMP Reserved19() override { return Note("reserved"); }
    STDMETHODIMP Reserved20() override { return Note("reserved"); }
    STDMETHODIMP Reserved21() override { return Note("reserved"); }
    STDMETHODIMP Reserved22() override { return Note("reserved"); }
    STDMETHODIMP Reserved23() override { return Note("reserved"); }
    STDMETHODIMP Reserved25() override { return Note("reserved"); }
    STDMETHODIMP Reserved27() override { return Note("reserved"); }
    STDMETHODIMP Reserved29() override { return Note("reserved"); }
    STDMETHODIMP Reserved31() override { return Note("reserved"); }
    STDMETHODIMP Reserved33() override { return Note("reserved"); }
    STDMETHODIMP Reserved35() override { return Note("reserved"); }

private:
    bool Has(REFIID interfaceId) const override {
        return interfaceId == IID_IDepotBrowseDialog ||
               (script_.extended && interfaceId == IID_IDepotBrowseDialog2);
    }

    HRESULT Note(const std::string& call) {
        script_.calls.push_back(call);
        return S_OK;
    }
    HRESULT Note(const std::string& call, LONG value) {
        return Note(call + " " + std::to_string(value));
    }

    ScriptedDialogs& script_;
};

class ScriptedFactory final : public CountedObject<IClassFactory> {
public:
    explicit ScriptedFactory(ScriptedDialogs& script) : script_(script) {}

    STDMETHODIMP CreateInstance(IUnknown*, REFIID interfaceId, void** object) override {
        auto* const dialog = new ScriptedDialog(script_);
        const HRESULT result = dialog->QueryInterface(interfaceId, object);
        dialog->Release();
        return result;
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

private:
    bool Has(REFIID interfaceId) const override { return interfaceId == IID_IClassFactory; }

    ScriptedDialogs& script_;
};

}  // namespace

ScriptedDialogs::ScriptedDialogs() {
    auto* const factory = new ScriptedFactory(*this);
    EXPECT_THAT(CoRegisterClassObject(CLSID_DepotBrowseDialog, factory, CLSCTX_INPROC_SERVER,
                                      REGCLS_MULTIPLEUSE, &registration_),
                IsOk());
    factory->Release();
}

ScriptedDialogs::~ScriptedDialogs() {
    CoRevokeClassObject(registration_);
    EXPECT_EQ(0, living) << "a dialog was not released";
}

SAFEARRAY* NewTexts(const std::vector<std::wstring>& texts, LONG first) {
    SAFEARRAY* const array =
        SafeArrayCreateVector(VT_BSTR, first, static_cast<ULONG>(texts.size()));
    for (LONG index = 0; index < static_cast<LONG>(texts.size()); ++index) {
        const std::wstring& text = texts[static_cast<std::size_t>(index)];
        LONG place = first + index;
        const BSTR copy = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        EXPECT_THAT(SafeArrayPutElement(array, &place, copy), IsOk());
        SysFreeString(copy);
    }
    return array;
}

}  // namespace depot::test
