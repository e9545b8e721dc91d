#include "depotctl/location_checks.h"

#include <algorithm>
#include <sstream>

#include "depotctl/ascii.h"
#include "depotctl/utf8_text.h"
#include "macros/macro_table.h"

namespace depot::ctl {
namespace {

constexpr char kSeparator = '\\';

bool StartsWithDrive(const std::string& path) {
    return path.size() >= 2 && IsLetter(path[0]) && path[1] == ':';
}

bool IsUnc(const std::string& path) {
    return path.starts_with("\\\\");
}

// Environment variables may have brackets in their names, macros have none.
bool BelongsToName(char c, char mark) {
    return IsLetter(c) || IsDigit(c) || c == '_' || c == '-' ||
           (mark == '%' && (c == '(' || c == ')'));
}

// Everything between `mark`s that could be a name, marks and all.
std::vector<std::string> MarkedNames(const std::string& text, char mark) {
    std::vector<std::string> names;
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
        std::size_t end = at + 1;
        while (end < text.size() && BelongsToName(text[end], mark)) ++end;
        const bool isName = end > at + 1 && end < text.size() && text[end] == mark;
        if (isName) names.push_back(text.substr(at, end + 1 - at));
        at = isName ? end + 1 : at + 1;
    }
    return names;
}

Finding StandingMacro(const std::string& subject, const std::string& name) {
    for (const MacroStep& step : MacroTable()) {
        const std::string macro(step.macro);
        if (macro == name) {
            return Wrong(subject, name + " has no value on this machine and stays as it stands",
                         "install what gives it a value, or use another macro");
        }
        if (SameName(macro, name)) {
            return Wrong(subject, name + " is not expanded: letter case counts", "write " + macro);
        }
    }
    return Wrong(subject, "there is no macro " + name + "; it stays as it stands",
                 "docs/administration.md lists the macros");
}

bool HasOuterBlank(const std::string& step) {
    return !step.empty() && step != "." && step != ".." &&
           (step.back() == ' ' || step.back() == '.' || step.front() == ' ');
}

// Checks what follows the drive or the share.
void CheckSteps(const std::string& subject, const std::string& path, Findings& findings) {
    const auto add = [&](const char* text, const char* advice) {
        findings.push_back(Wrong(subject, text, advice));
    };
    const std::string rest = path.substr(2);
    const auto areSeparators = [](char a, char b) { return a == kSeparator && b == kSeparator; };
    if (std::adjacent_find(rest.begin(), rest.end(), areSeparators) != rest.end()) {
        add("it has two backslashes in a row", "write one (they are doubled in .reg files only)");
    }
    if (FindAscii(path, '/') != std::string::npos) {
        add("it has slashes, by which files are not found to lie in this depot",
            "write backslashes");
    }
    if (FindAnyAscii(rest, "<>:\"|?*") != std::string::npos) {
        add("it has characters that no folder's name can have", "correct it");
    }
    bool blank = false;
    for (std::size_t at = 0; at < rest.size();) {
        const std::size_t end = std::min(FindAscii(rest, kSeparator, at), rest.size());
        blank = blank || HasOuterBlank(rest.substr(at, end - at));
        at = end + 1;
    }
    if (blank) {
        add("one of its folders begins with a blank or ends with a blank or a dot", "correct it");
    }
}

// Checks where the path begins; false when it is no path that the rest could be checked of.
bool CheckBeginning(const std::string& subject, const std::string& raw, const std::string& path,
                    Findings& findings) {
    const auto fail = [&](const std::string& text, const char* advice) {
        findings.push_back(Wrong(subject, text, advice));
        return false;
    };
    if (path.empty()) {
        return fail(raw.empty() ? "it is empty" : "it stands for nothing on this machine",
                    "write a full path, such as $USERDIR$\\Profiles");
    }
    if (path.find("://") != std::string::npos) {
        return fail("it is an address, not a folder",
                    "write a path, or set Type to 1 for a directory");
    }
    if (IsUnc(path)) {
        const std::size_t share = FindAscii(path, kSeparator, 2);
        if (share == 2) {
            return fail("it begins with more than two backslashes", "write \\\\server\\share");
        }
        if (share == std::string::npos || share + 1 == path.size()) {
            return fail("it names a server without a share", "write \\\\server\\share\\folder");
        }
        return true;
    }
    if (StartsWithDrive(path)) {
        if (FindAscii(path, kSeparator, 2) != 2) {
            return path.size() > 2 && path[2] == '/'
                       ? true
                       : fail("it depends on the current folder of the drive",
                              "write a backslash behind the colon");
        }
        if (path.size() == 3) {
            findings.push_back(
                Wrong(subject, "it is a whole drive", "write a folder on that drive"));
        }
        return true;
    }
    if (path.starts_with(kSeparator) && !raw.starts_with(kSeparator)) {
        return fail("it begins with a macro that stands for nothing on this machine",
                    "give it a value, or use another macro");
    }
    if (LooksLikeBase(path)) {
        return fail("it is the name of an entry in a directory, but the location is a folder",
                    "set Type to 1, or write a folder's path");
    }
    return fail("it is not a full path and depends on the current folder",
                "begin it with a drive, \\\\server\\share or a macro");
}

// The parts of a distinguished name; commas in quotes separate nothing.
std::vector<std::string> Components(const std::string& name) {
    std::vector<std::string> parts(1);
    bool quoted = false;
    for (const char c : name) {
        if (c == '"') quoted = !quoted;
        if (c == ',' && !quoted) {
            parts.emplace_back();
        } else {
            parts.back().push_back(c);
        }
    }
    return parts;
}

std::string Trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

bool IsAttribute(const std::string& name) {
    return !name.empty() && HasSchemaCharacters(name);
}

bool IsComponent(const std::string& part) {
    const std::size_t equals = part.find('=');
    return equals != std::string::npos && IsAttribute(Trimmed(part.substr(0, equals))) &&
           !Trimmed(part.substr(equals + 1)).empty();
}

bool HasEscape(const std::string& base) {
    for (std::size_t at = FindAscii(base, kSeparator); at != std::string::npos;
         at = FindAscii(base, kSeparator, at + 1)) {
        const std::string next = base.substr(at + 1, 2);
        if (next.empty()) return false;
        if (std::string(",+\"<>;=#").find(next[0]) != std::string::npos) return true;
        if (next.size() == 2 && IsHexDigit(next[0]) && IsHexDigit(next[1]) &&
            base.find(',', at) != std::string::npos) {
            return true;
        }
    }
    return false;
}

void CheckOneHost(const std::string& subject, const std::string& host, Findings& findings) {
    const auto add = [&](const std::string& text, const char* advice) {
        findings.push_back(Wrong(subject, "\"" + host + "\" " + text, advice));
    };
    if (host.find("://") != std::string::npos) {
        return add("is an address",
                   "write the server's name alone; Port and Security say the rest");
    }
    const std::size_t colon = host.find(':');
    const bool hasPort =
        colon != std::string::npos && host.find(':', colon + 1) == std::string::npos;
    const std::string name = host.substr(0, hasPort ? colon : host.size());
    if (hasPort) {
        const std::string port = host.substr(colon + 1);
        if (!IsShortNumber(port) || std::stoi(port) == 0 || std::stoi(port) > 65535) {
            add("has no port behind the colon", "write a number from 1 to 65535, or set Port");
        }
    }
    const bool valid = !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return IsLetter(c) || IsDigit(c) || std::string("-._:[]%").find(c) != std::string::npos ||
               static_cast<unsigned char>(c) >= 0x80;
    });
    if (!valid) add("is no server's name", "write names separated by blanks");
}

}  // namespace

