// Work on several entries of a directory at once.
#include <algorithm>

#include "store/directory_store.h"
#include "store/tree.h"

namespace depot {
namespace {

// Whoever asks for the last error after a failure asks for that of the item that stopped the work.
template <class Items>
void KeepFirstFailure(CLDAPItems& directory, const Items& items) {
    const auto failed =
        std::find_if(items.begin(), items.end(), [](const auto& item) { return !item.result; });
    if (failed != items.end()) directory.SetLastError(CodeOf(failed->result));
}

}  // namespace

void DirectoryStore::ReadFiles(std::span<FileToRead> files, SourceFate fate) {
    std::vector<ContentsRead> reads;
    for (const FileToRead& file : files) reads.push_back({file.path});
    Entries().ReadTogether(reads);
    for (std::size_t at = 0; at < files.size(); ++at) {
        FileToRead& file = files[at];
        file.contents = std::move(reads[at].contents);
        file.result = Looked(std::move(reads[at].result));
        if (!file.result) continue;
        if (!file.contents.bytes) {
            file.result = Looked(EntryStore::Unseen());
        } else if (fate == SourceFate::kGoes && LooksLikeFolder(file.path)) {
            file.result = RefuseChildren(file.path);
        }
    }
    KeepFirstFailure(directory_, files);
}

void DirectoryStore::WriteFiles(std::span<FileToWrite> files) {
    std::vector<ContentsWrite> additions;
    std::vector<FileToWrite*> added;
    for (FileToWrite& file : files) {
        const std::optional<EntryName> name = Schema().SplitEntryName(file.path);
        file.result = Of(name ? LDAP_SUCCESS : LDAP_INVALID_DN_SYNTAX);
        if (!name) continue;
        additions.push_back({file.path, name->name, file.contents});
        added.push_back(&file);
        static_cast<void>(MayBeTaken(name->name));
    }
    Entries().AddFilesTogether(additions);
    std::vector<KindLookup> there;
    std::vector<FileToWrite*> replaced;
    for (std::size_t at = 0; at < additions.size(); ++at) {
        FileToWrite& file = *added[at];
        file.result = Changed(std::move(additions[at].result));
        if (file.result.Is(Reason::kMissing)) {
            // Folders above it are missing.
            file.result = DirectoryStore::WriteFile(file.path, *file.contents, file.rules);
        } else if (file.result.Is(Reason::kExists) &&
                   file.rules.existing == ExistingEntries::kReplace) {
            there.push_back({file.path, additions[at].name});
            replaced.push_back(&file);
        }
    }
    ReplaceFiles(replaced, std::move(there));
    KeepFirstFailure(directory_, files);
}

void DirectoryStore::ReplaceFiles(const std::vector<FileToWrite*>& files,
                                  std::vector<KindLookup> there) {
    const bool areLookedAt = std::any_of(files.begin(), files.end(), [&](const FileToWrite* file) {
        return file->rules.fate == SourceFate::kGoes || seesVariants_;
    });
    if (areLookedAt) Entries().FindKindsTogether(there);
    std::vector<ContentsWrite> replacements;
    std::vector<FileToWrite*> replaced;
    for (std::size_t at = 0; at < files.size(); ++at) {
        if (there[at].isOther) {
            files[at]->result = Changed(TakenName());
            continue;
        }
        replacements.push_back({files[at]->path, {}, files[at]->contents});
        replaced.push_back(files[at]);
    }
    Entries().ReplaceTogether(replacements);
    for (std::size_t at = 0; at < replacements.size(); ++at) {
        replaced[at]->result = Changed(std::move(replacements[at].result));
    }
}

void DirectoryStore::MakeFolders(std::span<FolderToMake> folders) {
    std::vector<FolderAddition> additions;
    for (const FolderToMake& folder : folders) {
        const std::optional<EntryName> name = Schema().SplitEntryName(folder.path);
        additions.push_back({folder.path, name ? name->name : std::string()});
        static_cast<void>(MayBeTaken(additions.back().name));
    }
    Entries().AddFoldersTogether(additions);
    std::vector<KindLookup> there;
    std::vector<FolderToMake*> found;
    for (std::size_t at = 0; at < folders.size(); ++at) {
        folders[at].result = Looked(std::move(additions[at].result));
        if (!additions[at].isThere || !seesVariants_) continue;
        there.push_back({folders[at].path, additions[at].name});
        found.push_back(&folders[at]);
    }
    Entries().FindKindsTogether(there);
    for (std::size_t at = 0; at < there.size(); ++at) {
        if (there[at].isOther) found[at]->result = Looked(TakenName());
    }
    KeepFirstFailure(directory_, folders);
}

void DirectoryStore::ListFolders(std::span<FolderToList> folders) {
    std::vector<FolderListing> listings(folders.size());
    for (std::size_t at = 0; at < folders.size(); ++at) listings[at].dn = folders[at].path;
    Entries().ListTogether(listings);
    for (std::size_t at = 0; at < folders.size(); ++at) {
        FolderToList& folder = folders[at];
        folder.result = Looked(std::move(listings[at].result));
        folder.left.unsafeNames += listings[at].unsafeNames;
        HandOut(listings[at].items, folder.path,
                TakeChildren(folder.path, folder.children, folder.left));
    }
    KeepFirstFailure(directory_, folders);
}

void DirectoryStore::RemoveItems(std::span<ItemToRemove> items) {
    std::vector<Removal> removals;
    for (const ItemToRemove& item : items) removals.push_back({item.path, item.contents});
    Entries().RemoveTogether(removals);
    for (std::size_t at = 0; at < items.size(); ++at) {
        items[at].result = Changed(std::move(removals[at].result));
    }
    KeepFirstFailure(directory_, items);
}

}  // namespace depot
