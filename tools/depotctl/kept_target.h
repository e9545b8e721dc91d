// The target of a kept copy at a place that a command names.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "depotctl/places.h"
#include "recovery/kept_target.h"

namespace depot::ctl {

class PlacedTarget {
public:
    // Of an entry the depot is opened, and its location is the only one. `dn` is its name, which
    // the place may have no path for; empty for what the place's own path names.
    explicit PlacedTarget(Place place, std::string dn = {})
        : place_(std::move(place)),
          target_(MakeKeptTarget(*place_.depot, place_.path, std::move(dn))) {}

    // Returns what it holds; nothing where there is none. Ends the command when it cannot be read.
    std::optional<KeptBytes> Read() const;

    // Stores the bytes over `present`, what Read has returned. Ends the command when it cannot.
    void Write(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const;

    // End the command for what could not be read, or written.
    [[noreturn]] void FailToRead(TargetContents::Step step, const Error& why) const;
    [[noreturn]] void FailToWrite(const Error& why) const;

    const KeptTarget& Target() const { return *target_; }
    const Place& At() const { return place_; }

private:
    const Place place_;
    const std::unique_ptr<const KeptTarget> target_;
};

}  // namespace depot::ctl