Findings CheckHost(const std::string& subject, const std::string& host) {
    Findings findings;
    std::istringstream list(host);
    bool any = false;
    for (std::string one; list >> one; any = true) CheckOneHost(subject, one, findings);
    if (!any) findings.push_back(Wrong(subject, "no server is named", "write the server's name"));
    return findings;
}

Findings CheckBase(const std::string& subject, const std::string& base) {
    Findings findings;
    const auto add = [&](const char* text, const char* advice) {
        findings.push_back(Wrong(subject, text, advice));
        return findings;
    };
    if (base.empty()) return add("it is empty", "write the base's name, such as cn=Profiles,dc=x");
    if (base.find("://") != std::string::npos) {
        return add("it is an address", "write the base's name alone; Host names the server");
    }
    if (LooksLikeFolder(base)) {
        return add("it is a folder's path, but the location is a directory",
                   "set Type to 0, or write the name of an entry");
    }
    if (HasEscape(base)) {
        return add("a backslash separates folders here and cannot escape a character",
                   "choose a base without such characters, or put the value in quotes");
    }
    const std::vector<std::string> parts = Components(base.substr(0, FindAscii(base, kSeparator)));
    if (!std::all_of(parts.begin(), parts.end(), IsComponent)) {
        return add("it is no valid name of an entry",
                   "write attribute=value parts with commas between, such as cn=Profiles,dc=x");
    }
    return findings;
}

Findings CheckFolder(const std::string& subject, const FolderPath& path) {
    constexpr std::size_t kLongestPath = 259;
    constexpr std::size_t kRoomForFiles = 60;
    Findings findings = CheckMacros(subject, path.expanded);
    if (!findings.empty()) return findings;
    if (!CheckBeginning(subject, path.raw, path.expanded, findings)) return findings;
    CheckSteps(subject, path.expanded, findings);
    const std::string length = std::to_string(path.bytes) + " bytes";
    if (path.bytes > kLongestPath) {
        findings.push_back(Wrong(subject, "it has " + length + "; a path has at most 259",
                                 "choose a shorter one"));
    } else if (path.bytes > kLongestPath - kRoomForFiles) {
        findings.push_back(Remark(subject,
                                  "it has " + length +
                                      " of the 259 of a path, which leaves little "
                                      "room for files",
                                  "choose a shorter one"));
    }
    return findings;
}

Findings CheckMacros(const std::string& subject, const std::string& expanded) {
    Findings findings;
    for (const std::string& name : MarkedNames(expanded, '$')) {
        findings.push_back(StandingMacro(subject, name));
    }
    for (const std::string& name : MarkedNames(expanded, '%')) {
        findings.push_back(Wrong(subject, "the environment variable " + name + " is not set",
                                 "set it, or use a macro"));
    }
    return findings;
}

Findings CheckMacroNames(const std::string& subject, const std::string& path) {
    const auto macros = MacroTable();
    Findings findings;
    for (const std::string& name : MarkedNames(path, '$')) {
        const bool isKnown = std::any_of(macros.begin(), macros.end(),
                                         [&](const MacroStep& step) { return step.macro == name; });
        if (!isKnown) findings.push_back(StandingMacro(subject, name));
    }
    return findings;
}

bool HasMacros(const std::string& path) {
    return !MarkedNames(path, '$').empty() || !MarkedNames(path, '%').empty();
}

bool LooksLikeBase(const std::string& text) {
    return IsComponent(Components(text.substr(0, FindAscii(text, kSeparator))).front()) &&
           !LooksLikeFolder(text);
}

bool LooksLikeFolder(const std::string& text) {
    return StartsWithDrive(text) || IsUnc(text);
}

}  // namespace depot::ctl
