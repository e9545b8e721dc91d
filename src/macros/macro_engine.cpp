#include "macros/macro_engine.h"

#include "platform/code_page.h"

namespace depot {
namespace {

std::size_t CountOccurrences(std::string_view text, std::string_view find) {
    std::size_t count = 0;
    for (std::size_t found = FindText(text, find); found != std::string_view::npos;
         found = FindText(text, find, found + find.size())) {
        ++count;
    }
    return count;
}

}  // namespace

void ReplaceEvery(std::string& text, std::string_view find, std::string_view replacement) {
    const std::size_t count = CountOccurrences(text, find);
    const std::size_t kept = text.size() - count * find.size();
    if (count == 0 || kept + count * replacement.size() > kMaxExpandedBytes) return;
    std::string result;
    result.reserve(kept + count * replacement.size());
    std::size_t copied = 0;
    for (std::size_t found; (found = FindText(text, find, copied)) != std::string::npos;
         copied = found + find.size()) {
        result.append(text, copied, found - copied).append(replacement);
    }
    text = result.append(text, copied);
}

void RunStep(const MacroStep& step, const MacroContext& context, std::string& text) {
    if (FindText(text, step.macro) == std::string::npos) return;
    const std::optional<std::string> value = step.value(context);
    if (value) ReplaceEvery(text, step.macro, *value);
    if (step.rewrite != nullptr) step.rewrite(context, text);
}

}  // namespace depot
