// Reading the registry: an owner for open keys and the value reads that the component needs.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "platform/win32.h"

namespace depot {

struct HkeyCloser {
    void operator()(HKEY key) const { RegCloseKey(key); }
};
using UniqueHkey = std::unique_ptr<std::remove_pointer_t<HKEY>, HkeyCloser>;

// The bytes, a terminating NUL included, that a depot's texts and key names may take.
inline constexpr DWORD kRegistryTextBytes = 261;

// How often reading the registry failed for another reason than that there is nothing, or too much
// of it: what was read meanwhile, on any thread, may be incomplete.
unsigned RegistryFailures();

// The outcome of asking a key for its next subkey.
struct SubkeyName {
    LSTATUS status = ERROR_NO_MORE_ITEMS;
    std::string name;  // meaningful only when status is ERROR_SUCCESS
};

// An open registry key. A missing key or value is an empty optional, never an error.
class RegistryKey {
public:
    // Opens root\path. `access` may carry KEY_WOW64_64KEY beside the rights that are wanted.
    static std::optional<RegistryKey> Open(HKEY root, const std::string& path,
                                           REGSAM access = KEY_READ);

    // Opens a key below this one.
    std::optional<RegistryKey> OpenSubkey(const std::string& path, REGSAM access = KEY_READ) const;

    // Returns the text up to its first NUL; data of more than `maxBytes` counts as absent, and so
    // does a text that the code page cannot hold exactly: what it would make of it is another
    // folder, user or name.
    //
    // Kept: the registry type is not checked, so REG_EXPAND_SZ text comes back unexpanded.
    // Relied on by: installed definitions whose values are not all written as REG_SZ.
    std::optional<std::string> ReadString(const std::string& name,
                                          DWORD maxBytes = kRegistryTextBytes) const;

    // Returns the value only when it is a REG_DWORD of exactly four bytes, else `otherwise`; a
    // missing value is always absent.
    std::optional<DWORD> ReadDword(const std::string& name,
                                   std::optional<DWORD> otherwise = std::nullopt) const;

    // Returns the first four bytes of a REG_DWORD, whatever its size; missing bytes are zero.
    std::optional<DWORD> ReadDwordOfAnySize(const std::string& name) const;

    // The same, with `otherwise` for a value of another type; only a missing value is absent.
    std::optional<DWORD> ReadDwordOr(const std::string& name, DWORD otherwise) const;

    // Asks for the name of the subkey at `index`; names may take kRegistryTextBytes. One that the
    // code page cannot hold exactly has no name here: ERROR_NO_UNICODE_TRANSLATION.
    SubkeyName SubkeyAt(DWORD index) const;

private:
    explicit RegistryKey(UniqueHkey key) : key_(std::move(key)) {}

    std::optional<DWORD> ReadFirstFourBytes(const std::string& name,
                                            std::optional<DWORD> ofOtherTypes) const;

    UniqueHkey key_;
};

}  // namespace depot
