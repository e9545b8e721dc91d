#include "fileops/copy.h"

#include <algorithm>

#include "directory/comparable_dn.h"
#include "directory/dn.h"
#include "fileops/anothers_place.h"
#include "fileops/read_ahead.h"
#include "fileops/shell_operation.h"
#include "platform/paths.h"
#include "platform/short_name.h"
#include "platform/temp_file.h"
#include "store/folder_store.h"
#include "store/tree.h"

namespace depot {
namespace {

Error SystemFailure(Reason reason, DWORD code) {
    return {reason, CodeKind::kSystem, code};
}

// What a copy may be to its own source, and what it may replace then.
Result RefuseItself(const CopyRequest& request, ExistingEntries& existing) {
    const bool goes = request.fate == SourceFate::kGoes;
    const ItemIdentity identity = FindOverlap(request.from, request.to, request.fate);
    // An entry that is there after all, out of this user's sight, may be the source.
    if (goes && identity == ItemIdentity::kUnseen) existing = ExistingEntries::kRefuse;
    const bool refused =
        identity == ItemIdentity::kSame || (goes && identity == ItemIdentity::kUnknown);
    return refused ? SystemFailure(Reason::kInvalid, ERROR_INVALID_PARAMETER) : Result();
}

bool IsFetch(const CopyRequest& request) {
    return !request.from.store->IsLocal() && request.to.store->IsLocal();
}

// What a directory calls its own must not take the place of a file or folder of another name. Who
// gives the copy a name of its own may mean that other one.
Result CheckTop(const CopyRequest& request, bool isFolder) {
    if (!IsFetch(request) || !IsShortNameOfAnother(request.to.path)) return {};
    const Store& store = *request.from.store;
    const std::string parent(ParentDN(request.from.path));
    const std::string alike = store.ChildPath(parent, NamePart(request.to.path), isFolder);
    return store.IsSame(request.from.path, alike) ? RefuseAnothersPlace(request.to.path) : Result();
}

CopyOutcome CopyFileContents(const CopyRequest& request, const FileBuffer& contents) {
    std::vector<PlannedItem> target = {{request.to.path, false}};
    Result written = CheckTop(request, false);
    if (written) written = request.to.store->Prepare(target, request.existing);
    if (!written) return {std::move(written), CopyStage::kTarget};
    if (request.copied) request.copied->SetFile(request.from.path, contents);
    written =
        request.to.store->WriteFile(request.to.path, contents, {request.existing, request.fate});
    // There is nothing left to stop.
    if (written && request.watcher) request.watcher({1, 1, contents.length});
    return {std::move(written), CopyStage::kTarget};
}

// A copy by the store's own means; nothing where it has none.
std::optional<CopyOutcome> CopyByItsOwnMeans(const CopyRequest& request) {
    Store& store = *request.to.store;
    if (request.from.store != &store) return std::nullopt;
    std::uint64_t bytes = 0;
    std::optional<Result> copied = store.CopyFile({request.from.path, request.to.path},
                                                  {request.existing, request.fate}, bytes);
    if (!copied) return std::nullopt;
    if (!*copied) return CopyOutcome{std::move(*copied), CopyStage::kTarget};
    if (request.watcher) request.watcher({1, 1, bytes});
    FileBuffer contents;
    // The copy shows what was copied.
    if (request.copied && store.ReadFile(request.to.path, SourceFate::kStays, contents)) {
        request.copied->SetFile(request.from.path, contents);
    }
    return CopyOutcome{};
}

// The way of a tree from one store straight into another.
class TreeCopy {
public:
    explicit TreeCopy(const CopyRequest& request) : request_(request) {}

