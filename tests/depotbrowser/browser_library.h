// The dialog component as its clients meet it: a library beside the test program.
#pragma once

#include <memory>
#include <string>

#include "DepotBrowser.h"
#include "platform/handles.h"
#include "platform/win32.h"

namespace depot::test {

struct ComReleaser {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class Interface>
using UniqueCom = std::unique_ptr<Interface, ComReleaser>;

// COM on the current thread, in an apartment of its own.
class ComApartment {
public:
    ComApartment() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    ~ComApartment() { CoUninitialize(); }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
};

// The library, loaded, and registered until the end unless a test unregisters it.
class BrowserLibrary {
public:
    BrowserLibrary();
    ~BrowserLibrary();
    BrowserLibrary(const BrowserLibrary&) = delete;
    BrowserLibrary& operator=(const BrowserLibrary&) = delete;

    HMODULE Module() const { return module_.get(); }
    std::wstring Path() const;

    HRESULT Register() const { return Call("DllRegisterServer"); }
    HRESULT Unregister() const { return Call("DllUnregisterServer"); }
    HRESULT CanUnloadNow() const { return Call("DllCanUnloadNow"); }
    HRESULT GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) const;

    // Returns the number of names that the library exports.
    DWORD ExportCount() const;

private:
    HRESULT Call(const char* entryPoint) const;

    UniqueModule module_;
};

// Create dialog objects the way clients do, by their ProgIDs.
UniqueCom<IUserPasswordPromptDialog> CreateDialogObject();

UniqueCom<IDepotBrowseDialog3> CreateBrowseObject();

// A BSTR that is freed at the end.
class Bstr {
public:
    Bstr() = default;
    explicit Bstr(const std::wstring& text)
        : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
    ~Bstr() { SysFreeString(text_); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;

    BSTR Get() const { return text_; }
    BSTR* Receive() { return &text_; }
    std::wstring Text() const {
        return text_ != nullptr ? std::wstring(text_, SysStringLen(text_)) : L"(null)";
    }

private:
    BSTR text_ = nullptr;
};

std::wstring UserNameOf(IUserPasswordPromptDialog& dialog);
std::wstring PasswordOf(IUserPasswordPromptDialog& dialog);

// Sets the three texts.
void Prepare(IUserPasswordPromptDialog& dialog, const std::wstring& server,
             const std::wstring& userName, const std::wstring& password);

}  // namespace depot::test
