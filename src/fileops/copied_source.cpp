#include "fileops/copied_source.h"

#include "platform/text.h"
#include "store/tree.h"

namespace depot {
namespace {

Result RemoveItem(Store& store, const CopiedItem& item) {
    if (item.isFolder) return store.Remove(item.path, ItemKind::kFolder);
    if (item.contents) return store.RemoveUnchanged(item.path, *item.contents);
    return Error{Reason::kChanged, CodeKind::kDirectory, kContentsChanged};
}

bool HoldsCopiedFile(Store& store, const CopiedItem& item) {
    FileBuffer present;
    return store.ReadFile(item.path, SourceFate::kStays, present) &&
           item.contents == DigestOf(present.bytes.get(), present.length);
}

bool HoldsCopiedFolder(Store& store, const CopiedItem& item, std::size_t children) {
    std::vector<TreeItem> present;
    LeftOut left;
    return ListChildren(store, {{}, item.path, true}, 0, present, left) && left.IsNothing() &&
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
    Leftovers left;
    // A folder that holds what stayed stays for that reason alone, and needs no request.
    std::vector<bool> isHeld(copied.items.size());
    bool goesOn = true;
    for (std::size_t index = copied.items.size(); index-- > 0;) {
        const CopiedItem& item = copied.items[index];
        if (goesOn && !isHeld[index]) {
            Result removed = RemoveItem(store, item);
            if (removed || removed.Is(Reason::kMissing)) continue;
            left.changed |= removed.Is(Reason::kChanged) || removed.Is(Reason::kNotEmpty);
            // Each further request would fail, perhaps only after a long wait.
            goesOn = !removed.Is(Reason::kUnreachable);
            if (left.why) left.why = std::move(removed);
        }
        ++(item.isFolder ? left.folders : left.files);
        isHeld[item.parent] = true;
    }
    return left;
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
