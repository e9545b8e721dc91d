#include "platform/local_name.h"

#include <algorithm>
#include <string>
#include <vector>

#include "platform/code_page.h"
#include "platform/text.h"

namespace depot {
namespace {

bool IsForbiddenInLocalName(char c) {
    constexpr std::string_view kForbidden = "\\/:*?\"<>|";
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f' ||
           kForbidden.find(c) != std::string_view::npos;
}

bool IsAllowedInLocalName(std::string_view name) {
    for (std::size_t at = 0; at < name.size();) {
        const Character character = CharacterAt(name, at);
        if (character.broken) return false;
        if (character.length == 1 && IsForbiddenInLocalName(name[at])) return false;
        at += character.length;
    }
    return true;
}

// Returns the name as the system looks devices up: before the first dot, without blanks at its end.
std::string_view DeviceStem(std::string_view name) {
    std::string_view stem = name.substr(0, FindCharacter(name, '.'));
    while (EndsInCharacter(stem, ' ')) stem.remove_suffix(1);
    return stem;
}

bool IsNumberedDevice(std::string_view stem) {
    const auto port = PrefixLengthNoCase(stem, "COM");
    const auto length = port ? port : PrefixLengthNoCase(stem, "LPT");
    if (!length) return false;
    const std::string_view number = stem.substr(*length);
    if (number.size() == 1 && number[0] >= '0' && number[0] <= '9') return true;
    const std::vector<std::string>& digits = InstalledCodePage().deviceDigits;
    return std::find(digits.begin(), digits.end(), number) != digits.end();
}

bool IsDeviceName(std::string_view name) {
    constexpr const char* kDevices[] = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$", "CLOCK$"};
    const std::string_view stem = DeviceStem(name);
    return IsNumberedDevice(stem) ||
           std::any_of(std::begin(kDevices), std::end(kDevices),
                       [&](const char* device) { return EqualsNoCase(stem, device); });
}

std::size_t CharacterCount(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size(); at += CharacterAt(text, at).length) ++count;
    return count;
}

// Whether the text ends in a tilde and digits.
bool IsNumberedStem(std::string_view stem) {
    bool isNumber = false;
    std::size_t digits = 0;
    for (std::size_t at = 0; at < stem.size(); at += CharacterAt(stem, at).length) {
        const bool isDigit = stem[at] >= '0' && stem[at] <= '9';
        isNumber = stem[at] == '~' || (isNumber && isDigit);
        digits = isNumber && isDigit ? digits + 1 : 0;
    }
    return isNumber && digits > 0;
}

bool MayBeShortName(std::string_view name) {
    constexpr std::size_t kLongestStem = 8, kLongestExtension = 3;
    const std::size_t dot = std::min(FindCharacter(name, '.'), name.size());
    const std::string_view extension = name.substr(std::min(dot + 1, name.size()));
    // What counts there are bytes of a page of the system's own, never fewer than characters.
    return IsNumberedStem(name.substr(0, dot)) &&
           CharacterCount(name.substr(0, dot)) <= kLongestStem &&
           CharacterCount(extension) <= kLongestExtension &&
           FindCharacter(extension, '.') == std::string_view::npos;
}

}  // namespace

bool IsSafeLocalName(std::string_view name) {
    if (name.empty() || EndsInCharacter(name, '.') || EndsInCharacter(name, ' ')) return false;
    return IsAllowedInLocalName(name) && !IsDeviceName(name);
}

bool IsSafeForeignName(std::string_view name) {
    return IsSafeLocalName(name) && !MayBeShortName(name);
}

}  // namespace depot
