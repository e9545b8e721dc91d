#include "depotctl/argument_text.h"

#include <cstddef>

namespace depot::ctl {
namespace {

bool IsBlank(wchar_t c) {
    return c == L' ' || c == L'\t';
}

// Whether the text begins as display paths and full paths of the file system do.
bool BeginsPath(std::wstring_view text) {
    if (text.starts_with(L'<')) return text.find(L">\\") < text.find(L'"');
    const bool hasDrive = text.size() > 2 && text[1] == L':' && text[2] == L'\\';
    return hasDrive || text.starts_with(L"\\\\");
}

std::size_t BackslashesBefore(std::wstring_view text, std::size_t at) {
    std::size_t count = 0;
    while (count < at && text[at - count - 1] == L'\\') ++count;
    return count;
}

}  // namespace

std::wstring WithClosedPaths(std::wstring_view commandLine) {
    std::wstring closed;
    bool inQuotes = false, inPath = false;
    for (std::size_t at = 0; at < commandLine.size(); ++at) {
        const wchar_t c = commandLine[at];
        const bool begins = at == 0 || (!inQuotes && IsBlank(commandLine[at - 1]));
        if (c == L'"') {
            const bool isEscaped = BackslashesBefore(commandLine, at) % 2 != 0;
            const bool ends = at + 1 == commandLine.size() || IsBlank(commandLine[at + 1]);
            if (!isEscaped) {
                inPath = begins && BeginsPath(commandLine.substr(at + 1));
                inQuotes = !inQuotes;
            } else if (inPath && ends) {
                closed += L'\\';
                inPath = inQuotes = false;
            }
        }
        closed += c;
    }
    return closed;
}

}  // namespace depot::ctl
