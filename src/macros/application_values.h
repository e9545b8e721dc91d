// Macro values that the host application keeps in the macro cache.
#pragma once

#include <optional>
#include <string>

#include "macros/macro_engine.h"

namespace depot {

// Each is a value source of the macro table: see MacroValue.
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

}  // namespace depot
