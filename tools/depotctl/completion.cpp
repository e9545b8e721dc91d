#include "completion.h"

#include <set>

#include "ascii.h"
#include "utf8_text.h"

namespace depot::ctl {
namespace {

constexpr char kBegin[] =
    "# Completes commands and options of depotctl. In the profile of PowerShell:\n"
    "#   depotctl completion powershell | Out-String | Invoke-Expression\n"
    "Register-ArgumentCompleter -Native -CommandName depotctl, depotctl.exe -ScriptBlock {\n"
    "    param($wordToComplete, $commandAst, $cursorPosition)\n"
    "    $commands = @{\n";

constexpr char kEnd[] =
    "    }\n"
    "    $path = ''\n"
    "    foreach ($element in $commandAst.CommandElements | Select-Object -Skip 1) {\n"
    "        if ($element.Extent.EndOffset -ge $cursorPosition) { break }\n"
    "        $longer = \"$path $element\".Trim()\n"
    "        if ($commands.ContainsKey($longer)) { $path = $longer }\n"
    "    }\n"
    "    $words = $commands[$path]\n"
    "    $words.Keys | Where-Object { $_ -like \"$wordToComplete*\" } | ForEach-Object {\n"
    "        [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', "
    "$words[$_])\n"
    "    }\n"
    "}\n";

// A text in which nothing is expanded. PowerShell takes some characters above ASCII for quotes,
// too; the texts of the help have none.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : OneLine(text)) quoted += c == '\'' ? std::string("''") : std::string(1, c);
    return quoted + "'";
}

// Keys of the script's tables have no letter case.
std::string Key(std::string word) {
    for (char& c : word) c = LowerAscii(c);
    return word;
}

std::string Table(const CompletedCommand& command) {
    std::string text = "        " + Quoted(command.path) + " = [ordered]@{\n";
    std::set<std::string> known;
    for (const CompletedWord& word : command.words) {
        if (!known.insert(Key(word.word)).second) continue;
        // A tooltip must not be empty.
        const std::string& help = word.help.empty() ? word.word : word.help;
        text += "            " + Quoted(word.word) + " = " + Quoted(help) + "\n";
    }
    return text + "        }\n";
}

}  // namespace

std::string PowerShellCompletion(const std::vector<CompletedCommand>& commands) {
    std::string script = kBegin;
    for (const CompletedCommand& command : commands) script += Table(command);
    return script + kEnd;
}

}  // namespace depot::ctl
