#include "macros/windows_macro_system.h"

#include <shlobj.h>

#include "platform/environment.h"
#include "platform/known_folders.h"
#include "platform/paths.h"
#include "platform/registry_key.h"
#include "platform/system_version.h"

namespace depot {
namespace {

// The order of the enumeration Slot.
constexpr MacroSlot MacroValues::*kSlots[] = {
    &MacroValues::applicationFolder, &MacroValues::applicationFolderX86, &MacroValues::organization,
    &MacroValues::userFolder,        &MacroValues::profileFolder,        &MacroValues::languageCode,
    &MacroValues::transferUserName,
};

// The platform bit of the family before NT.
constexpr DWORD kOldFamilyBit = 1;

// Calls `fill` with a buffer and its size; a result that does not fit counts as empty.
template <class Fill>
std::string FilledPath(Fill fill) {
    char buffer[kMaxPathBytes] = {};
    return fill(buffer, DWORD{sizeof(buffer)}) < sizeof(buffer) ? buffer : std::string();
}

}  // namespace

std::string WindowsMacroSystem::SlotText(Slot slot) {
    if (values_ == nullptr) return {};
    return depot::SlotText(values_->*kSlots[static_cast<std::size_t>(slot)]);
}

std::string WindowsMacroSystem::ExpandEnvironment(const std::string& text) {
    return depot::ExpandEnvironment(text);
}

RegistryText WindowsMacroSystem::ReadRegistry(Hive hive, const std::string& key,
                                              const std::string& name) {
    const HKEY root = hive == Hive::kCurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
    const auto opened = RegistryKey::Open(root, key, KEY_QUERY_VALUE);
    if (!opened) return {};
    return {true, opened->ReadString(name, kMaxPathBytes)};
}

bool WindowsMacroSystem::IsNtFamily() {
    return (SystemVersion().dwPlatformId & kOldFamilyBit) == 0;
}

std::string WindowsMacroSystem::WindowsFolder() {
    return FilledPath(GetWindowsDirectoryA);
}

std::string WindowsMacroSystem::SystemFolder() {
    return FilledPath(GetSystemDirectoryA);
}

std::string WindowsMacroSystem::TemporaryFolder() {
    return FilledPath([](char* buffer, DWORD size) { return GetTempPathA(size, buffer); });
}

std::string WindowsMacroSystem::DocumentsFolder() {
    return GetSpecialFolderPath(CSIDL_PERSONAL);
}

std::string WindowsMacroSystem::SystemSoundFolder() {
    return GetSystemSoundFolder();
}

std::optional<std::string> WindowsMacroSystem::UserName() {
    char name[kMaxPathBytes] = {};
    DWORD size = sizeof(name);
    if (GetUserNameA(name, &size) == FALSE) return std::nullopt;
    return name;
}

std::optional<std::string> WindowsMacroSystem::ShortPath(const std::string& path) {
    const std::string shortPath = FilledPath(
        [&](char* buffer, DWORD size) { return GetShortPathNameA(path.c_str(), buffer, size); });
    return shortPath.empty() ? std::nullopt : std::optional(shortPath);
}

bool WindowsMacroSystem::CreateFolder(const std::string& path) {
    return CreateDirectoryA(path.c_str(), nullptr) != FALSE;
}

}  // namespace depot
