#include "macros/shell_folders.h"

#include "platform/paths.h"

namespace depot {
namespace {

constexpr char kShellFoldersKey[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

std::optional<std::string> ReadFolder(MacroSystem& system, Hive hive, const std::string& name) {
    return system.ReadRegistry(hive, kShellFoldersKey, name).text;
}

// Returns the folder beside the common start menu; empty when that menu is not recorded.
std::string FolderBesideStartMenu(MacroSystem& system) {
    const auto menu = ReadFolder(system, Hive::kLocalMachine, "Common Start Menu");
    const std::string above = FolderPrefix(menu.value_or(""));
    // Without a folder above the menu's this would be a folder in the current directory.
    return above.empty() ? std::string() : above + "Application Data";
}

}  // namespace

std::string GetShellFolder(MacroSystem& system, const std::string& name, bool allUsers) {
    const bool common = allUsers && system.IsNtFamily();
    return ReadFolder(system, common ? Hive::kLocalMachine : Hive::kCurrentUser, name).value_or("");
}

std::string GetAppDataFolder(MacroSystem& system, bool allUsers) {
    const bool common = allUsers && system.IsNtFamily();
    const auto recorded = common ? ReadFolder(system, Hive::kLocalMachine, "Common AppData")
                                 : ReadFolder(system, Hive::kCurrentUser, "AppData");
    std::string folder = recorded.value_or("");
    if (common && folder.empty()) {
        folder = FolderBesideStartMenu(system);
        if (!folder.empty() && system.CreateFolder(folder)) return folder;
    }
    return recorded ? folder : system.WindowsFolder().substr(0, 2);
}

}  // namespace depot