    CopyOutcome Run(StoreSource& source) {
        Result result = Plan(source);
        if (result) result = CopyItems();
        if (result && !tree_.left.IsNothing()) result = Incomplete();
        return {std::move(result), stage_, false};
    }

private:
    Result Plan(StoreSource& source) {
        stage_ = CopyStage::kTree;
        Result listed = ListTree(*request_.from.store, request_.from.path, tree_, {&source});
        if (!listed) return listed;
        const bool isWhole = tree_.left.IsNothing();
        if (!isWhole && request_.fate == SourceFate::kGoes) return Incomplete();
        for (const TreeItem& item : tree_.items) {
            const bool isTop = targets_.empty();
            targets_.push_back(
                {isTop ? request_.to.path
                       : Target().ChildPath(targets_[item.parent].path, item.name, item.isFolder),
                 item.isFolder});
        }
        stage_ = CopyStage::kTarget;
        Result fits = CheckNames();
        return fits ? Target().Prepare(targets_, request_.existing) : std::move(fits);
    }

    Result CheckNames() const {
        Result fits = CheckTop(request_, true);
        if (!IsFetch(request_)) return fits;
        for (std::size_t at = 1; fits && at < targets_.size(); ++at) {
            fits = RefuseAnothersPlace(targets_[at].path);
        }
        return fits;
    }

    Result CopyItems() {
        if (request_.copied) request_.copied->SetTree(tree_);
        progress_.filesInAll = tree_.files;
        for (std::size_t index = 0; index < tree_.items.size();) {
            Result done = tree_.items[index].isFolder ? MakeFolders(index) : CopyFiles(index);
            if (!done) return done;
        }
        return {};
    }

    // Makes the folders from `index` on that come one after another and do not hold each other, as
    // many as the target makes at once, and moves it behind them.
    Result MakeFolders(std::size_t& index) {
        stage_ = CopyStage::kTarget;
        const std::size_t first = index;
        if (index++ == 0) return Target().MakeFolder(targets_[0].path, FoldersAbove::kAreMade);
        std::vector<FolderToMake> folders = {{targets_[first].path}};
        for (; index < tree_.items.size() && folders.size() < Target().Window(); ++index) {
            const TreeItem& item = tree_.items[index];
            if (!item.isFolder || item.parent >= first) break;
            folders.push_back({targets_[index].path});
        }
        Target().MakeFolders(folders);
        for (FolderToMake& folder : folders) {
            if (!folder.result) return std::move(folder.result);
        }
        return {};
    }

    // Copies the files from `index` on that come one after another, as many as the stores take at
    // once and memory should hold, and moves it behind them.
    Result CopyFiles(std::size_t& index) {
        if (request_.from.store == &Target()) {
            if (auto copied = CopyByItsOwnMeans(index)) {
                ++index;
                return *std::move(copied);
            }
        }
        const std::size_t first = index;
        std::vector<FileToRead> files;
        Result read = ReadSome(index, files);
        Result written = WriteSome(first, files);
        if (!written) return written;
        if (!read) stage_ = CopyStage::kTree;
        return read;
    }

    // Reads files, one after another or one window of them, until one cannot be read, which is left
    // out of `files`.
    Result ReadSome(std::size_t& index, std::vector<FileToRead>& files) {
        Store& source = *request_.from.store;
        const std::size_t window = readWindow_.Size(source);
        const std::size_t most = source.Window() > 1 ? window : Target().Window();
        std::uint64_t bytes = 0;
        while (files.size() < most && bytes < kBytesAtOnce && HasFile(index)) {
            std::vector<FileToRead> some;
            for (; some.size() < window && HasFile(index); ++index) {
                some.push_back({tree_.items[index].path});
            }
            source.ReadFiles(some, request_.fate);
            for (FileToRead& file : some) {
                if (!file.result) return std::move(file.result);
                bytes += file.contents.length;
                files.push_back(std::move(file));
            }
        }
        readWindow_.Adapt(files.size(), bytes, source);
        return {};
    }

    bool HasFile(std::size_t index) const {
        return index < tree_.items.size() && !tree_.items[index].isFolder;
    }

