// What is kept of the user's edits that their entries do not hold: recovered files, and edits that
// wait for a server.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "offline/origin_record.h"
#include "platform/result.h"
#include "platform/win32.h"

namespace depot {

using KeptBytes = std::vector<std::uint8_t>;

// One kept copy. The record and the name are in UTF-8, the path is not.
struct KeptCopy {
    std::string name;  // by which users name it
    std::string path;  // of the file that holds it
    bool isWaiting = false;
    bool hasDamagedRecord = false;
    std::uint64_t size = 0;
    FILETIME time = {};
    std::optional<OriginRecord> origin;  // nothing where it is not known
    std::string lockFolder;              // of an edit that waits: where its lock is

    // "host:port" of its server; empty where that is not known.
    std::string Server() const;
    // Whether it was made from these bytes, as far as that is known.
    bool IsMadeFrom(const KeptBytes& bytes) const;
    // Whether it is known what it was made from, which may be nothing.
    bool HasKnownBase() const;
};

struct KeptCopies {
    std::vector<KeptCopy> copies;   // the recovered files by their names, behind them what waits
    std::uint32_t unsafeNames = 0;  // files left out because the code page lacks their letters
};

// Returns all kept copies. Records of files that are gone are deleted on the way.
KeptCopies FindKeptCopies();

// Reads the user's bytes into `bytes`.
Result ReadKept(const KeptCopy& copy, KeptBytes& bytes);

// The code with which an edit stays that is just being stored.
inline constexpr std::uint32_t kBeingStored = ERROR_BUSY;

// Deletes a copy with its record, if its bytes are still these, else fails with Reason::kChanged;
// without `bytes` whatever it holds.
Result DeleteKept(const KeptCopy& copy, const std::optional<KeptBytes>& bytes = {});

}  // namespace depot
