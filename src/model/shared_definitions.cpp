#include "model/shared_definitions.h"

#include <mutex>
#include <new>
#include <utility>

#include "config/directory_defaults.h"
#include "model/localization.h"
#include "platform/lock.h"
#include "platform/managed_key.h"
#include "platform/no_destructor.h"
#include "platform/token.h"

namespace depot {
// What is shared, of all threads.
class DefinitionsKeeper {
public:
    using Definitions = std::shared_ptr<const DepotDefinitions>;

    static DefinitionsKeeper& Instance() {
        static NoDestructor<DefinitionsKeeper> keeper;
        return *keeper;
    }

    Definitions Find(const std::string& path, unsigned systemLanguage) {
        // Outlives the lock: a long list takes long to delete.
        Definitions outdated;
        const std::lock_guard guard(lock_);
        if (!origin_ || origin_->path != path) return nullptr;
        const HiveMark user = MarkOf(HKEY_CURRENT_USER), machine = MarkOf(HKEY_LOCAL_MACHINE);
        // What cannot be compared now may be as it was all the same.
        if (!user.isKnown || !machine.isKnown) return nullptr;
        const bool isAsItWas = origin_->systemLanguage == systemLanguage &&
                               !origin_->watch.HasChanged() && origin_->user == user &&
                               origin_->machine == machine;
        if (isAsItWas) return definitions_;
        outdated.swap(definitions_);
        origin_.reset();
        hasRead_ = false;
        return nullptr;
    }

    void Keep(SharedReading::Origin origin, Definitions definitions) {
        const std::lock_guard guard(lock_);
        // A change may have come between: then the list is outdated when it is looked for.
        origin_.emplace(std::move(origin));
        definitions_.swap(definitions);
    }

    // Returns whether somebody has read since the last change that was noticed.
    bool NoteReading() {
        const std::lock_guard guard(lock_);
        return std::exchange(hasRead_, true);
    }

    void Free() {
        origin_.reset();
        definitions_.reset();
        hasRead_ = false;
    }

private:
    // Unlike a mutex of the standard library it keeps no memory.
    Lock lock_;
    bool hasRead_ = false;
    std::optional<SharedReading::Origin> origin_;
    Definitions definitions_;
};

namespace {

// Returns nothing when not all of them can be cloned.
std::shared_ptr<const DepotDefinitions> Clones(const CDepots& depots) {
    const auto clones = std::make_shared<DepotDefinitions>();
    clones->depots.ownsItems = true;
    clones->depots.Copy(&depots);
    if (clones->depots.Count() != depots.Count()) return nullptr;
    for (CDepot* depot : clones->depots) depot->owner = nullptr;
    // A change since the names were read has been reported by now.
    clones->language = LanguageCode();
    return clones;
}

}  // namespace

std::shared_ptr<const DepotDefinitions> SharedDefinitions(const std::string& path) {
    const std::optional<LanguageOrigin> language = OriginOfLanguage();
    if (!language || IsImpersonating()) return nullptr;
    return DefinitionsKeeper::Instance().Find(path, language->systemLanguage);
}

SharedReading::SharedReading(const std::string& path) {
    try {
        if (!Watch(path)) origin_.reset();
    } catch (const std::bad_alloc&) {
        origin_.reset();
    }
}

bool SharedReading::Watch(const std::string& path) {
    const std::optional<LanguageOrigin> language = OriginOfLanguage();
    if (!language || !DefinitionsKeeper::Instance().NoteReading() || IsImpersonating()) {
        return false;
    }
    origin_ = Origin();
    origin_->path = path;
    origin_->systemLanguage = language->systemLanguage;
    origin_->user = MarkOf(HKEY_CURRENT_USER);
    origin_->machine = MarkOf(HKEY_LOCAL_MACHINE);
    if (!origin_->user.isKnown || !origin_->machine.isKnown) return false;
    for (const HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        if (!origin_->watch.Add(hive, path)) return false;
        if (!origin_->watch.Add(hive, language->settingsKey)) return false;
        if (!origin_->watch.Add(hive, kDefaultsKey)) return false;
        if (!origin_->watch.Add(hive, kPoliciesKey)) return false;
    }
    return true;
}

void SharedReading::Share(const CDepots& depots) try {
    if (!origin_ || RegistryFailures() != failuresBefore_) return;
    std::shared_ptr<const DepotDefinitions> clones = Clones(depots);
    if (!clones) return;
    DefinitionsKeeper::Instance().Keep(std::move(*origin_), std::move(clones));
    origin_.reset();
} catch (const std::bad_alloc&) {
}

void FreeSharedDefinitions() {
    DefinitionsKeeper::Instance().Free();
}

}  // namespace depot
