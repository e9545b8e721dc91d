#include "platform/registry_key.h"

#include <atomic>
#include <cstring>
#include <string_view>

#include "platform/text.h"
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
    std::string text(maxBytes, '\0');
    const WipeAtEnd wiped(text);  // it may be a password
    DWORD size = maxBytes;
    if (!Succeeded(RegQueryValueExA(key_.get(), name.c_str(), nullptr, nullptr,
                                    reinterpret_cast<BYTE*>(text.data()), &size))) {
        return std::nullopt;
    }
    // The registry stores a terminator only if the writer supplied one.
    return std::optional<std::string>(std::in_place, UpToNul(std::string_view(text.data(), size)));
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
    char name[kRegistryTextBytes];
    DWORD length = sizeof(name);
    SubkeyName subkey;
    subkey.status =
        RegEnumKeyExA(key_.get(), index, name, &length, nullptr, nullptr, nullptr, nullptr);
    if (subkey.status == ERROR_NO_MORE_ITEMS) return subkey;
    if (Succeeded(subkey.status)) subkey.name.assign(name, length);
    return subkey;
}

}  // namespace depot
