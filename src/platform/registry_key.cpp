#include "platform/registry_key.h"

#include <atomic>
#include <cstring>
#include <string_view>

#include "platform/text.h"
#include "platform/trace.h"
#include "platform/wide_text.h"
#include "platform/wipe.h"

namespace depot {
namespace {

std::atomic<unsigned> failures = 0;

// Returns whether the call succeeded, and counts it otherwise unless there is nothing to be had.
bool Succeeded(LSTATUS status) {
    if (status == ERROR_SUCCESS) return true;
    if (status != ERROR_FILE_NOT_FOUND && status != ERROR_MORE_DATA) ++failures;
    return false;
}

constexpr char kInexactText[] = "a text that the code page cannot hold";

// Whether the system converts values of the type between the code page and UTF-16.
bool HoldsText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// Whether a text takes more bytes in the code page.
bool TakesMore(std::wstring_view text, DWORD maxBytes) {
    constexpr std::size_t kMostBytes = 3;  // of one unit
    if (text.size() * kMostBytes <= maxBytes) return false;
    const int units = static_cast<int>(text.size());
    const int bytes =
        WideCharToMultiByte(CP_ACP, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    return bytes < 0 || static_cast<DWORD>(bytes) > maxBytes;
}

}  // namespace

unsigned RegistryFailures() {
    return failures;
}

std::optional<RegistryKey> RegistryKey::Open(HKEY root, const std::string& path, REGSAM access) {
    HKEY key = nullptr;
    if (!Succeeded(RegOpenKeyExA(root, path.c_str(), 0, access, &key))) return std::nullopt;
    return RegistryKey(UniqueHkey(key));
}

std::optional<RegistryKey> RegistryKey::OpenSubkey(const std::string& path, REGSAM access) const {
    return Open(key_.get(), path, access);
}

std::optional<std::string> RegistryKey::ReadString(const std::string& name, DWORD maxBytes) const {
    // A text has no more units than bytes.
    std::wstring data(maxBytes, L'\0');
    const WipeAtEnd wiped(data);  // it may be a password
    DWORD type = REG_NONE;
    DWORD size = maxBytes * sizeof(wchar_t);
    if (!Succeeded(RegQueryValueExW(key_.get(), WideFromAnsi(name).c_str(), nullptr, &type,
                                    reinterpret_cast<BYTE*>(data.data()), &size))) {
        return std::nullopt;
    }
    // The registry stores a terminator only if the writer supplied one.
    if (!HoldsText(type)) {
        if (size > maxBytes) return std::nullopt;
        const std::string_view bytes(reinterpret_cast<const char*>(data.data()), size);
        return std::optional<std::string>(std::in_place, UpToNul(bytes));
    }
    const std::wstring_view text = std::wstring_view(data).substr(0, size / sizeof(wchar_t));
    if (TakesMore(text, maxBytes)) return std::nullopt;
    std::optional<std::string> exact = ExactAnsiFromWide(text.substr(0, text.find(L'\0')));
    if (!exact) TraceLeftOut("the registry", name, kInexactText);
    return exact;
}

std::optional<DWORD> RegistryKey::ReadDword(const std::string& name,
                                            std::optional<DWORD> otherwise) const {
    DWORD value = 0;
    DWORD type = REG_NONE;
    DWORD size = sizeof(value);
    const LSTATUS status = RegQueryValueExA(key_.get(), name.c_str(), nullptr, &type,
                                            reinterpret_cast<BYTE*>(&value), &size);
    const bool isNumber = Succeeded(status) && type == REG_DWORD && size == sizeof(value);
    if (isNumber) return value;
    return status == ERROR_FILE_NOT_FOUND ? std::nullopt : otherwise;
}

std::optional<DWORD> RegistryKey::ReadDwordOfAnySize(const std::string& name) const {
    return ReadFirstFourBytes(name, std::nullopt);
}

std::optional<DWORD> RegistryKey::ReadDwordOr(const std::string& name, DWORD otherwise) const {
    return ReadFirstFourBytes(name, otherwise);
}

std::optional<DWORD> RegistryKey::ReadFirstFourBytes(const std::string& name,
                                                     std::optional<DWORD> ofOtherTypes) const {
    BYTE data[kRegistryTextBytes] = {};
    DWORD type = REG_NONE;
    DWORD size = sizeof(data);
    const LSTATUS status = RegQueryValueExA(key_.get(), name.c_str(), nullptr, &type, data, &size);
    if (!Succeeded(status)) return std::nullopt;
    if (type != REG_DWORD) return ofOtherTypes;
    DWORD value = 0;
    std::memcpy(&value, data, sizeof(value));
    return value;
}

SubkeyName RegistryKey::SubkeyAt(DWORD index) const {
    wchar_t name[kRegistryTextBytes];
    DWORD length = kRegistryTextBytes;
    SubkeyName subkey;
    subkey.status =
        RegEnumKeyExW(key_.get(), index, name, &length, nullptr, nullptr, nullptr, nullptr);
    if (subkey.status == ERROR_NO_MORE_ITEMS || !Succeeded(subkey.status)) return subkey;
    std::optional<std::string> exact = ExactAnsiFromWide({name, length});
    if (!exact) {
        TraceLeftOut("the registry", AnsiFromWide({name, length}), kInexactText);
        subkey.status = ERROR_NO_UNICODE_TRANSLATION;
    } else if (exact->size() >= kRegistryTextBytes) {
        subkey.status = ERROR_MORE_DATA;
    } else {
        subkey.name = *std::move(exact);
    }
    return subkey;
}

}  // namespace depot
