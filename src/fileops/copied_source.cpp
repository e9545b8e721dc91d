#include "fileops/copied_source.h"

#include <algorithm>

#include "platform/text.h"
#include "store/tree.h"

namespace depot {
namespace {

// How many bytes a store compares at once before it removes files.
constexpr std::uint64_t kBytesAtOnce = std::uint64_t{1024} * 1024;

// The removal of what was copied, from the bottom up.
class Removals {
public:
    Removals(Store& store, const CopiedSource& copied)
        : store_(store), items_(copied.items), isHeld_(copied.items.size()) {}

    Leftovers Run() {
        for (std::size_t left = items_.size(); left > 0;) {
            std::vector<ItemToRemove> removals;
            std::vector<std::size_t> indexes;
            Choose(left, removals, indexes);
            if (!goesOn_) {
                for (const std::size_t index : indexes) Keep(index);
                continue;
            }
            store_.RemoveItems(removals);
            for (std::size_t at = 0; at < removals.size(); ++at) {
                Note(indexes[at], std::move(removals[at].result));
            }
        }
        return std::move(leftovers_);
    }

private:
    // Chooses the items before `left` that are removed together: no folder with what it holds.
    void Choose(std::size_t& left, std::vector<ItemToRemove>& removals,
                std::vector<std::size_t>& indexes) {
        std::uint64_t bytes = 0;
        std::size_t highestParent = 0;
        while (left > 0 && removals.size() < store_.Window() && bytes < kBytesAtOnce) {
            const CopiedItem& item = items_[left - 1];
            if (!removals.empty() && left - 1 <= highestParent) return;
            --left;
            // A folder that holds what stayed stays for that reason alone, and needs no request.
            if (isHeld_[left]) {
                Keep(left);
            } else if (!item.isFolder && !item.contents) {
                Note(left, Error{Reason::kChanged, CodeKind::kDirectory, kContentsChanged});
            } else {
                removals.push_back({item.path, item.isFolder ? ItemKind::kFolder : ItemKind::kFile,
                                    item.contents});
                indexes.push_back(left);
                bytes += item.length;
                highestParent = std::max(highestParent, item.parent);
            }
        }
    }

    void Note(std::size_t index, Result removed) {
        if (removed || removed.Is(Reason::kMissing)) return;
        leftovers_.changed |= removed.Is(Reason::kChanged) || removed.Is(Reason::kNotEmpty);
        // Each further request would fail, perhaps only after a long wait.
        goesOn_ = goesOn_ && !removed.Is(Reason::kUnreachable);
        if (leftovers_.why) leftovers_.why = std::move(removed);
        Keep(index);
    }

    void Keep(std::size_t index) {
        ++(items_[index].isFolder ? leftovers_.folders : leftovers_.files);
        isHeld_[items_[index].parent] = true;
    }

    Store& store_;
    const std::vector<CopiedItem>& items_;
    std::vector<bool> isHeld_;
    Leftovers leftovers_;
    bool goesOn_ = true;
};

bool HoldsCopiedFile(Store& store, const CopiedItem& item) {
    FileBuffer present;
    return store.ReadFile(item.path, SourceFate::kStays, present) &&
           item.contents == DigestOf(present.bytes.get(), present.length);
}

bool HoldsCopiedFolder(Store& store, const CopiedItem& item, std::size_t children) {
    std::vector<TreeItem> present;
    LeftOut left;
    return ListChildren(store, item.path, present, left) && left.IsNothing() &&
           present.size() == children;
}

}  // namespace

void CopiedSource::SetTree(const Tree& tree) {
    items.clear();
    items.reserve(tree.items.size());
    for (const TreeItem& item : tree.items) {
        items.push_back({item.path, item.isFolder, item.parent});
    }
}

Leftovers RemoveCopied(Store& store, const CopiedSource& copied) {
    return Removals(store, copied).Run();
}

bool IsAsCopied(Store& store, const CopiedSource& copied) {
    std::vector<std::size_t> children(copied.items.size());
    for (std::size_t index = 1; index < copied.items.size(); ++index) {
        ++children[copied.items[index].parent];
    }
    for (std::size_t index = 0; index < copied.items.size(); ++index) {
        const CopiedItem& item = copied.items[index];
        const bool same = item.isFolder ? HoldsCopiedFolder(store, item, children[index])
                                        : HoldsCopiedFile(store, item);
        if (!same) return false;
    }
    return true;
}

std::string LeftoversText(const Leftovers& left) {
    const std::string files = CountText(left.files, "file", "files");
    const std::string folders = CountText(left.folders, "folder", "folders");
    if (files.empty() && folders.empty()) return {};
    const char* const both = files.empty() || folders.empty() ? "" : " and ";
    const char* const stay = left.files + left.folders == 1 ? " stays" : " stay";
    const char* const reason = left.changed ? "changed meanwhile" : "not to be deleted";
    return Concatenate(
        {"Copied, but ", files, both, folders, stay, " in the old place: ", reason, "."});
}

Result LeftoversResult(const Leftovers& left) {
    if (left.why) return {};
    Error error = left.why.Why();
    error.text = LeftoversText(left);
    return error;
}

}  // namespace depot
