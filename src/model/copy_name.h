// Names for copies of files: "name - copy (2)" and "Copy (2) of name".
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace depot {

// The text in which a name's counter, such as "(3)", stands as "(%d)".
struct CounterTemplate {
    std::string text;  // empty when the name has no parenthesis to split at
    bool hasCounter = false;
};

// Splits a name at its opening parentheses and puts "%d" in place of the first positive number that
// a parenthesis holds. Runs of opening parentheses count as one.
CounterTemplate BuildCounterTemplate(std::string_view name);

// Returns the template with each "%d" replaced by the number and each "%%" by one percent sign; any
// other percent sign stands for itself.
std::string FormatCounter(std::string_view counterTemplate, int number);

// Returns the format with each "%s" replaced by the next of the two texts, the further ones by
// nothing, and each "%%" by one percent sign; any other percent sign stands for itself.
std::string FormatTexts(std::string_view format, std::string_view first, std::string_view second);

// The name of the copy after `name` at attempt `number` (1, 2, ...), in the style "name - copy".
// `format` takes the base name and the extension. Each attempt continues from the last one's name.
//
// Kept: a name without a '.' counts as an extension without a base.
// Relied on by: existing copies, whose names go on counting.
std::string MakeDashCopyName(std::string_view name, int number, std::string_view format);

// The same in the style "Copy of name"; `format` takes an empty text and the whole name. A counter
// that the name already has is set, to at least 2.
//
// Kept: a name that does not hold the beginning of the format gets its number in a wrong place.
// Relied on by: existing copies, whose names go on counting.
std::string MakePrefixCopyName(std::string_view name, int number, std::string_view format);

enum class CopyNameStyle { kPrefix, kDash };

// How many names are tried for a copy.
inline constexpr int kMaxCopyNames = 10000;

// Returns the first name of a copy of `name` that is not taken, each made from the one before;
// nothing when the first kMaxCopyNames of them all are.
std::optional<std::string> FindFreeCopyName(std::string name, CopyNameStyle style,
                                            std::string_view format,
                                            const std::function<bool(const std::string&)>& isTaken);

}  // namespace depot
