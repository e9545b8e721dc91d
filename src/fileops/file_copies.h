// Copies of files that do not depend on each other.
#pragma once

#include <vector>

#include "fileops/copy.h"
#include "platform/not_copied.h"

namespace depot {

// Makes copies whose results are of no interest to whoever asked for them, as if one after another;
// what they write into a directory is under way together.
class FileCopies : NotCopied {
public:
    // Makes the copy, or notes it for the next Finish, and all that were noted before where it
    // depends on them. `known` is what was read of the source, if anything was. REQUIRES: the
    // stores stay open until Finish.
    void Make(CopyRequest request, std::optional<FileBuffer> known);

    // Makes the copies that were noted.
    void Finish();

private:
    struct Noted {
        std::string path;
        FileBuffer contents;
    };

    bool TouchesNoted(const CopyRequest& request) const;

    Store* target_ = nullptr;  // of all that were noted
    std::vector<Noted> noted_;
    std::uint64_t bytes_ = 0;
};

}  // namespace depot
