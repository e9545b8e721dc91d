#include "depotctl/transfer.h"

#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/progress.h"
#include "depotctl/utf8_text.h"
#include "fileops/copy.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "store/tree.h"

namespace depot::ctl {
namespace {

// The work of one transfer.
class Work {
public:
    Work(const Program& program, const Place& from, const Place& to, const TransferRules& rules)
        : from_(from),
          to_(to),
          rules_(rules),
          source_(from, "read"),
          target_(to, "write"),
          progress_(program.errors) {}

    std::uint32_t File() {
        Take(Copy(Request({})));
        return 1;
    }

    std::uint32_t Tree() {
        Take(CopyWhole(Request(progress_.Watcher())));
        return progress_.FilesDone();
    }

    // Removes what was copied, as far as it still is what was copied.
    void RemoveSource() {
        if (source_.store.IsLocal()) AllowRemoval();
        const Leftovers left = RemoveCopied(source_.store, copied_);
        if (!left.why) RefuseWith(LeftoversText(left));
    }

private:
    CopyRequest Request(TransferWatcher watcher) {
        return {{&source_.store, source_.path},
                {&target_.store, target_.path},
                rules_.existing,
                rules_.fate,
                std::move(watcher),
                // Only a removal asks for it: it reads each local copy once more.
                rules_.fate == SourceFate::kGoes ? &copied_ : nullptr};
    }

    // Ends the command unless everything was copied.
    void Take(const CopyOutcome& outcome) const {
        if (outcome.result) return;
        progress_.RefuseWhenStopped("files; what was transferred by then stays");
        const Error& why = outcome.result.Why();
        if (why.reason == Reason::kIncomplete || why.reason == Reason::kSharedName) {
            RefuseWith(why.text);
        }
        if (why.reason == Reason::kExists && target_.store.IsLocal()) RefuseExisting();
        if (why.reason == Reason::kInvalid) Refuse(from_.Shown() + " cannot go into itself");
        const bool writing = outcome.stage == CopyStage::kTarget;
        Error shown = why;
        // The text names the file of the tree as well.
        if (why.kind == CodeKind::kSystem && !why.text.empty()) shown.code = 0;
        Fail(writing ? "write" : "read", writing ? to_ : from_, shown);
    }

    [[noreturn]] void RefuseWith(const std::string& reason) const {
        Refuse(from_.Shown() + ": " + Utf8FromAnsi(reason));
    }

    // Names the file of a tree that is there already.
    void RefuseExisting() const {
        depot::Tree tree;
        const Result listed = ListTree(source_.store, source_.path, tree);
        if (!listed) Fail("read", from_, listed.Why());
        std::vector<std::string> paths = {target_.path};
        for (std::size_t index = 1; index < tree.items.size(); ++index) {
            const TreeItem& item = tree.items[index];
            paths.push_back(target_.store.ChildPath(paths[item.parent], item.name, item.isFolder));
            if (item.isFolder || !PathExists(paths.back())) continue;
            Refuse("\"" + Utf8FromAnsi(paths.back()) + "\" is there already; --force replaces it");
        }
    }

    // Read-only files are moved as well: the copies are read-only, too.
    void AllowRemoval() const {
        for (const CopiedItem& item : copied_.items) {
            const DWORD attributes = GetFileAttributesA(item.path.c_str());
            if (attributes == INVALID_FILE_ATTRIBUTES) continue;
            SetFileAttributesA(item.path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
        }
    }

    const Place& from_;
    const Place& to_;
    const TransferRules rules_;
    const OpenedPlace source_;
    const OpenedPlace target_;
    CopiedSource copied_;
    Progress progress_;
};

bool NamesFolder(const std::string& utf8Path) {
    return EndsInAscii(utf8Path, '\\') || EndsInAscii(utf8Path, '/') || EndsInAscii(utf8Path, '>');
}

std::string SourceName(const Place& from) {
    if (IsRoot(from)) Refuse(from.Shown() + " has no name of its own; name the target in full");
    return NamePart(from.path);
}

bool IsSameOrInside(const Place& place, const Place& folder) {
    if (place.depot != folder.depot) return false;
    return StartsWithNoCase(EnsureTrailingBackslash(place.path),
                            EnsureTrailingBackslash(folder.path));
}

}  // namespace

std::uint32_t Transfer(const Program& program, const Place& from, const Place& to,
                       const TransferRules& rules) {
    RequireApart(from, to);
    RequireFittingName(to, rules.kind);
    Work work(program, from, to, rules);
    const std::uint32_t files = rules.kind == ItemKind::kFolder ? work.Tree() : work.File();
    if (rules.fate == SourceFate::kGoes) work.RemoveSource();
    return files;
}

void RequireApart(const Place& from, const Place& to) {
    if (IsSameOrInside(to, from)) Refuse(from.Shown() + " cannot go into itself");
}

void MakeFolder(const Place& place, FoldersAbove above) {
    RequireFittingName(place, ItemKind::kFolder);
    const OpenedPlace at(place, "make");
    const Result made = at.store.MakeFolder(at.path, above);
    if (!made) Fail("make", place, made.Why());
}

void RequireFittingName(const Place& place, ItemKind kind) {
    if (!place.Stored().store->NamesAlike() || IsRoot(place)) return;
    if (kind == ItemKind::kFile && !HasDot(place)) {
        Refuse(place.Shown() + ": in this directory a name without a dot is a folder's");
    }
    if (kind == ItemKind::kFolder && HasDot(place)) {
        Refuse(place.Shown() + ": in this directory a name with a dot is a file's");
    }
}

Target TargetOf(Places& places, const Place& from, const std::string& to) {
    const Place named = places.Resolve(to);
    const ItemKind there = places.KindOf(named);
    if (there == ItemKind::kFolder) {
        const Place inside = Child(named, SourceName(from));
        return {inside, places.KindOf(inside)};
    }
    if (NamesFolder(to)) Refuse("the folder " + named.Shown() + " is not there");
    const Place parent = FolderOf(named);
    if (places.KindOf(parent) != ItemKind::kFolder) {
        Refuse("the folder " + parent.Shown() + " is not there");
    }
    return {named, there};
}

std::vector<Target> TargetsOf(Places& places, const Selection& from, const std::string& to) {
    if (!from.isPattern) return {TargetOf(places, from.items.front().place, to)};
    const Place folder = places.Resolve(to);
    if (places.KindOf(folder) != ItemKind::kFolder) {
        Refuse("the folder " + folder.Shown() + " is not there");
    }
    std::vector<Target> targets;
    for (const Selected& selected : from.items) {
        const Place inside = Child(folder, NamePart(selected.place.path));
        targets.push_back({inside, places.KindOf(inside)});
    }
    return targets;
}

void RequireFree(const Target& to, ItemKind kind, bool force) {
    if (to.there == ItemKind::kMissing) return;
    if (to.there != kind) {
        Refuse(to.place.Shown() + " is there already, as a " +
               (to.there == ItemKind::kFolder ? "folder" : "file"));
    }
    if (kind == ItemKind::kFile && !force) {
        Refuse(to.place.Shown() + " is there already; --force replaces it");
    }
}

}  // namespace depot::ctl
