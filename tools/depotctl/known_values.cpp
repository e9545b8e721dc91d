#include "depotctl/known_values.h"

#include <algorithm>
#include <vector>

#include "depotctl/ascii.h"
#include "depotctl/definition.h"

namespace depot::ctl {
namespace {

constexpr std::string_view kDisplayName = "DisplayName.";

struct NameParts {
    std::string_view base, digits;
};

NameParts SplitDigits(std::string_view name) {
    std::size_t length = name.size();
    while (length > 0 && IsDigit(name[length - 1])) --length;
    return {name.substr(0, length), name.substr(length)};
}

// The number of single letters that must be changed, added or left out.
std::size_t Distance(std::string_view left, std::string_view right) {
    std::vector<std::size_t> row(right.size() + 1);
    for (std::size_t j = 0; j <= right.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const bool same = SameName(left.substr(i - 1, 1), right.substr(j - 1, 1));
            const std::size_t replaced = diagonal + (same ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row.back();
}

std::string TakenText(const DepotValue& value, const std::string& number) {
    if (value.form.words.empty()) return number + " is taken";
    const ValueWord& word = value.form.words[std::stoul(number)];
    return number + " is taken (" + word.meaning + ")";
}

}  // namespace

const DepotValue* FindValue(std::string_view base) {
    const auto* const found =
        std::find_if(kDepotValues.begin(), kDepotValues.end(),
                     [base](const DepotValue& value) { return SameName(value.name, base); });
    return found == kDepotValues.end() ? nullptr : found;
}

std::string UnreadText(const DepotValue& value) {
    if (value.form.unread != nullptr) return value.form.unread;
    return TakenText(value, DefaultOf(value));
}

std::string UnreadableText(const DepotValue& value) {
    if (!value.form.unreadable) return "ignored: " + UnreadText(value);
    return "no such number: " + TakenText(value, std::to_string(*value.form.unreadable));
}

std::optional<ValueName> ParseValueName(std::string_view name) {
    const NameParts parts = SplitDigits(name);
    const DepotValue* const known = FindValue(parts.base);
    if (known == nullptr || known->IsNumbered() == parts.digits.empty()) return std::nullopt;
    if (!known->IsNumbered()) return ValueName{known, 0};
    // Longer ones and those with a leading zero no location has.
    if (parts.digits.size() > 6 || parts.digits.front() == '0') return std::nullopt;
    return ValueName{known, std::stoi(std::string(parts.digits))};
}

bool IsPassword(std::string_view name) {
    const auto known = ParseValueName(name);
    return known && known->known->name == std::string_view("Password");
}

std::optional<std::string> DisplayLanguage(std::string_view name) {
    if (!SameName(name.substr(0, kDisplayName.size()), kDisplayName)) return std::nullopt;
    return std::string(name.substr(kDisplayName.size()));
}

std::string NearestValueName(std::string_view name) {
    constexpr std::size_t kMostMistakes = 2;
    const NameParts parts = SplitDigits(name);
    if (SameName(parts.base, "DisplayName")) return "DisplayName.eng";
    const DepotValue* nearest = nullptr;
    std::size_t least = kMostMistakes + 1;
    for (const DepotValue& value : kDepotValues) {
        const std::size_t distance = Distance(parts.base, value.name);
        if (distance >= least) continue;
        least = distance;
        nearest = &value;
    }
    if (nearest == nullptr) return {};
    if (!nearest->IsNumbered()) return nearest->name;
    const std::size_t zeros = std::min(parts.digits.find_first_not_of('0'), parts.digits.size());
    const std::string_view number = parts.digits.substr(zeros);
    return nearest->name + (number.empty() ? "1" : std::string(number));
}

}  // namespace depot::ctl
