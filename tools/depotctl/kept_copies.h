// What is kept of the user's edits that their entries do not hold: recovered files, and edits that
// wait for a server.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "depotctl/program.h"
#include "offline/origin_record.h"

namespace depot::ctl {

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

    // The name in quotes, for a message.
    std::string Shown() const { return "\"" + name + "\""; }
    // "host:port" of its server; empty where that is not known.
    std::string Server() const;
    // Why it is kept, in UTF-8 and on one line; empty where that is not known.
    std::string Why() const;
};

// Returns all kept copies: the recovered files by their names, behind them what waits. Reports the
// names that it has to leave out. Records of files that are gone are deleted on the way.
std::vector<KeptCopy> FindKeptCopies(const Program& program);

// Returns those of the names, in their order. Each is one that FindKeptCopies returns, in any
// letter case, or the path of such a recovered file. Ends the command where one is not there.
std::vector<KeptCopy> RequireKeptCopies(const Program& program,
                                        const std::vector<std::string>& names);
KeptCopy RequireKeptCopy(const Program& program, const std::string& name);

// Returns the user's bytes. Ends the command when they cannot be read.
KeptBytes BytesOf(const KeptCopy& copy);

// Deletes a copy with its record, if its bytes are still these; without `bytes` whatever it holds.
// Returns why not in UTF-8, nothing when it is deleted.
std::optional<std::string> DeleteKeptCopy(const KeptCopy& copy,
                                          const std::optional<KeptBytes>& bytes = {});

}  // namespace depot::ctl
