#include "config/profile_merge.h"

#include <set>

#include "fuzz/fuzz_code_page.h"
#include "platform/text.h"
#include "support/profile_values.h"

using namespace depot;

namespace {

using test::Require;
using Values = std::map<std::uint32_t, std::string>;

const std::string* Find(const Values& values, std::uint32_t id) {
    const auto found = values.find(id);
    return found == values.end() ? nullptr : &found->second;
}
bool AreSame(const std::string* left, const std::string* right) {
    return left == nullptr || right == nullptr ? left == right : *left == *right;
}

bool HasRepeatedNames(const std::string& text) {
    std::set<std::string> seen;
    NameTable names;
    const auto lines = ReadProfileLines(text, LetterCase::kOfCodePage, names);
    // One that cannot be taken apart is merged only with itself.
    if (!lines) return true;
    for (const ProfileLine& line : *lines) {
        if (line.kind != LineKind::kHeader && line.kind != LineKind::kValue) continue;
        const std::string place =
            line.kind == LineKind::kHeader ? std::string("[") : std::to_string(line.section) + "=";
        if (!seen.insert(place + ToLower(line.name)).second) return true;
    }
    return false;
}

// What one side alone has changed is in the result.
void RequireChangesOf(const Values& side, const Values& base, const Values& other,
                      const Values& result) {
    for (const auto& [id, value] : side) {
        const std::string* const before = Find(base, id);
        if (AreSame(before, &value) || !AreSame(before, Find(other, id))) continue;
        Require(AreSame(Find(result, id), &value));
    }
}

}  // namespace

// Three profiles with a line of "~" between them.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    test::FuzzInput input(data, size);
    const test::CodePageScope codePage(test::ChosenCodePage(input));
    std::string texts[3];
    for (std::string& text : texts) {
        for (std::string line = input.Line(); line != "~"; line = input.Line()) {
            text += line + "\n";
            if (input.Rest().empty()) break;
        }
    }
    const auto& [base, theirs, ours] = texts;

    const auto itself = MergeProfiles({base, theirs, theirs});
    Require(itself && itself->bytes == theirs && itself->conflicts.empty());
    const auto mine = MergeProfiles({base, base, ours});
    Require(mine && mine->bytes == ours && mine->conflicts.empty());

    const auto merged = MergeProfiles({base, theirs, ours});
    const auto swapped = MergeProfiles({base, ours, theirs});
    Require(merged.has_value() == swapped.has_value());
    if (!merged || theirs.starts_with("\xFF\xFE") || theirs.starts_with("\xEF\xBB\xBF")) return 0;

    NameTable names;
    const Values was = test::ValuesById(base, names);
    const Values their = test::ValuesById(theirs, names);
    const Values our = test::ValuesById(ours, names);
    const Values result = test::ValuesById(merged->bytes, names);
    // One that stands several times in a profile changes its place when another one is deleted.
    for (const std::string& text : texts) {
        if (HasRepeatedNames(text)) return 0;
    }
    RequireChangesOf(our, was, their, result);
    RequireChangesOf(their, was, our, result);
    if (merged->conflicts.empty() && swapped->conflicts.empty()) {
        Require(test::ValuesById(swapped->bytes, names) == result);
    }
    return 0;
}
