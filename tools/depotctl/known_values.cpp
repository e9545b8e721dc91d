#include "depotctl/known_values.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "depotctl/definition.h"

namespace depot::ctl {
namespace {

constexpr std::uint32_t kAny = 0xFFFFFFFF;
constexpr auto kDepot = ValueScope::kDepot;
constexpr auto kLocation = ValueScope::kLocation;
constexpr auto kDirectory = ValueScope::kDirectory;

constexpr KnownValue kValues[] = {
    {"OrderIndex", kDepot, true, 0, kAny, "the depot has no place of its own in the list", ""},
    {"DefaultDepot", kDepot, true, 0, 1, "it is not the default", "it is not the default"},
    {"Contains", kDepot, true, 0, kAny, "it holds no kinds of its own", ""},
    {"Icon", kDepot, false, 0, 0, "it has no icon", ""},
    {"Path", kLocation, false, 0, 0, "there is no such location", ""},
    {"Type", kLocation, true, 0, 1, "the location is a folder", "the location is a folder"},
    {"Host", kDirectory, false, 0, 0, "no server is named", ""},
    {"Username", kDirectory, false, 0, 0, "users are asked for a name", ""},
    {"Password", kDirectory, false, 0, 0, "users are asked for a password", ""},
    {"Port", kDirectory, true, 1, 65535, "389 is taken", "no server has such a port"},
    {"Authentication", kDirectory, true, 0, 2, "1 is taken (a name and a password)",
     "it counts as 1 (a name and a password)"},
    {"Version", kDirectory, true, 2, 3, "3 is taken", "there are the versions 2 and 3 only"},
    {"ConnectTimeout", kDirectory, true, 1, 3600, "120 seconds are taken",
     "a second to an hour make sense"},
    {"Security", kDirectory, true, 0, 2, "0 is taken (nothing is secured)",
     "it counts as 1 (StartTLS)"},
    {"DetectConflicts", kDirectory, true, 0, 1, "0 is taken (the last writer wins)",
     "there are 0 and 1 only"},
    {"FileAttributeName", kDirectory, false, 0, 0, "CN is taken", ""},
    {"FileObjectClass", kDirectory, false, 0, 0, "quillonFileBinary is taken", ""},
    {"FolderAttributeName", kDirectory, false, 0, 0, "CN is taken", ""},
    {"FolderObjectClass", kDirectory, false, 0, 0, "quillonFolder is taken", ""},
    {"FileContentsAttributeName", kDirectory, false, 0, 0, "quillonFileContentsBinary is taken",
     ""},
};

constexpr std::string_view kDisplayName = "DisplayName.";

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

struct NameParts {
    std::string_view base, digits;
};

NameParts SplitDigits(std::string_view name) {
    std::size_t length = name.size();
    while (length > 0 && IsDigit(name[length - 1])) --length;
    return {name.substr(0, length), name.substr(length)};
}

const KnownValue* FindKnown(std::string_view base) {
    const auto* const found =
        std::find_if(std::begin(kValues), std::end(kValues),
                     [base](const KnownValue& value) { return SameName(value.name, base); });
    return found == std::end(kValues) ? nullptr : found;
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

}  // namespace

std::span<const KnownValue> KnownValues() {
    return kValues;
}

std::optional<ValueName> ParseValueName(std::string_view name) {
    const NameParts parts = SplitDigits(name);
    const KnownValue* const known = FindKnown(parts.base);
    if (known == nullptr || known->IsNumbered() == parts.digits.empty()) return std::nullopt;
    if (!known->IsNumbered()) return ValueName{known, 0};
    // Longer ones and those with a leading zero no location has.
    if (parts.digits.size() > 6 || parts.digits.front() == '0') return std::nullopt;
    return ValueName{known, std::stoi(std::string(parts.digits))};
}

std::optional<std::string> DisplayLanguage(std::string_view name) {
    if (!SameName(name.substr(0, kDisplayName.size()), kDisplayName)) return std::nullopt;
    return std::string(name.substr(kDisplayName.size()));
}

std::string NearestValueName(std::string_view name) {
    constexpr std::size_t kMostMistakes = 2;
    const NameParts parts = SplitDigits(name);
    if (SameName(parts.base, "DisplayName")) return "DisplayName.eng";
    const KnownValue* nearest = nullptr;
    std::size_t least = kMostMistakes + 1;
    for (const KnownValue& value : kValues) {
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
