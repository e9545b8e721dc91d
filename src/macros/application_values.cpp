#include "macros/macro_values.h"

#include "platform/paths.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr char kEnvironmentKey[] =
    "SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";

std::string FolderSlot(const MacroContext& context, Slot slot) {
    return RemoveTrailingBackslash(context.system.SlotText(slot));
}

// Returns the language code after a dot, with `end` after it; empty without a language code.
std::string LanguageWithDot(const MacroContext& context, const char* end) {
    const std::string code = context.system.SlotText(Slot::kLanguageCode);
    return code.empty() ? code : Concatenate({".", code, end});
}

}  // namespace

std::optional<std::string> LanguageExtension(const MacroContext& context) {
    return LanguageWithDot(context, "");
}

std::optional<std::string> DottedLanguageCode(const MacroContext& context) {
    return LanguageWithDot(context, ".");
}

std::optional<std::string> LanguageCodeSlot(const MacroContext& context) {
    return context.system.SlotText(Slot::kLanguageCode);
}

std::optional<std::string> ApplicationFolder(const MacroContext& context) {
    return FolderSlot(context, Slot::kApplicationFolder);
}

std::optional<std::string> ApplicationFolderX86(const MacroContext& context) {
    return FolderSlot(context, Slot::kApplicationFolderX86);
}

std::optional<std::string> ApplicationShortFolder(const MacroContext& context) {
    return context.system.ShortPath(FolderSlot(context, Slot::kApplicationFolder)).value_or("");
}

std::optional<std::string> Organization(const MacroContext& context) {
    return context.system.SlotText(Slot::kOrganization);
}

std::optional<std::string> UserFolder(const MacroContext& context) {
    return FolderSlot(context, Slot::kUserFolder);
}

std::optional<std::string> UserFolderParent(const MacroContext& context) {
    return ParentFolder(FolderSlot(context, Slot::kUserFolder));
}

std::optional<std::string> ProfileFolder(const MacroContext& context) {
    return FolderSlot(context, Slot::kProfileFolder);
}

std::optional<std::string> TransferUserName(const MacroContext& context) {
    const std::string name = context.system.SlotText(Slot::kTransferUserName);
    return name.empty() ? std::nullopt : std::optional(name);
}

std::optional<std::string> LeftStanding(const MacroContext& /*context*/) {
    return std::nullopt;
}

std::optional<std::string> SubfolderX86(const MacroContext& /*context*/) {
    return "\\X86";
}

std::optional<std::string> ProcessorName(const MacroContext& /*context*/) {
    return "x64";
}

void MoveProgramFilesToX86(const MacroContext& context, std::string& text) {
    const RegistryText architecture =
        context.system.ReadRegistry(Hive::kLocalMachine, kEnvironmentKey, "PROCESSOR_ARCHITECTURE");
    if (architecture.text != "x86") ReplaceEvery(text, "Program Files", "Program Files (x86)");
}

}  // namespace depot
