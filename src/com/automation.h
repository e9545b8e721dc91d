// What COM and automation hand out: owners of interfaces, texts and arrays, and how an object
// answers for its interfaces.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/win32.h"
// After the Windows headers.
#include <oleauto.h>

namespace depot {

struct ComReleaser {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class Interface>
using UniqueCom = std::unique_ptr<Interface, ComReleaser>;

struct BstrFreer {
    void operator()(BSTR text) const { SysFreeString(text); }
};
using UniqueBstr = std::unique_ptr<std::remove_pointer_t<BSTR>, BstrFreer>;

struct SafeArrayDestroyer {
    void operator()(SAFEARRAY* array) const { SafeArrayDestroy(array); }
};
using UniqueSafeArray = std::unique_ptr<SAFEARRAY, SafeArrayDestroyer>;

// Returns the whole text, embedded NULs included, for as long as `text` lives; a null BSTR is an
// empty text.
std::wstring_view WideText(BSTR text);

// Return a new BSTR; null when memory is exhausted. A narrow text names a file, a folder or a
// depot, in the code page of the file system's calls.
UniqueBstr NewWideBstr(std::wstring_view text);
UniqueBstr NewNameBstr(const std::string& name);

// Makes an array of variants that hold the names: script engines read no other kind of array.
// Without memory E_OUTOFMEMORY, and the output is empty. REQUIRES: the output holds nothing.
HRESULT GiveNames(const std::vector<std::string>& names, VARIANT* output) noexcept;

// Overwrites a text before it is released; the system keeps released ones for a while. Null is
// fine.
void WipeBstr(BSTR text) noexcept;

// Owns a password, and wipes it.
struct SecretBstrFreer {
    void operator()(BSTR text) const {
        WipeBstr(text);
        SysFreeString(text);
    }
};
using UniqueSecretBstr = std::unique_ptr<std::remove_pointer_t<BSTR>, SecretBstrFreer>;

// Makes an object wherever its component offers to run: in this process, in another one or on
// another machine. Null when it cannot be made.
template <class Interface>
UniqueCom<Interface> CreateAnywhere(REFCLSID classId, REFIID interfaceId) {
    constexpr DWORD kAnyContext =
        CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
    void* made = nullptr;
    const HRESULT result = CoCreateInstance(classId, nullptr, kAnyContext, interfaceId, &made);
    return UniqueCom<Interface>(SUCCEEDED(result) ? static_cast<Interface*>(made) : nullptr);
}

// Puts out `object` under `interfaceId`, which must be one of `known`, with an added reference.
// E_POINTER without an output; E_NOINTERFACE, with null, for any other identifier.
//
// REQUIRES: each known interface extends the one before it, and `object` has them all.
HRESULT GiveInterface(IUnknown& object, std::initializer_list<const IID*> known, REFIID interfaceId,
                      void** output) noexcept;

}  // namespace depot
