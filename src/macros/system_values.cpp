#include "macros/macro_values.h"

#include "macros/shell_folders.h"
#include "platform/code_page.h"
#include "platform/paths.h"

namespace depot {
namespace {

// Returns the folder for all users, or, when that is empty, the user's own.
std::string CommonOrOwn(MacroSystem& system, const char* common, const char* own) {
    const std::string folder = GetShellFolder(system, common, true);
    return folder.empty() ? GetShellFolder(system, own, false) : folder;
}

}  // namespace

std::optional<std::string> ProgramFilesFolder(const MacroContext& context) {
    const RegistryText folder = context.system.ReadRegistry(
        Hive::kLocalMachine, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion", "ProgramFilesDir");
    return folder.keyOpened ? std::optional(folder.text.value_or("")) : std::nullopt;
}

std::optional<std::string> RunDllPath(const MacroContext& context) {
    MacroSystem& system = context.system;
    const std::string folder = system.IsNtFamily() ? system.SystemFolder() : system.WindowsFolder();
    return RemoveTrailingBackslash(folder) + "\\rundll32.exe";
}

std::optional<std::string> LogonName(const MacroContext& context) {
    return context.system.UserName().value_or("User");
}

std::optional<std::string> SystemFolder(const MacroContext& context) {
    return context.system.SystemFolder();
}

std::optional<std::string> WindowsDrive(const MacroContext& context) {
    const std::string folder = context.system.WindowsFolder();
    const std::size_t colon = FindCharacter(folder, ':');
    return colon == std::string::npos ? folder : folder.substr(0, colon + 1);
}

std::optional<std::string> TemporaryFolder(const MacroContext& context) {
    return RemoveTrailingBackslash(context.system.TemporaryFolder());
}

std::optional<std::string> UserApplicationData(const MacroContext& context) {
    return GetAppDataFolder(context.system, false);
}

std::optional<std::string> AllUsersApplicationData(const MacroContext& context) {
    return GetAppDataFolder(context.system, true);
}

std::optional<std::string> Desktop(const MacroContext& context) {
    return GetShellFolder(context.system, "Desktop", false);
}

std::optional<std::string> AllUsersDesktop(const MacroContext& context) {
    return CommonOrOwn(context.system, "Common Desktop", "Desktop");
}

std::optional<std::string> StartMenu(const MacroContext& context) {
    return GetShellFolder(context.system, "Start Menu", false);
}

std::optional<std::string> StartMenuPrograms(const MacroContext& context) {
    return GetShellFolder(context.system, "Programs", false);
}

std::optional<std::string> AllUsersStartMenu(const MacroContext& context) {
    return CommonOrOwn(context.system, "Common Start Menu", "Start Menu");
}

std::optional<std::string> AllUsersStartMenuPrograms(const MacroContext& context) {
    return CommonOrOwn(context.system, "Common Programs", "Programs");
}

std::optional<std::string> DocumentsFolder(const MacroContext& context) {
    return context.system.DocumentsFolder();
}

std::optional<std::string> SystemSoundFolder(const MacroContext& context) {
    return context.system.SystemSoundFolder();
}

}  // namespace depot
