// What is known of where a recovered file comes from, as bytes. Nothing here asks the system.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "offline/offline_record.h"
#include "platform/digest.h"

namespace depot {

// Texts are in UTF-8: programs of one user may have different code pages.
struct OriginRecord {
    std::string file{};      // the recovered file's name
    std::string depot{};     // the key of its depot; empty where that is not known
    std::string server{};    // the key of its server, as ServerKeyOf has it
    std::string place{};     // the location, as OfflinePlaceOf has it; empty where it is not known
    std::string dn{};        // of the entry
    std::uint64_t time = 0;  // when it was kept, as a FILETIME
    std::uint32_t code = 0;  // the directory's, of the failure; 0 where there was none
    std::string reason{};    // the text of the failure; may be empty
    bool isNew = false;      // the entry was to be made
    std::optional<OfflineBytes> base{};  // what the file was made from, where that is known
    std::optional<Digest> baseDigest{};  // the same of bytes that are known by their digest alone

    friend bool operator==(const OriginRecord&, const OriginRecord&) = default;
};

OfflineBytes EncodeOriginRecord(const OriginRecord& record);

// Nothing when the bytes are not exactly those of a record that was written whole.
std::optional<OriginRecord> DecodeOriginRecord(std::span<const std::uint8_t> bytes);

}  // namespace depot
