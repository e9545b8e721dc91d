// Trying one location of a depot, from its macros to its limits.
#pragma once

#include <optional>
#include <string>

#include "depotctl/access.h"
#include "depotctl/definition.h"

namespace depot::ctl {

// Tries as much as the location allows; the last finding says why it ends, or that nothing is in
// the way. Nothing is left behind. Made on the thread that the location belongs to.
class LocationTrial {
public:
    // `number` is the location's in its depot. Looks at the macros alone.
    LocationTrial(CDepotPath& location, std::size_t number);

    // Tries folder or server, on any thread.
    void Run();

    // Asks at the terminal for credentials where the trial ended for want of them, and continues.
    void Ask();

    const Findings& Found() const { return findings_; }

private:
    void Good(const char* step, const std::string& text);
    bool Pass(const char* step, const std::optional<Problem>& problem);
    bool CheckName(CDepotPath& location);
    void TryPath();
    void TryDirectory();
    void TryEntries();
    void ReportRoundTrip();
    void ReportSchema();
    void ReportRights(const std::optional<Problem>& problem, bool isDirectory);
    void ReportLimits();
    void ReportConflicts();

    const std::size_t number_;
    std::string folder_;                   // of the file system
    std::optional<DirectoryProbe> probe_;  // of a directory
    LogOnNames names_;
    std::optional<Problem> unanswered_;  // what the user may be asked for
    bool isUsable_ = false;
    Findings findings_;
};

}  // namespace depot::ctl
