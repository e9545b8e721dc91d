// Where the recovered files come from: a record beside each that an entry of a directory was to
// hold.
//
// The records lie in a folder of their own, because users look into that of the files. Each has the
// name of its file with ".record" behind it, and is encrypted for the user.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "config/depot_path.h"
#include "offline/origin_record.h"
#include "platform/digest.h"

namespace depot {

// Below the user's local application data.
inline constexpr char kRecoveredRecords[] = "Quillon\\Farrow\\Recovered records";

// What is known when bytes are kept. Borrows all of it; narrow texts are in the ANSI code page.
struct RecoveredOrigin {
    const CDepotPath* location = nullptr;  // null where only the server is known
    std::string_view server{};             // its key, without a location
    std::string_view dn{};
    std::uint32_t code = 0;  // the directory's
    std::string_view reason{};
    bool isNew = false;
    std::optional<std::span<const std::uint8_t>> base{};
    std::optional<Digest> baseDigest{};  // where the base is not known
};

// Notes where the recovered file `path` comes from, and deletes the records of files that are gone.
// What cannot be noted is left out: the file itself is what counts.
void NoteRecovered(const std::string& path, const RecoveredOrigin& origin) noexcept;

// What is noted of a recovered file.
struct NotedOrigin {
    std::optional<OriginRecord> record;
    bool isDamaged = false;  // there is a record that cannot be read, or is another file's
};

// Returns what is noted of the recovered file of that name.
NotedOrigin ReadOrigin(const std::string& fileName);

// Deletes what is noted of a recovered file.
void ForgetOrigin(const std::string& fileName);

// Deletes the records of files that are gone.
void SweepOrigins();

}  // namespace depot
