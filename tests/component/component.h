// The component as a client has it: registered, and reached through COM only.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "DepotIntr.h"
#include "platform/win32.h"
#include "support/scratch.h"
// After the Windows headers.
#include <oleauto.h>

#include "support/results.h"

namespace depot::test {

struct ComReleaser {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class Interface>
using Com = std::unique_ptr<Interface, ComReleaser>;

// An input text. A null one has no BSTR at all.
class Text {
public:
    Text() = default;
    Text(std::wstring_view text)
        : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
    Text(const wchar_t* text) : Text(std::wstring_view(text)) {}
    Text(const std::string& text)
        : Text(std::wstring_view(std::wstring(text.begin(), text.end()))) {}
    Text(const char* text) : Text(std::string(text)) {}
    ~Text() { SysFreeString(text_); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;

    operator BSTR*() { return &text_; }

private:
    BSTR text_ = nullptr;
};

// The variable for an output text. It starts as junk, which a method has to replace.
class OutText {
public:
    OutText() = default;
    ~OutText() { Free(); }
    OutText(const OutText&) = delete;
    OutText& operator=(const OutText&) = delete;

    operator BSTR*() {
        Free();
        text_ = Junk();
        return &text_;
    }
    bool IsUntouched() const { return text_ == Junk(); }
    bool IsNull() const { return text_ == nullptr; }
    // Returns the text; "(untouched)" or "(null)" when there is none.
    std::wstring Value() const {
        if (IsUntouched()) return L"(untouched)";
        return IsNull() ? L"(null)" : std::wstring(text_, SysStringLen(text_));
    }

private:
    static BSTR Junk() { return reinterpret_cast<BSTR>(LONG_PTR{0x5A5A5A5A}); }
    void Free() {
        if (!IsUntouched()) SysFreeString(text_);
    }
    BSTR text_ = Junk();
};

inline constexpr LONG_PTR kJunkHandle = 0x5A5A5A5A5A5A5A5A;

// A loaded DepotIntr.dll with its four entry points.
class Library {
public:
    explicit Library(const std::string& path);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // The one beside this program, which stays loaded.
    static Library& Own();

    HMODULE Module() const { return module_; }
    HRESULT CanUnloadNow() const;
    HRESULT GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) const;
    HRESULT Register() const;
    HRESULT Unregister() const;

    // Makes an object without COM's help.
    Com<IDepotIntrApi> CreateApi() const;

private:
    FARPROC Entry(const char* name) const { return GetProcAddress(module_, name); }
    HMODULE module_ = nullptr;
};

// The folder of this program, with a trailing backslash.
std::string ProgramFolder();

// Copies DepotIntr.dll into a folder and returns its path. Loaded from there it is a module of its
// own, which nothing else in the process uses. `directoryService` is the file that becomes its
// qdirsvc.dll; without one there is none.
std::string CopyComponent(const ScratchFolder& folder, const std::string& directoryService = {});

std::wstring Wide(const std::string& text);

// Makes an object through COM; a test failure and null when that fails.
Com<IDepotIntrApi> CreateApi();

// An apartment of this thread.
class Apartment {
public:
    explicit Apartment(DWORD kind = COINIT_APARTMENTTHREADED) { CoInitializeEx(nullptr, kind); }
    ~Apartment() { CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

// A session that ends with this object.
class Session {
public:
    explicit Session(IDepotIntrApi& api) : api_(api) {
        EXPECT_THAT(api_.DPInitialize(&handle_), IsOk());
    }
    ~Session() { EXPECT_THAT(api_.DPUnInitialize(handle_), IsOk()); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    operator LONG_PTR() const { return handle_; }
    // For methods that take the handle by reference.
    LONG_PTR* Address() { return &handle_; }

private:
    IDepotIntrApi& api_;
    LONG_PTR handle_ = kJunkHandle;
};

// Registers the component, and gives each test an apartment, an object, a user folder of its own
// and a depot key without any depot.
class ComponentTest : public testing::Test {
protected:
    ComponentTest();

    // Defines a depot of a folder below the scratch folder and creates that folder.
    std::string DefineDepot(const std::string& name, const std::string& displayName = {});

    // Reads a value of the session's current file; the text "(failed)" when that fails.
    std::wstring Read(LONG_PTR session, const wchar_t* section, const wchar_t* key,
                      const wchar_t* defaultValue = L"(default)", ULONG size = 1000);

    ScratchFolder folder_;
    ScratchKey product_{HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\13.00\\Wharfside"};
    ScratchKey depots_{HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\Depots"};
    Apartment apartment_;
    Com<IDepotIntrApi> api_;
};

}  // namespace depot::test
