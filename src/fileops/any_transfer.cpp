#include "fileops/any_transfer.h"

#include "fileops/copied_source.h"
#include "fileops/copy.h"
#include "fileops/open_stores.h"
#include "platform/paths.h"
#include "store/folder_store.h"

namespace depot {
namespace {

// One transfer: both places, open, and what is there.
class Transfer {
public:
    Transfer(const AnyPlace& from, const AnyPlace& to, const TransferWish& wish)
        : from_(from), to_(to), wish_(wish), source_(from.Stored()), target_(to.Stored()) {}

    // Opens both places and looks at them; fails where nothing may be done.
    Result Prepare(SourceFate fate) {
        Result ready = stores_.Hold(source_);
        if (ready) ready = stores_.Hold(target_);
        if (ready) ready = Look();
        if (!ready) return ready;
        if (kind_ == ItemKind::kMissing) return SystemError(ERROR_FILE_NOT_FOUND, from_.path);
        Result fits = target_.store->CheckTarget(target_.path);
        if (!fits) return fits;
        if (!FitsKind(to_, kind_)) return SystemError(ERROR_INVALID_NAME, to_.path);
        return CheckFree(fate);
    }

    Result Copy() { return CopyTo(SourceFate::kStays, nullptr); }

    Result Move() {
        Result renamed;
        if (Rename(renamed)) return renamed;
        CopiedSource copied;
        Result arrived = CopyTo(SourceFate::kGoes, &copied);
        if (arrived && wish_.looksBeforeRemoving) arrived = SeeTarget();
        return arrived ? LeftoversResult(RemoveCopied(*source_.store, copied)) : arrived;
    }

private:
    Result Look() {
        Result looked = source_.store->Look(source_.path, kind_);
        if (looked) looked = target_.store->Look(target_.path, there_);
        kind_ = KindBy(from_, kind_);
        there_ = KindBy(to_, there_);
        return looked;
    }

    bool IsRespelled() const {
        return source_.store == target_.store &&
               AreOneItem(*source_.store, {source_.path, target_.path});
    }

    Result CheckFree(SourceFate fate) {
        const bool moves = fate == SourceFate::kGoes;
        if (there_ == ItemKind::kMissing) return {};
        if (moves && IsRespelled()) {
            there_ = ItemKind::kMissing;
            return {};
        }
        const bool isFolder = kind_ == ItemKind::kFolder;
        const bool fits = wish_.mayExist && there_ == kind_ && !(moves && isFolder);
        return fits ? Result() : SystemError(ERROR_FILE_EXISTS, to_.path);
    }

    Result SeeTarget() const {
        ItemKind kind = ItemKind::kMissing;
        Result looked = target_.store->Look(target_.path, kind);
        if (!looked || KindBy(to_, kind) == kind_) return looked;
        return SystemError(ERROR_FILE_NOT_FOUND, to_.path);
    }

    ExistingEntries Existing() const {
        return wish_.mayExist ? ExistingEntries::kReplace : ExistingEntries::kRefuse;
    }

    // Moves within a store; false where that takes a copy.
    bool Rename(Result& renamed) {
        if (source_.store != target_.store) return false;
        const PathPair paths = {source_.path, target_.path};
        if (source_.store->IsLocal()) {
            StoreSource held;
            renamed = source_.store->Rename(paths, Existing(), held);
            return renamed || renamed.Why().code != ERROR_NOT_SAME_DEVICE;
        }
        // A directory never renames onto an entry that is there.
        if (there_ != ItemKind::kMissing) return false;
        renamed = depot::Move(*source_.store, paths, wish_.watcher);
        return true;
    }

    Result CopyTo(SourceFate fate, CopiedSource* copied) const {
        return CopyWhole({source_, target_, Existing(), fate, wish_.watcher, copied}).result;
    }

    const AnyPlace& from_;
    const AnyPlace& to_;
    const TransferWish& wish_;
    const StorePath source_, target_;
    OpenStores stores_;
    ItemKind kind_ = ItemKind::kMissing;   // of the source
    ItemKind there_ = ItemKind::kMissing;  // what is where it is to be
};

}  // namespace

Result CopyAnywhere(const AnyPlace& from, const AnyPlace& to, const TransferWish& wish) {
    Transfer transfer(from, to, wish);
    Result ready = transfer.Prepare(SourceFate::kStays);
    return ready ? transfer.Copy() : ready;
}

Result MoveAnywhere(const AnyPlace& from, const AnyPlace& to, const TransferWish& wish) {
    if (from.IsRoot()) return SystemError(ERROR_ACCESS_DENIED, from.path);
    Transfer transfer(from, to, wish);
    Result ready = transfer.Prepare(SourceFate::kGoes);
    return ready ? transfer.Move() : ready;
}

Result MakeFolderAt(const AnyPlace& place, bool mayExist) {
    const StorePath at = place.Stored();
    const StoreScope scope(*at.store);
    if (!scope) return scope.Outcome();
    ItemKind kind = ItemKind::kMissing;
    Result looked = at.store->Look(at.path, kind);
    if (!looked) return looked;
    if (kind != ItemKind::kMissing) {
        const bool isThere = mayExist && KindBy(place, kind) == ItemKind::kFolder;
        return isThere ? Result() : SystemError(ERROR_FILE_EXISTS, place.path);
    }
    Result fits = at.store->CheckTarget(at.path);
    if (!fits) return fits;
    if (!FitsKind(place, ItemKind::kFolder)) return SystemError(ERROR_INVALID_NAME, place.path);
    return at.store->MakeFolder(at.path, FoldersAbove::kAreMade);
}

Result PlaceInFolder(CDepots& depots, const AnyPlace& from, const std::string& folder,
                     AnyPlace& place) {
    const std::string name = NamePart(from.path);
    if (name.empty() || from.IsRoot()) return SystemError(ERROR_INVALID_NAME, folder);
    Result found = FindPlace(depots, folder + name, place);
    if (!found) return found;
    // What a directory calls its own must not become a device or a stream.
    const bool fits = place.Stored().store->CanHold(name);
    return fits ? Result() : SystemError(ERROR_INVALID_NAME, place.path);
}

}  // namespace depot
