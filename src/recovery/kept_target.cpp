#include "recovery/kept_target.h"

#include <utility>

#include "directory/connection_scope.h"
#include "manager/display_path.h"
#include "model/guarded_store.h"

namespace depot {
namespace {

using Step = TargetContents::Step;

KeptBytes Taken(const FileBuffer& buffer) {
    return {buffer.bytes.get(), buffer.bytes.get() + buffer.length};
}

class EntryTarget final : public KeptTarget {
public:
    // Of an entry the depot's location is the only one.
    EntryTarget(CDepot& depot, const std::string& path, std::string dn)
        : directory_(*depot.DirectoryConnection()),
          dn_(dn.empty() ? PlaceOf(depot, path).path : std::move(dn)) {}

    TargetContents Read() const override {
        const ConnectionScope connection(directory_.Connection());
        if (!connection) return {connection.Outcome(), Step::kReach, {}};
        FileBuffer buffer;
        const Result read = directory_.Entries().ReadSeen(dn_, buffer);
        if (read.Is(Reason::kMissing)) return {};
        if (!read) return {read, Step::kRead, {}};
        return {{}, {}, Taken(buffer)};
    }

    // An entry has no empty contents.
    bool IsHeldAs(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const override {
        return KeptTarget::IsHeldAs(bytes.empty() ? KeptBytes{' '} : bytes, present);
    }

private:
    Result Store(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const override {
        const ConnectionScope connection(directory_.Connection());
        if (!connection) return connection.Outcome();
        EntryStore& entries = directory_.Entries();
        if (present) {
            const std::optional<Digest> seen = DigestOf(present->data(), present->size());
            GuardedMerge merge;
            return StoreGuarded({entries, dn_, bytes, seen, {}}, merge);
        }
        const auto entry = directory_.Schema().SplitEntryName(dn_);
        const std::string name = entry ? entry->name : std::string();
        const auto add = [&] {
            return entries.AddFile(dn_, name, bytes.data(),
                                   static_cast<std::uint32_t>(bytes.size()));
        };
        Result added = add();
        LdapItemList folders;
        if (added.Is(Reason::kMissing) && entries.EnsureFoldersAbove(dn_, folders)) added = add();
        return added;
    }

    CLDAPItems& directory_;
    const std::string dn_;
};

class FileTarget final : public KeptTarget {
public:
    FileTarget(CDepot& depot, std::string path) : depot_(depot), path_(std::move(path)) {}

    TargetContents Read() const override {
        const StorePath place = PlaceOf(depot_, path_);
        const StoreScope scope(*place.store);
        if (!scope) return {scope.Outcome(), Step::kRead, {}};
        ItemKind kind = ItemKind::kMissing;
        if (const Result looked = place.store->Look(place.path, kind); !looked) {
            return {looked, Step::kLook, {}};
        }
        if (kind == ItemKind::kMissing) return {};
        if (kind == ItemKind::kFolder) return {Error(Reason::kInvalid), Step::kLook, {}};
        FileBuffer buffer;
        const Result read = place.store->ReadFile(place.path, SourceFate::kStays, buffer);
        if (!read) return {read, Step::kRead, {}};
        return {{}, {}, Taken(buffer)};
    }

private:
    Result Store(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const override {
        // A file system has no condition: what is stored within the next moment is replaced.
        const TargetContents now = Read();
        if (!now.result) return now.result;
        if (now.bytes != present) return Error(Reason::kChanged);
        const StorePath place = PlaceOf(depot_, path_);
        const StoreScope scope(*place.store);
        if (!scope) return scope.Outcome();
        const ExistingEntries existing =
            present ? ExistingEntries::kReplace : ExistingEntries::kRefuse;
        return place.store->WriteFile(place.path, BufferOf(bytes), {existing, SourceFate::kGoes});
    }

    CDepot& depot_;
    const std::string path_;
};

}  // namespace

Result KeptTarget::Write(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const {
    Result written = Store(bytes, present);
    if (written.Is(Reason::kExists)) return Error(Reason::kChanged);
    return written;
}

bool KeptTarget::IsHeldAs(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const {
    return present && *present == bytes;
}

std::unique_ptr<const KeptTarget> MakeKeptTarget(CDepot& depot, std::string path, std::string dn) {
    if (depot.ActiveStore().IsLocal()) return std::make_unique<FileTarget>(depot, std::move(path));
    return std::make_unique<EntryTarget>(depot, path, std::move(dn));
}

}  // namespace depot
