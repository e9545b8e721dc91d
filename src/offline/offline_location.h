// One directory location as its user has it while the server is away: what was seen of it, and the
// edits that wait for the server.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "directory/ldap_connection.h"
#include "offline/offline_folder.h"

namespace depot {

// What an entry holds where these bytes were stored: it cannot hold none, and a blank stands for
// them.
inline constexpr std::uint8_t kNoContents[] = {' '};
inline std::span<const std::uint8_t> BytesAsStored(std::span<const std::uint8_t> bytes) {
    return bytes.empty() ? std::span<const std::uint8_t>(kNoContents) : bytes;
}

// What is known of an entry without the server.
enum class OfflineItem : std::uint8_t { kUnknown, kMissing, kFile, kFolder };

// Belongs to the depot whose location it is, and to the working copies that were made of it. Used
// by one thread at a time; several processes share what is on the disk.
class OfflineLocation {
public:
    // Null where the location does not want to be kept.
    static std::shared_ptr<OfflineLocation> Of(const CDepotPath& location);
    explicit OfflineLocation(const CDepotPath& location);

    // Stores waiting edits. Called with a server that can be reached, before anything else is asked
    // of it. Returns false where it was lost before all were tried.
    using StoreEdits = std::function<bool(OfflineFolder& folder)>;
    void SetStoreEdits(StoreEdits storeEdits) { storeEdits_ = std::move(storeEdits); }

    // Whether the server cannot be reached, found out by connecting without showing or asking
    // anything. One that let wait for its answer is not asked again for half a minute. Has the
    // waiting edits stored by the first call that reaches it; one that is lost over them cannot be
    // reached: nothing may overtake them.
    bool IsApart(LdapConnection& connection);

    // Keep what was seen or stored, and forget it. What cannot be kept, also for want of memory, is
    // no failure of what was seen or stored.
    void KeepFile(const std::string& dn, const void* bytes, std::size_t length) noexcept;
    void KeepFolder(const std::string& dn, std::vector<OfflineChild> children) noexcept;
    void Forget(const std::string& dn) noexcept;

    // Return what is known: edits before what was fetched.
    std::optional<OfflineBytes> FileOf(const std::string& dn) const;
    std::optional<std::vector<OfflineChild>> FolderOf(const std::string& dn) const;
    OfflineItem Look(const std::string& dn, const std::string& parent) const;

    // Has an edit wait. `base` is what it was made from; nothing for a new file. An edit of the
    // same file that waits already is replaced where `base` is what that one left, and is otherwise
    // the business of `meets`, which returns what is to wait; nothing to refuse. Returns the
    // system's code: done means that the edit survives a power cut.
    using MeetEdit = std::function<std::optional<OfflineBytes>(const OfflineRecord& waiting)>;
    DWORD Queue(const std::string& dn, const std::optional<OfflineBytes>& base,
                const OfflineBytes& bytes, const MeetEdit& meets = {});

    OfflineFolder& Folder() { return folder_; }

private:
    OfflineFolder folder_;
    StoreEdits storeEdits_;
    bool editsAreStored_ = false;
    bool isStoring_ = false;
    std::optional<std::chrono::steady_clock::time_point> nextAttempt_;
};

// Names a location for its user, whatever its number in the definition is.
std::string OfflinePlaceOf(const CDepotPath& location);

}  // namespace depot
