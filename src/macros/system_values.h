// Macro values that the operating system and the user's settings give.
#pragma once

#include <optional>
#include <string>

#include "macros/macro_engine.h"

namespace depot {

// Each is a value source of the macro table: see MacroValue.
std::optional<std::string> ProgramFilesFolder(const MacroContext& context);
std::optional<std::string> RunDllPath(const MacroContext& context);
std::optional<std::string> LogonName(const MacroContext& context);
std::optional<std::string> SystemFolder(const MacroContext& context);
std::optional<std::string> WindowsDrive(const MacroContext& context);
std::optional<std::string> TemporaryFolder(const MacroContext& context);
std::optional<std::string> UserApplicationData(const MacroContext& context);
std::optional<std::string> AllUsersApplicationData(const MacroContext& context);
std::optional<std::string> Desktop(const MacroContext& context);
std::optional<std::string> AllUsersDesktop(const MacroContext& context);
std::optional<std::string> StartMenu(const MacroContext& context);
std::optional<std::string> StartMenuPrograms(const MacroContext& context);
std::optional<std::string> AllUsersStartMenu(const MacroContext& context);
std::optional<std::string> AllUsersStartMenuPrograms(const MacroContext& context);
std::optional<std::string> DocumentsFolder(const MacroContext& context);
std::optional<std::string> SystemSoundFolder(const MacroContext& context);

}  // namespace depot
