// Trying one location of a depot, from its macros to its limits.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "depotctl/access.h"
#include "depotctl/definition.h"
#include "depotctl/location_checks.h"
#include "platform/not_copied.h"

namespace depot::ctl {

// Tries as much as the location allows; the last finding says why it ends, or that nothing is in
// the way. Nothing is left behind. Made on the thread that the location belongs to.
class LocationTrial : NotCopied {
public:
    virtual ~LocationTrial() = default;

    // Tries folder or server, on any thread.
    void Run() {
        if (isUsable_) Try();
    }

    // Asks at the terminal for credentials where the trial ended for want of them, and continues.
    virtual void Ask() {}

    const Findings& Found() const { return findings_; }

protected:
    // Macros, and whether what they make is a folder or a base.
    void CheckName(CDepotPath& location);
    void Good(const char* step, const std::string& text);
    void Add(Finding finding) { findings_.push_back(std::move(finding)); }
    // Returns whether there is no problem.
    bool Pass(const char* step, const std::optional<Problem>& problem);
    void ReportReadingOnly(const Problem& problem);

private:
    // What is wrong with the path for this kind of location.
    virtual Findings CheckPath(const FolderPath& path) const = 0;
    virtual void Try() = 0;

    bool isUsable_ = false;
    Findings findings_;
};

// `number` is the location's in its depot. Looks at the macros alone.
std::unique_ptr<LocationTrial> MakeTrial(CDepotPath& location, std::size_t number);

}  // namespace depot::ctl
