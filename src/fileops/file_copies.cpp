#include "fileops/file_copies.h"

#include <algorithm>
#include <utility>

#include "fileops/outcome.h"
#include "fileops/read_ahead.h"

namespace depot {
namespace {

// Whether the copy is one request to its target once the bytes are known.
bool IsOneRequest(const CopyRequest& request) {
    return request.to.store->Window() > 1 && !request.to.path.empty() &&
           !Overlaps(request.from, request.to, request.fate);
}

// Reads a local file.
std::optional<FileBuffer> ReadLocal(const StorePath& from) {
    if (from.path.empty() || !from.store->IsLocal()) return std::nullopt;
    const StoreScope scope(*from.store);
    StoreSource source;
    if (!scope || !from.store->ReadSource(from.path, SourceFate::kStays, source)) {
        return std::nullopt;
    }
    if (source.isFolder || !source.contents.bytes) return std::nullopt;
    return std::move(source.contents);
}

}  // namespace

void FileCopies::Make(CopyRequest request, std::optional<FileBuffer> known) {
    const bool touches = TouchesNoted(request);
    if (touches || request.to.store != target_) Finish();
    // What was read before may be what one of them has just replaced.
    if (touches) known.reset();
    if (IsOneRequest(request)) {
        if (!known) known = ReadLocal(request.from);
        if (known) {
            target_ = request.to.store;
            bytes_ += known->length;
            noted_.push_back({std::move(request.to.path), *std::move(known)});
            if (noted_.size() >= target_->Window() || bytes_ >= kBytesAtOnce) Finish();
            return;
        }
    }
    Finish();
    request.known = known ? &*known : nullptr;
    static_cast<void>(ReportedCopy(request, Copy(request)));
}

bool FileCopies::TouchesNoted(const CopyRequest& request) const {
    return std::any_of(noted_.begin(), noted_.end(), [&](const Noted& noted) {
        // Two stores may be one server by two names.
        const bool isSource = request.from.store->IsSame(noted.path, request.from.path) ||
                              request.from.store->IsInside(noted.path, request.from.path);
        return isSource || request.to.store->IsSame(noted.path, request.to.path);
    });
}

void FileCopies::Finish() {
    std::vector<FileToWrite> writes;
    for (const Noted& noted : noted_) writes.push_back({noted.path, &noted.contents});
    if (!writes.empty()) target_->WriteFiles(writes);
    noted_.clear();
    bytes_ = 0;
}

}  // namespace depot
