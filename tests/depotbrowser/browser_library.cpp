#include "depotbrowser/browser_library.h"

#include <gtest/gtest.h>

#include "platform/compiler.h"

namespace depot::test {

BrowserLibrary::BrowserLibrary() : module_(LoadLibraryA("DepotBrowser.dll")) {
    EXPECT_NE(nullptr, module_.get());
    EXPECT_EQ(S_OK, Register());
}

BrowserLibrary::~BrowserLibrary() {
    EXPECT_EQ(S_OK, Unregister());
}

std::wstring BrowserLibrary::Path() const {
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(Module(), path.data(), MAX_PATH));
    return path;
}

HRESULT BrowserLibrary::Call(const char* entryPoint) const {
    const auto call = FunctionCast<HRESULT(WINAPI*)()>(GetProcAddress(module_.get(), entryPoint));
    return call != nullptr ? call() : E_NOTIMPL;
}

HRESULT BrowserLibrary::GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) const {
    const auto call = FunctionCast<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>(
        GetProcAddress(module_.get(), "DllGetClassObject"));
    return call != nullptr ? call(classId, interfaceId, object) : E_NOTIMPL;
}

DWORD BrowserLibrary::ExportCount() const {
    const auto* const base = reinterpret_cast<const BYTE*>(Module());
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    const DWORD address =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
    return reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + address)->NumberOfNames;
}

namespace {

template <class Interface>
UniqueCom<Interface> Create(const wchar_t* progId, REFIID interfaceId) {
    CLSID classId = {};
    EXPECT_EQ(S_OK, CLSIDFromProgID(progId, &classId));
    void* object = nullptr;
    EXPECT_EQ(S_OK, CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, interfaceId, &object));
    return UniqueCom<Interface>(static_cast<Interface*>(object));
}

}  // namespace

UniqueCom<IUserPasswordPromptDialog> CreateDialogObject() {
    return Create<IUserPasswordPromptDialog>(L"DepotBrowser.UserPasswordPromptDialog",
                                             IID_IUserPasswordPromptDialog);
}

UniqueCom<IDepotBrowseDialog3> CreateBrowseObject() {
    return Create<IDepotBrowseDialog3>(L"DepotBrowser.DepotBrowseDialog", IID_IDepotBrowseDialog3);
}

std::wstring UserNameOf(IUserPasswordPromptDialog& dialog) {
    Bstr text;
    EXPECT_EQ(S_OK, dialog.get_UserName(text.Receive()));
    return text.Text();
}

std::wstring PasswordOf(IUserPasswordPromptDialog& dialog) {
    Bstr text;
    EXPECT_EQ(S_OK, dialog.get_Password(text.Receive()));
    return text.Text();
}

void Prepare(IUserPasswordPromptDialog& dialog, const std::wstring& server,
             const std::wstring& userName, const std::wstring& password) {
    EXPECT_EQ(S_OK, dialog.put_ServerName(Bstr(server).Get()));
    EXPECT_EQ(S_OK, dialog.put_UserName(Bstr(userName).Get()));
    EXPECT_EQ(S_OK, dialog.put_Password(Bstr(password).Get()));
}

}  // namespace depot::test
