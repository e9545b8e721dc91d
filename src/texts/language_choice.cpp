#include "texts/language_choice.h"

#include <algorithm>
#include <charconv>

#include "config/languages.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr std::uint16_t kPrimaryLanguageMask = 0x3FF;
constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kLibraryExtension = ".nls";

std::string_view TrimBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool Mentions(std::string_view list, std::string_view name) {
    return list.find(name) != std::string_view::npos;
}

std::string_view FirstWord(std::string_view list) {
    const std::size_t first = list.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    list.remove_prefix(first);
    return list.substr(0, list.find_first_of(kBlanks));
}

std::string PreferredLanguage(const LanguageSettings& settings, std::uint16_t userLanguageId) {
    return UsesConfiguredLanguage(settings.searchMethod)
               ? settings.defaultLanguage.value_or(std::string())
               : std::string(LanguageNameOf(userLanguageId));
}

}  // namespace

bool UsesConfiguredLanguage(const std::optional<std::string>& searchMethod) {
    if (!searchMethod) return false;
    std::string_view digits = TrimBlanks(*searchMethod);
    if (digits.starts_with('+')) digits.remove_prefix(1);
    unsigned method = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, method);
    return error == std::errc() && stop == end && method == 1;
}

std::string_view LanguageNameOf(std::uint16_t languageId) {
    const auto primary = static_cast<std::uint16_t>(languageId & kPrimaryLanguageMask);
    const auto* const row =
        std::find_if(std::begin(kLanguages), std::end(kLanguages),
                     [primary](const Language& r) { return r.primaryLanguage == primary; });
    return row == std::end(kLanguages) ? "NOLANGUAGE" : row->code;
}

std::optional<std::string> ChooseLanguageName(const LanguageSettings& settings,
                                              std::uint16_t userLanguageId) {
    const std::string available = settings.availableLanguages.value_or(std::string());
    std::string preferred = PreferredLanguage(settings, userLanguageId);
    if (!preferred.empty() && Mentions(available, preferred)) return preferred;
    const std::optional<std::string>& fallback = settings.globalDefaultLanguage;
    // Kept: see the declaration; an empty fallback is not asked for its length.
    if (fallback && Mentions(available, *fallback)) return fallback;
    const std::string_view first = FirstWord(available);
    return first.empty() ? std::nullopt : std::optional<std::string>(first);
}

std::uint32_t ChooseDottedLanguage(const LanguageSettings& settings, std::uint16_t userLanguageId,
                                   std::span<char> buffer) {
    if (buffer.empty()) return kNoLanguage;
    buffer[0] = '\0';
    std::optional<std::string> name = ChooseLanguageName(settings, userLanguageId);
    if (!name) return kNoLanguage;
    if (!name->starts_with('.')) name->insert(0, 1, '.');
    const std::size_t length = name->copy(buffer.data(), buffer.size() - 1);
    buffer[length] = '\0';
    return kLanguageFound;
}

std::optional<std::string> LanguageLibraryPath(std::string_view lowerCasePath,
                                               std::string_view dottedLanguage) {
    lowerCasePath = CutToBytes(lowerCasePath, kPlainPathCharacters);
    const std::size_t extension = lowerCasePath.find(kLibraryExtension);
    if (extension == std::string_view::npos) return std::nullopt;
    std::string path(lowerCasePath.substr(0, extension));
    return path.append(dottedLanguage).append(kLibraryExtension);
}

}  // namespace depot
