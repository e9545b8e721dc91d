// The file that a kept copy is compared with, or stored into: an entry of a directory, or a file of
// any depot.
#pragma once

#include <optional>
#include <string>

#include "model/depot.h"
#include "recovery/kept_copies.h"

namespace depot {

// What a target holds, or why that cannot be found out. A folder is Reason::kInvalid.
struct TargetContents {
    enum class Step { kReach, kLook, kRead };

    Result result;
    Step failed = Step::kRead;       // where the result is a failure
    std::optional<KeptBytes> bytes;  // nothing where there is no file
};

// Borrows the depot.
class KeptTarget {
public:
    // `path` is a path of the depot. An entry has its own name, which the depot may have no path
    // for; without one the path's is taken.
    KeptTarget(CDepot& depot, std::string path, std::string dn = {});

    TargetContents Read() const;

    // Stores the bytes over `present`, what Read has returned, and over nothing else, else fails
    // with Reason::kChanged; makes the file, with the folders above, where nothing was there.
    Result Write(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const;

    // Whether what Read has returned are these bytes as the target keeps them.
    bool IsHeldAs(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const;

private:
    TargetContents ReadEntry() const;
    TargetContents ReadFile() const;
    Result WriteEntry(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const;
    Result WriteFile(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const;

    CDepot& depot_;
    const std::string path_;
    CLDAPItems* const directory_;  // of an entry; else null
    const std::string dn_;         // of an entry
};

}  // namespace depot
