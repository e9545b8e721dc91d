// The value sources of the macro table: see MacroValue.
#pragma once

#include <optional>
#include <string>

#include "macros/macro_engine.h"

namespace depot {

// Values that the host application keeps in the macro cache.
std::optional<std::string> LanguageExtension(const MacroContext& context);
std::optional<std::string> DottedLanguageCode(const MacroContext& context);
std::optional<std::string> LanguageCodeSlot(const MacroContext& context);
std::optional<std::string> ApplicationFolder(const MacroContext& context);
std::optional<std::string> ApplicationFolderX86(const MacroContext& context);
std::optional<std::string> ApplicationShortFolder(const MacroContext& context);
std::optional<std::string> Organization(const MacroContext& context);
std::optional<std::string> UserFolder(const MacroContext& context);
std::optional<std::string> UserFolderParent(const MacroContext& context);
std::optional<std::string> ProfileFolder(const MacroContext& context);
std::optional<std::string> TransferUserName(const MacroContext& context);
std::optional<std::string> LeftStanding(const MacroContext& context);
std::optional<std::string> SubfolderX86(const MacroContext& context);
std::optional<std::string> ProcessorName(const MacroContext& context);

// Moves every "Program Files" of the text to "Program Files (x86)", unless the machine itself is a
// 32-bit one.
void MoveProgramFilesToX86(const MacroContext& context, std::string& text);

// Values that the installed products leave in the registry.
std::optional<std::string> DeploymentPath(const MacroContext& context);
std::optional<std::string> ProductUserFolder(const MacroContext& context);
std::optional<std::string> ProductHomeFolder(const MacroContext& context);
std::optional<std::string> ProductOrApplicationFolder(const MacroContext& context);

// Values that the operating system and the user's settings give.
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
