// The file that a kept copy is compared with, or stored into: an entry of a directory, or a file of
// any depot.
#pragma once

#include <optional>
#include <string>

#include "depotctl/kept_copies.h"
#include "depotctl/places.h"

namespace depot::ctl {

class KeptTarget {
public:
    // Of an entry the depot is opened, and its location is the only one. `dn` is its name, which
    // the place may have no path for; empty for what the place's own path names.
    explicit KeptTarget(Place place, std::string dn = {});

    // Returns what it holds; nothing where there is none. Ends the command when it cannot be read.
    std::optional<KeptBytes> Read() const;

    // Stores the bytes over `present`, what Read has returned, and over nothing else; makes it,
    // with the folders above, where nothing was there. Ends the command when it cannot.
    void Write(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const;

    // Whether what it holds are these bytes as it keeps them.
    bool Holds(const KeptBytes& bytes) const;

    const Place& At() const { return place_; }

private:
    std::optional<KeptBytes> ReadEntry() const;
    std::optional<KeptBytes> ReadFile() const;
    Result WriteEntry(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const;
    Result WriteFile(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const;

    const Place place_;
    std::string dn_;         // of an entry
    CLDAPItems* directory_;  // of an entry; else null
};

}  // namespace depot::ctl
