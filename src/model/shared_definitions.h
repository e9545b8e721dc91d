// The definitions of depots as they were read last, for all lists of the process.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "model/depots.h"
#include "platform/registry_watch.h"

namespace depot {

// What was read at one moment. It is not changed: each list makes its own depots of these.
struct DepotDefinitions {
    CDepots depots;
    std::string language;
};

// Returns the depots that were read last below `path`, in their order, as long as they are what
// reading them now would find: since then the system has reported no change of the definitions or
// of the language, and neither hive leads elsewhere. Null when there are none. A thread that works
// for another user shares nothing.
std::shared_ptr<const DepotDefinitions> SharedDefinitions(const std::string& path);

// A reading of all definitions whose result may be shared. It begins before anything is read.
//
// The first reading of a process, and the first after a change, is not shared: whoever needs one
// list only pays nothing for later ones. Neither is one during which anything failed or changed,
// nor one where the system does not report changes.
class SharedReading {
public:
    explicit SharedReading(const std::string& path);

    // Shares what was read, in clones. Does nothing when that must not be.
    void Share(const CDepots& depots);

private:
    friend class DefinitionsKeeper;

    struct Origin {
        std::string path;
        unsigned systemLanguage = 0;
        HiveMark user, machine;
        RegistryWatch watch;
    };
    bool Watch(const std::string& path);

    std::optional<Origin> origin_;
    const unsigned failuresBefore_ = RegistryFailures();
};

// Gives back what is shared and what watches it. REQUIRES: no list is being loaded.
void FreeSharedDefinitions();

}  // namespace depot
