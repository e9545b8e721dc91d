#include "fileops/read_ahead.h"

namespace depot {

std::optional<FileBuffer> ReadAhead::Take(std::size_t number) {
    const StorePath& source = sources_[number];
    if (source.store == nullptr || !source.store->ReadsAsFile(source.path)) return std::nullopt;
    if (numbers_.empty() || numbers_.back() < number) ReadFrom(number);
    const auto found = std::find(numbers_.begin(), numbers_.end(), number);
    if (found == numbers_.end()) return std::nullopt;
    FileToRead& file = files_[static_cast<std::size_t>(found - numbers_.begin())];
    // What failed is asked for again, by whoever knows what the failure means.
    if (!file.result || !file.contents.bytes) return std::nullopt;
    return std::move(file.contents);
}

void ReadAhead::Written(const StorePath& place) {
    for (FileToRead& file : files_) {
        // Two stores may be one server by two names.
        const Store& names = *place.store;
        if (names.IsSame(file.path, place.path) || names.IsInside(file.path, place.path)) {
            file.contents = {};
        }
    }
}

void ReadAhead::ReadFrom(std::size_t number) {
    Store& store = *sources_[number].store;
    files_.clear();
    numbers_.clear();
    const std::size_t most = window_.Size(store);
    for (std::size_t next = number; next < sources_.size() && files_.size() < most; ++next) {
        const StorePath& source = sources_[next];
        if (source.store != &store || !store.ReadsAsFile(source.path)) continue;
        files_.push_back({source.path});
        numbers_.push_back(next);
    }
    // One by itself costs the same without this, also where it fails.
    if (files_.size() < 2) {
        files_.clear();
        numbers_.clear();
        return;
    }
    store.ReadFiles(files_, SourceFate::kStays);
    if (fate_ == SourceFate::kGoes) RefuseChildren(store);
    std::uint64_t bytes = 0;
    for (const FileToRead& file : files_) bytes += file.contents.length;
    window_.Adapt(files_.size(), bytes, store);
}

// A file with entries below it is not copied whole.
void ReadAhead::RefuseChildren(Store& store) {
    std::vector<FolderToList> folders;
    for (const FileToRead& file : files_) folders.push_back({file.path});
    store.ListFolders(folders);
    for (std::size_t at = 0; at < files_.size(); ++at) {
        const FolderToList& folder = folders[at];
        const bool isLeaf = folder.result && folder.children.empty() && folder.left.IsNothing();
        if (!isLeaf) files_[at].contents = {};
    }
}

}  // namespace depot