    Result WriteSome(std::size_t first, const std::vector<FileToRead>& files) {
        std::vector<FileToWrite> writes;
        for (std::size_t at = 0; at < files.size(); ++at) {
            const FileBuffer& contents = files[at].contents;
            if (request_.copied) {
                request_.copied->items[first + at].SetContents(contents);
            }
            // A file that came since may be another one of the tree, through a link in the target.
            const bool mayReplace = targets_[first + at].mayReplace;
            const WriteRules rules = {
                mayReplace ? ExistingEntries::kReplace : ExistingEntries::kRefuse, request_.fate};
            writes.push_back({targets_[first + at].path, &contents, rules});
        }
        for (std::size_t at = 0; at < writes.size();) {
            const std::size_t some = std::min(Target().Window(), writes.size() - at);
            Target().WriteFiles(std::span(writes).subspan(at, some));
            for (const std::size_t end = at + some; at < end; ++at) {
                Result done = NoteWrite(writes[at]);
                if (!done) return done;
            }
        }
        return {};
    }

    Result NoteWrite(FileToWrite& file) {
        stage_ = CopyStage::kTarget;
        if (!file.result) return std::move(file.result);
        return NoteFile(file.contents->length);
    }

    // As above, for a file of the tree.
    std::optional<Result> CopyByItsOwnMeans(std::size_t index) {
        CopiedSource copied;
        TransferProgress single;
        CopyRequest file = request_;
        file.from.path = tree_.items[index].path;
        file.to.path = targets_[index].path;
        file.watcher = [&](const TransferProgress& progress) {
            single = progress;
            return true;
        };
        file.copied = request_.copied ? &copied : nullptr;
        std::optional<CopyOutcome> outcome = depot::CopyByItsOwnMeans(file);
        if (!outcome) return std::nullopt;
        stage_ = CopyStage::kTarget;
        if (!outcome->result) return std::move(outcome->result);
        if (!copied.items.empty()) {
            request_.copied->items[index].contents = copied.items.front().contents;
        }
        return NoteFile(single.bytesDone);
    }

    Result NoteFile(std::uint64_t bytes) {
        ++progress_.filesDone;
        progress_.bytesDone += bytes;
        const bool more = progress_.filesDone < progress_.filesInAll;
        const bool stopped = request_.watcher && !request_.watcher(progress_) && more;
        return stopped ? SystemFailure(Reason::kStopped, ERROR_CANCELLED) : Result();
    }

    Result Incomplete() const { return request_.from.store->IncompleteError(tree_.left); }
    Store& Target() const { return *request_.to.store; }

