// What is kept of a location for the time when its server is away, as bytes. Nothing here asks the
// system.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace depot {

using OfflineBytes = std::vector<std::uint8_t>;

enum class OfflineKind : std::uint8_t {
    kFile = 1,    // a file's bytes as fetched
    kFolder = 2,  // what a folder holds
    kEdit = 3,    // a file's bytes as its user left them, with those that they were made from
};

// A child of a folder.
struct OfflineChild {
    std::string dn;
    bool isFolder = false;
    friend bool operator==(const OfflineChild&, const OfflineChild&) = default;
};

struct OfflineRecord {
    OfflineKind kind = OfflineKind::kFile;
    std::string place{};  // which location of which server it belongs to
    std::string dn{};
    std::uint64_t number = 0;  // the place in the order of edits
    std::uint64_t time = 0;    // when it was kept, as a FILETIME
    OfflineBytes bytes{};
    std::optional<OfflineBytes> base{};  // of an edit: what was fetched; nothing for a new file
    std::vector<OfflineChild> children{};

    friend bool operator==(const OfflineRecord&, const OfflineRecord&) = default;
};

OfflineBytes EncodeOfflineRecord(const OfflineRecord& record);

// Nothing when the bytes are not exactly those of a record that was written whole.
std::optional<OfflineRecord> DecodeOfflineRecord(std::span<const std::uint8_t> bytes);

}  // namespace depot
