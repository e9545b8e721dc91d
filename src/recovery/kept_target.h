// The file that a kept copy is compared with, or stored into: an entry of a directory, or a file of
// any depot.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "model/depot.h"
#include "platform/not_copied.h"
#include "recovery/kept_copies.h"

namespace depot {

// What a target holds, or why that cannot be found out. A folder is Reason::kInvalid.
struct TargetContents {
    enum class Step { kReach, kLook, kRead };

    Result result;
    Step failed = Step::kRead;       // where the result is a failure
    std::optional<KeptBytes> bytes;  // nothing where there is no file
};

class KeptTarget : NotCopied {
public:
    virtual ~KeptTarget() = default;

    virtual TargetContents Read() const = 0;

    // Stores the bytes over `present`, what Read has returned, and over nothing else, else fails
    // with Reason::kChanged; makes the file, with the folders above, where nothing was there.
    Result Write(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const;

    // Whether what Read has returned are these bytes as the target keeps them.
    virtual bool IsHeldAs(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const;

private:
    // Fails with Reason::kExists, too, for what was changed.
    virtual Result Store(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const = 0;
};

// Returns the target at a path of the depot, which it borrows. An entry has its own name, which the
// depot may have no path for; without one the path's is taken.
std::unique_ptr<const KeptTarget> MakeKeptTarget(CDepot& depot, std::string path,
                                                 std::string dn = {});

}  // namespace depot
