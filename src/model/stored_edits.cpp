#include "model/stored_edits.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include "config/profile_merge.h"
#include "directory/comparable_dn.h"

namespace depot {
namespace {

constexpr std::size_t kMostEdits = 64;
constexpr std::size_t kMostBytes = std::size_t{4} * 1024 * 1024;

std::string_view TextOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

void StoredEdits::Note(const std::string& dn, std::span<const std::uint8_t> base,
                       std::span<const std::uint8_t> stored) noexcept try {
    std::string name = ComparableDN(dn);
    Forget(name);
    std::size_t bytes = base.size() + stored.size();
    if (bytes > kMostBytes) return;
    for (const Edit& edit : edits_) bytes += edit.base.size() + edit.stored.size();
    while (!edits_.empty() && (bytes > kMostBytes || edits_.size() >= kMostEdits)) {
        bytes -= edits_.front().base.size() + edits_.front().stored.size();
        edits_.erase(edits_.begin());
    }
    edits_.push_back(
        {std::move(name), Bytes(base.begin(), base.end()), Bytes(stored.begin(), stored.end())});
} catch (const std::bad_alloc&) {
    // An older edit of the entry would be compared with what this one left.
    edits_.clear();
}

std::optional<StoredEdits::Bytes> StoredEdits::TakeLost(const std::string& dn,
                                                        std::span<const std::uint8_t> present) {
    if (edits_.empty()) return std::nullopt;
    const std::string name = ComparableDN(dn);
    const auto edit = std::find_if(edits_.begin(), edits_.end(),
                                   [&](const Edit& each) { return each.name == name; });
    if (edit == edits_.end()) return std::nullopt;
    if (std::ranges::equal(present, edit->stored) || std::ranges::equal(present, edit->base)) {
        return std::nullopt;
    }
    const auto merge = MergeProfiles({TextOf(edit->base), TextOf(present), TextOf(edit->stored)});
    const bool isLost =
        merge && (merge->bytes != TextOf(present) || (hasReplicas_ && !merge->conflicts.empty()));
    std::optional<Bytes> lost;
    if (isLost) lost = std::move(edit->stored);
    Forget(name);
    return lost;
}

void StoredEdits::Forget(const std::string& name) {
    std::erase_if(edits_, [&](const Edit& edit) { return edit.name == name; });
}

}  // namespace depot
