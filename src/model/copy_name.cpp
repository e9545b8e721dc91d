#include "model/copy_name.h"

#include <algorithm>
#include <vector>

#include "platform/code_page.h"
#include "platform/text.h"

namespace depot {
namespace {

constexpr char kCounter[] = " (%d)";

std::vector<std::string_view> SplitAtParentheses(std::string_view name) {
    std::vector<std::string_view> tokens = SplitAtAny(name, "(");
    std::erase(tokens, std::string_view());
    return tokens;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Whether the leading digits of the text make a number of at least 1.
bool IsPositiveNumber(std::string_view text) {
    const auto end = std::find_if_not(text.begin(), text.end(), IsDigit);
    return std::any_of(text.begin(), end, [](char digit) { return digit != '0'; });
}

std::string_view WithoutLastCharacter(std::string_view text) {
    return text.empty() ? text : CutToBytes(text, text.size() - 1);
}

// Copies `format`, giving each two-character percent sequence to `replace`, which returns whether
// it appended something for the letter.
template <class Replace>
std::string FormatPercents(std::string_view format, const Replace& replace) {
    std::string result;
    for (std::size_t index = 0; index < format.size();) {
        const std::size_t length = CharacterLength(format, index);
        const bool sequence = length == 1 && format[index] == '%' && index + 1 < format.size();
        if (sequence && format[index + 1] == '%') {
            result.push_back('%');
            index += 2;
        } else if (sequence && replace(format[index + 1], result)) {
            index += 2;
        } else {
            result.append(format, index, length);
            index += length;
        }
    }
    return result;
}

}  // namespace

CounterTemplate BuildCounterTemplate(std::string_view name) {
    CounterTemplate result;
    const std::vector<std::string_view> tokens = SplitAtParentheses(name);
    if (tokens.size() < 2) return result;
    result.text = tokens.front();
    for (auto token = tokens.begin() + 1; token != tokens.end(); ++token) {
        const std::size_t close = FindCharacter(*token, ')');
        const bool counter = !result.hasCounter && close != std::string_view::npos && close > 0 &&
                             IsPositiveNumber(token->substr(0, close));
        result.text.append(counter ? "(%d" : "(");
        result.text.append(counter ? token->substr(close) : *token);
        result.hasCounter = result.hasCounter || counter;
    }
    return result;
}

std::string FormatCounter(std::string_view counterTemplate, int number) {
    return FormatPercents(counterTemplate, [number](char letter, std::string& result) {
        if (letter == 'd') result.append(std::to_string(number));
        return letter == 'd';
    });
}

std::string FormatTexts(std::string_view format, std::string_view first, std::string_view second) {
    int used = 0;
    return FormatPercents(format, [&](char letter, std::string& result) {
        if (letter != 's') return false;
        ++used;
        if (used <= 2) result.append(used == 1 ? first : second);
        return true;
    });
}

std::string MakeDashCopyName(std::string_view name, int number, std::string_view format) {
    const std::size_t dot = FindLastCharacter(name, '.');
    const std::string_view base = dot == std::string_view::npos ? "" : name.substr(0, dot);
    const std::string_view extension = name.substr(base.size());
    if (number < 2) return FormatTexts(format, base, extension);
    CounterTemplate counter = BuildCounterTemplate(base);
    if (counter.text.empty()) {
        return Concatenate({base, FormatCounter(kCounter, number), extension});
    }
    if (!counter.hasCounter) counter.text.append(kCounter);
    return FormatCounter(counter.text, number).append(extension);
}

std::string MakePrefixCopyName(std::string_view name, int number, std::string_view format) {
    const CounterTemplate counter = BuildCounterTemplate(name);
    if (counter.hasCounter) return FormatCounter(counter.text, std::max(number, 2));
    if (number == 1) return FormatTexts(format, "", name);
    // The blank before the first argument does not belong to the prefix.
    const std::string_view prefix =
        WithoutLastCharacter(format.substr(0, FindCharacter(format, '%')));
    // A prefix that is not found counts as one byte before the name.
    const std::size_t place = std::min(FindText(name, prefix) + prefix.size(), name.size());
    const std::string_view front = CutToBytes(name, place);
    const std::string_view rest = name.substr(front.size());
    std::string result(front);
    result.append(FormatCounter(" (%d) ", number));
    return result.append(rest.empty() ? rest : rest.substr(CharacterLength(rest, 0)));
}

std::optional<std::string> FindFreeCopyName(
    std::string name, CopyNameStyle style, std::string_view format,
    const std::function<bool(const std::string&)>& isTaken) {
    const auto makeName = style == CopyNameStyle::kDash ? MakeDashCopyName : MakePrefixCopyName;
    for (int number = 1; number <= kMaxCopyNames; ++number) {
        name = makeName(name, number, format);
        if (!isTaken(name)) return name;
    }
    return std::nullopt;
}

}  // namespace depot
