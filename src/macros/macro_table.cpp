#include "macros/macro_table.h"

#include "macros/macro_values.h"
#include "platform/code_page.h"

namespace depot {
namespace {

// The order is part of the behaviour: values are expanded by later rows only.
constexpr MacroStep kSteps[] = {
    {"$LANGUAGE_EXTENSION$", LanguageExtension},
    {"$DOT_LANGUAGECODE_DOT$", DottedLanguageCode},
    {"$LANGUAGE_CODE$", LanguageCodeSlot},
    {"$PROGRAMFILES$", ProgramFilesFolder},
    {"$DEPLOYRUNPATH$", DeploymentPath},
    {"$RUNDLL32PATH$", RunDllPath},
    {"$FATUSERDIR$", ProductUserFolder},
    {"$FATHOMEDIR$", ProductHomeFolder},
    {"$FATORTHINHOMEDIR$", ProductOrApplicationFolder},
    {"$USERNAME$", LogonName},
    {"$APPDIRX86$", ApplicationFolderX86},
    {"$APPDIR$", ApplicationFolder},
    {"$X86SUBDIR$", SubfolderX86},
    {"$APPDIR_SHORTNAME$", ApplicationShortFolder},
    // Kept: this macro is known but never replaced.
    {"$WHARFHOMEDIR$", LeftStanding},
    {"$SYSDIR$", SystemFolder},
    {"$WINDRIVE$", WindowsDrive},
    {"$TEMPDIR$", TemporaryFolder},
    {"$ORGANIZATION$", Organization},
    {"$USERDIR$", UserFolder},
    {"$USERDIR_PARENT$", UserFolderParent},
    {"$USERDIRPARENT$", UserFolderParent},
    {"$PROFILEDIR$", ProfileFolder},
    {"$USERWINAPPDATA$", UserApplicationData},
    {"$ALLUSERWINAPPDATA$", AllUsersApplicationData},
    {"$DESKTOP$", Desktop},
    {"$ALLUSER-DESKTOP$", AllUsersDesktop},
    {"$STARTMENU$", StartMenu},
    {"$STARTMENU-PROGRAMS$", StartMenuPrograms},
    {"$ALLUSER-STARTMENU$", AllUsersStartMenu},
    {"$ALLUSER-STARTMENU-PROGRAMS$", AllUsersStartMenuPrograms},
    {"$MYDOCUMENTS$", DocumentsFolder},
    // Kept: a second step for a macro that has had its step. It finds what an earlier value brought
    // in, above all a 32-bit application folder that holds the macro itself.
    {"$APPDIRX86$", ApplicationFolder, MoveProgramFilesToX86},
    {"$FTPUSERNAME$", TransferUserName},
    {"$WINDOWSMEDIADIR$", SystemSoundFolder},
    {"$X64$", ProcessorName},
};

}  // namespace

std::span<const MacroStep> MacroTable() {
    return kSteps;
}

void ExpandMacros(const MacroContext& context, std::string& text) {
    if (text.find('%') != std::string::npos) text = context.system.ExpandEnvironment(text);
    // Most paths hold none; every macro's name begins with this.
    if (FindCharacter(text, '$') == std::string::npos) return;
    for (const MacroStep& step : kSteps) RunStep(step, context, text);
}

}  // namespace depot
