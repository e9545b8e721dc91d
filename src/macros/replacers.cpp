#include "macros/replacers.h"

#include <shlobj.h>

#include "macros/macro_system.h"
#include "macros/macro_table.h"
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

// Answers from the environment, the registry and the shell, and for the slots from the macro cache.
class WindowsMacroSystem final : public MacroSystem {
public:
    // With a null `values` every slot is empty. The values must outlive this object.
    explicit WindowsMacroSystem(const MacroValues* values) : values_(values) {}

    std::string SlotText(Slot slot) override {
        if (values_ == nullptr) return {};
        return depot::SlotText(values_->*kSlots[static_cast<std::size_t>(slot)]);
    }

    std::string ExpandEnvironment(const std::string& text) override {
        return depot::ExpandEnvironment(text);
    }

    RegistryText ReadRegistry(Hive hive, const std::string& key, const std::string& name) override {
        const HKEY root = hive == Hive::kCurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
        const auto opened = RegistryKey::Open(root, key, KEY_QUERY_VALUE);
        if (!opened) return {};
        return {true, opened->ReadString(name, kMaxPathBytes)};
    }

    bool IsNtFamily() override { return (SystemVersion().dwPlatformId & kOldFamilyBit) == 0; }

    std::string WindowsFolder() override { return FilledPath(GetWindowsDirectoryA); }

    std::string SystemFolder() override { return FilledPath(GetSystemDirectoryA); }

    std::string TemporaryFolder() override {
        return FilledPath([](char* buffer, DWORD size) { return GetTempPathA(size, buffer); });
    }

    std::string DocumentsFolder() override { return GetSpecialFolderPath(CSIDL_PERSONAL); }

    std::string SystemSoundFolder() override { return GetSystemSoundFolder(); }

    std::optional<std::string> UserName() override {
        char name[kMaxPathBytes] = {};
        DWORD size = sizeof(name);
        if (GetUserNameA(name, &size) == FALSE) return std::nullopt;
        return name;
    }

    std::optional<std::string> ShortPath(const std::string& path) override {
        const std::string shortPath = FilledPath([&](char* buffer, DWORD size) {
            return GetShortPathNameA(path.c_str(), buffer, size);
        });
        return shortPath.empty() ? std::nullopt : std::optional(shortPath);
    }

    bool CreateFolder(const std::string& path) override {
        return CreateDirectoryA(path.c_str(), nullptr) != FALSE;
    }

private:
    const MacroValues* values_;
};

}  // namespace

void ExpandReplacers(const MacroValues* values, std::string& text) {
    WindowsMacroSystem system(values);
    ExpandMacros({system}, text);
}

}  // namespace depot
