// Choosing the language of the component's texts from what the registry and the system say: pure
// rules, without a look at either.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace depot {

// The texts of the locale key; a value that is missing or too long is empty of any text.
struct LanguageSettings {
    std::optional<std::string> searchMethod;           // "Language Search Method"
    std::optional<std::string> defaultLanguage;        // "Default UI Language"
    std::optional<std::string> availableLanguages;     // "Available UI Languages"
    std::optional<std::string> globalDefaultLanguage;  // "Global Default UI Language"
};

// The outcomes of ChooseDottedLanguage, as the system numbers them.
inline constexpr std::uint32_t kLanguageFound = 0;
inline constexpr std::uint32_t kNoLanguage = 1627;

// Whether the search method asks for the configured language and not the user's own: it is
// the decimal number 1, which blanks may surround. Any other text, or none, asks for the user's.
bool UsesConfiguredLanguage(const std::optional<std::string>& searchMethod);

// Returns the name of the language that an operating-system identifier stands for, such as "deu";
// its sublanguage does not count. A language without a name of its own is "NOLANGUAGE".
std::string_view LanguageNameOf(std::uint16_t languageId);

// Returns the language name to use, in this order: the configured or the user's language, the
// machine-wide default, each when the available languages mention it; else the first available
// language. Nothing when no language is available.
//
// Kept: a language counts as available when its name stands anywhere in the list, also inside a
// longer word, and an empty machine-wide default stands in every list.
// Relied on by: installations that list their languages by longer names, such as "english".
std::optional<std::string> ChooseLanguageName(const LanguageSettings& settings,
                                              std::uint16_t userLanguageId);

// Writes the chosen name, with a dot before it unless it begins with one, as a NUL-terminated text
// that is cut to the buffer. Returns kLanguageFound, or kNoLanguage for an empty buffer or when
// there is no language; the buffer then holds an empty text.
std::uint32_t ChooseDottedLanguage(const LanguageSettings& settings, std::uint16_t userLanguageId,
                                   std::span<char> buffer);

// As much of the plain library's path as counts when a language's own library is looked for.
inline constexpr std::size_t kPlainPathCharacters = 260;

// Returns the path of a language's own library, given the path of the plain one in lower case and
// the dotted language name: the text before the first ".nls", the name and ".nls". Nothing when
// there is no ".nls" within the first kPlainPathCharacters.
std::optional<std::string> LanguageLibraryPath(std::string_view lowerCasePath,
                                               std::string_view dottedLanguage);

}  // namespace depot