    const CopyRequest& request_;
    Tree tree_;
    std::vector<PlannedItem> targets_;  // one for each item of the tree
    TransferProgress progress_;
    CopyStage stage_ = CopyStage::kTree;
    ReadWindow readWindow_;
};

CopyOutcome CopyTreeThrough(const std::string& folder, const CopyRequest& request,
                            StoreSource& source) {
    CopyRequest fetching = request;
    fetching.to = {&FolderStore::Instance(), folder};
    fetching.existing = ExistingEntries::kReplace;
    // A file counts once it has arrived; until then the copy can be stopped all the same.
    fetching.watcher = [&](const TransferProgress& progress) {
        return !request.watcher || request.watcher({0, progress.filesInAll, 0});
    };
    CopyOutcome outcome = TreeCopy(fetching).Run(source);
    if (!outcome.result) return outcome;
    CopyRequest storing = request;
    storing.from = fetching.to;
    storing.copied = nullptr;
    StoreSource local;
    outcome.result = storing.from.store->ReadSource(folder, request.fate, local);
    return outcome.result ? TreeCopy(storing).Run(local) : std::move(outcome);
}

// Copies a tree through a temporary local folder. Fails before anything is stored when an entry
// would have to be left out.
CopyOutcome CopyTreeThroughFolder(const CopyRequest& request, StoreSource& source) {
    CopyOutcome outcome;
    std::vector<std::string> folders(1);
    std::string& folder = folders.front();
    folder = MakeTempFolder();
    if (folder.empty()) {
        return {SystemFailure(Reason::kRefused, GetLastError()), CopyStage::kTarget, false};
    }
    try {
        outcome = CopyTreeThrough(folder, request, source);
    } catch (...) {
        RemoveFoldersQuietly(folders, nullptr);
        throw;
    }
    const bool removed = RemoveFoldersQuietly(folders, nullptr);
    if (outcome.result && !removed) {
        outcome.result = SystemFailure(Reason::kRefused, GetLastError());
    }
    return outcome;
}

CopyOutcome CopyTree(const CopyRequest& request, StoreSource& source) {
    const bool isInReach = request.from.store->IsLocal() || request.to.store->IsLocal();
    return isInReach ? TreeCopy(request).Run(source) : CopyTreeThroughFolder(request, source);
}

CopyOutcome CopyOpened(CopyRequest request) {
    Result result = RefuseItself(request, request.existing);
    if (!result) return {std::move(result), CopyStage::kSource};
    if (request.known) return CopyFileContents(request, *request.known);
    StoreSource source;
    result = request.from.store->ReadSource(request.from.path, request.fate, source);
    if (result && source.isFolder && request.filesOnly) {
        result = SystemFailure(Reason::kInvalid, ERROR_INVALID_PARAMETER);
    }
    if (!result) return {std::move(result), CopyStage::kSource};
    return source.isFolder ? CopyTree(request, source) : CopyFileContents(request, source.contents);
}

// Whether one path lies inside the other by names that the store takes for others.
bool IsInsideByOtherNames(Store& store, PathPair paths) {
    const std::optional<PathsInDoubt> doubt = store.FindDoubt(paths.from, paths.to);
    // At one level the two are two items, or one that receives another name.
    if (!doubt || (doubt->first == paths.from && doubt->second == paths.to)) return false;
    return AreOneItem(store, {doubt->first, doubt->second});
}

}  // namespace

CopyOutcome Copy(const CopyRequest& request) {
    std::optional<CopyOutcome> own = CopyByItsOwnMeans(request);
    return own ? *std::move(own) : CopyWhole(request);
}

CopyOutcome CopyWhole(const CopyRequest& request) {
    const bool isItself =
        request.from.store == request.to.store && Overlaps(request.from, request.to, request.fate);
    if (request.from.path.empty() || request.to.path.empty() || isItself) {
        return {SystemFailure(Reason::kInvalid, ERROR_INVALID_PARAMETER)};
    }
    const StoreScope source(*request.from.store);
    if (!source) return {source.Outcome()};
    const StoreScope target(*request.to.store);
    return target ? CopyOpened(request) : CopyOutcome{target.Outcome()};
}

Result Move(Store& store, PathPair paths, const TransferWatcher& watcher) {
    if (paths.from.empty() || paths.to.empty() || store.IsInside(paths.to, paths.from) ||
        store.IsInside(paths.from, paths.to)) {
        return SystemFailure(Reason::kInvalid, ERROR_INVALID_PARAMETER);
    }
    const StoreScope scope(store);
    if (!scope) return scope.Outcome();
    if (IsInsideByOtherNames(store, paths)) {
        return SystemFailure(Reason::kInvalid, ERROR_INVALID_PARAMETER);
    }
    StoreSource held;
    Result renamed = store.Rename(paths, ExistingEntries::kRefuse, held);
    // A server may say the same of a file, which is no tree and would lose its contents.
    if (!renamed.Is(Reason::kNotEmpty) || !held.isFolder) return renamed;
    CopiedSource copied;
    const CopyRequest request = {{&store, paths.from},
                                 {&store, paths.to},
                                 ExistingEntries::kRefuse,
                                 SourceFate::kGoes,
                                 watcher,
                                 &copied};
    CopyOutcome outcome = CopyTree(request, held);
    return outcome.result ? LeftoversResult(RemoveCopied(store, copied))
                          : std::move(outcome.result);
}

}  // namespace depot
