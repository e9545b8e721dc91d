#include "platform/data_protection.h"

#include <limits>
#include <memory>

#include "platform/compiler.h"
#include "platform/kept_library.h"
#include "platform/system_folder.h"
#include "platform/win32.h"

// Behind the system's own types.
#include <dpapi.h>

namespace depot {
namespace {

struct LocalReleaser {
    void operator()(BYTE* block) const { LocalFree(block); }
};

struct ProtectionCalls {
    decltype(&CryptProtectData) protect = nullptr;
    decltype(&CryptUnprotectData) unprotect = nullptr;
};

// Processes that keep nothing never load the library.
ProtectionCalls Calls() {
    static KeptLibrary library;
    HMODULE module = library.Get();
    if (module == nullptr) module = library.Keep(LoadLibraryAlone(SystemFolder() + "crypt32.dll"));
    if (module == nullptr) return {};
    return {
        FunctionCast<decltype(&CryptProtectData)>(GetProcAddress(module, "CryptProtectData")),
        FunctionCast<decltype(&CryptUnprotectData)>(GetProcAddress(module, "CryptUnprotectData"))};
}

DATA_BLOB BlobOf(std::span<const std::uint8_t> bytes) {
    return {static_cast<DWORD>(bytes.size()), const_cast<BYTE*>(bytes.data())};
}

// Keeps other programs' protected data from being taken for this one's.
DATA_BLOB Entropy() {
    static BYTE name[] = "DepotIntr offline";
    return {sizeof(name), name};
}

std::optional<std::vector<std::uint8_t>> Taken(BOOL done, const DATA_BLOB& made) {
    const std::unique_ptr<BYTE, LocalReleaser> owner(made.pbData);
    if (!done || made.pbData == nullptr) return std::nullopt;
    return std::vector<std::uint8_t>(made.pbData, made.pbData + made.cbData);
}

bool IsTooLong(std::span<const std::uint8_t> bytes) {
    return bytes.size() > std::numeric_limits<DWORD>::max() / 2;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> ProtectForUser(std::span<const std::uint8_t> bytes) {
    const auto protect = Calls().protect;
    if (protect == nullptr || IsTooLong(bytes)) return std::nullopt;
    DATA_BLOB plain = BlobOf(bytes), entropy = Entropy(), made = {};
    const BOOL done =
        protect(&plain, L"", &entropy, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &made);
    return Taken(done, made);
}

std::optional<std::vector<std::uint8_t>> UnprotectForUser(std::span<const std::uint8_t> bytes) {
    const auto unprotect = Calls().unprotect;
    if (unprotect == nullptr || IsTooLong(bytes) || bytes.empty()) return std::nullopt;
    DATA_BLOB sealed = BlobOf(bytes), entropy = Entropy(), made = {};
    const BOOL done =
        unprotect(&sealed, nullptr, &entropy, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &made);
    return Taken(done, made);
}

}  // namespace depot
