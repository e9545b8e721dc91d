#include "depotctl/kept_target.h"

#include <algorithm>
#include <utility>

#include "depotctl/failure.h"
#include "directory/connection_scope.h"
#include "directory/ldap_result.h"
#include "model/guarded_store.h"

namespace depot::ctl {
namespace {

KeptBytes Taken(const FileBuffer& buffer) {
    return {buffer.bytes.get(), buffer.bytes.get() + buffer.length};
}

FileBuffer BufferOf(const KeptBytes& bytes) {
    FileBuffer buffer = {static_cast<std::uint32_t>(bytes.size()),
                         std::make_unique<std::uint8_t[]>(bytes.size() + kFileBufferReserve)};
    std::copy(bytes.begin(), bytes.end(), buffer.bytes.get());
    return buffer;
}

Error ChangedMeanwhile() {
    return {Reason::kChanged, CodeKind::kSystem, 0, "it was changed just now"};
}

}  // namespace

KeptTarget::KeptTarget(Place place, std::string dn)
    : place_(std::move(place)),
      dn_(std::move(dn)),
      directory_(place_.isPlain ? nullptr : place_.depot->DirectoryConnection()) {
    if (directory_ != nullptr && dn_.empty()) dn_ = place_.Stored().path;
}

std::optional<KeptBytes> KeptTarget::Read() const {
    return directory_ != nullptr ? ReadEntry() : ReadFile();
}

std::optional<KeptBytes> KeptTarget::ReadEntry() const {
    const ConnectionScope connection(directory_->Connection());
    if (!connection) Fail("reach", place_, connection.Outcome().Why());
    FileBuffer buffer;
    const Result read = directory_->Entries().ReadSeen(dn_, buffer);
    if (read.Is(Reason::kMissing)) return std::nullopt;
    if (!read) Fail("read", place_, read.Why());
    return Taken(buffer);
}

std::optional<KeptBytes> KeptTarget::ReadFile() const {
    const OpenedPlace at(place_, "read");
    ItemKind kind = ItemKind::kMissing;
    if (const Result looked = at.store.Look(at.path, kind); !looked) {
        Fail("look at", place_, looked.Why());
    }
    if (kind == ItemKind::kMissing) return std::nullopt;
    if (kind == ItemKind::kFolder) Refuse(place_.Shown() + " is a folder");
    FileBuffer buffer;
    const Result read = at.store.ReadFile(at.path, SourceFate::kStays, buffer);
    if (!read) Fail("read", place_, read.Why());
    return Taken(buffer);
}

void KeptTarget::Write(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const {
    const Result written =
        directory_ != nullptr ? WriteEntry(bytes, present) : WriteFile(bytes, present);
    const bool isChanged = written.Is(Reason::kChanged) || written.Is(Reason::kExists);
    if (isChanged) Fail("store into", place_, ChangedMeanwhile());
    if (!written) Fail("store into", place_, written.Why());
}

Result KeptTarget::WriteEntry(const KeptBytes& bytes,
                              const std::optional<KeptBytes>& present) const {
    const ConnectionScope connection(directory_->Connection());
    if (!connection) return connection.Outcome();
    EntryStore& entries = directory_->Entries();
    if (present) {
        const std::optional<Digest> seen = DigestOf(present->data(), present->size());
        std::optional<ProfileMerge> unmerged;
        return StoreGuarded({entries, dn_, bytes, seen, {}}, unmerged);
    }
    const auto entry = directory_->Schema().SplitEntryName(dn_);
    const std::string name = entry ? entry->name : std::string();
    const auto add = [&] {
        return entries.AddFile(dn_, name, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    };
    Result added = add();
    LdapItemList folders;
    if (added.Is(Reason::kMissing) && entries.EnsureFoldersAbove(dn_, folders)) added = add();
    return added;
}

Result KeptTarget::WriteFile(const KeptBytes& bytes,
                             const std::optional<KeptBytes>& present) const {
    // A file system has no condition: what is stored within the next moment is replaced.
    if (ReadFile() != present) return ChangedMeanwhile();
    const OpenedPlace at(place_, "write");
    const ExistingEntries existing = present ? ExistingEntries::kReplace : ExistingEntries::kRefuse;
    return at.store.WriteFile(at.path, BufferOf(bytes), {existing, SourceFate::kGoes});
}

bool KeptTarget::Holds(const KeptBytes& bytes) const {
    const auto held = Read();
    // An entry has no empty contents.
    const bool isBlank = directory_ != nullptr && bytes.empty();
    return held && *held == (isBlank ? KeptBytes{' '} : bytes);
}

}  // namespace depot::ctl
