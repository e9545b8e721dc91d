// The storage locations of one depot, and the choice of the one through which it is used.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "config/depot_path.h"
#include "model/owned_list.h"
#include "platform/not_copied.h"

namespace depot {

class CDepot;
class CLDAPItems;
class LocationProbe;

// The locations of one depot in the order of their numbers. Owns them; its depot owns the list.
class CDepotPaths final : NotCopied {
public:
    explicit CDepotPaths(CDepot* owningDepot);
    ~CDepotPaths();

    // Appends a location, or a clone of it. An element that cannot be added is dropped silently and
    // stays the caller's.
    //
    // Contract: nothing here calls it.
    virtual void Add(CDepotPath* location, bool clone);
    // Appends clones of the other list's locations.
    virtual void Copy(const CDepotPaths* other);
    virtual void RemoveAll(bool deleteElements);
    // Takes a location out and deletes it, also when it was not in the list.
    virtual void Remove(CDepotPath* location);
    // Removes all others.
    void RemoveAllBut(const CDepotPath* location);

    // Appends a location that the list is to own; it is deleted when the list cannot grow.
    void Append(std::unique_ptr<CDepotPath> location) { AddOwned(array_, std::move(location)); }

    std::size_t Count() const { return array_.Count(); }
    CDepotPath* At(std::size_t index) const { return array_.At(index); }

    // Returns the path through which the depot is used, with a trailing backslash: the expanded
    // path of the first location that can be reached; else of the first one whose server answers
    // and refuses the look for want of credentials or rights, which whoever uses it may have; else
    // of the first one. One that has not answered for two seconds holds the next ones up no longer.
    // Empty when there is no location or its path is empty. The choice is made once and never
    // revisited. A directory that is the only location is not asked whether it can be reached.
    std::string GetActivePath();

    // Returns the location whose path GetActivePath gives, or null for an empty list.
    CDepotPath* ActiveLocation();

    // Hands out the directory through which the location was found to be reachable, with its
    // connection where that may serve on; null where there is none.
    std::unique_ptr<CLDAPItems> TakeDirectory();
    // Returns the keys of the other servers for which users log on as for this location's, without
    // its own: what was typed for them may serve it.
    std::vector<std::string> ServersBeside(const CDepotPath& location) const;
    // Of one that was not handed out: see LdapConnection::Leave.
    bool LeaveConnection();

    // The chosen location, or null as long as nothing has asked for it: no server is contacted.
    CDepotPath* ChosenLocation() const { return activeLocation_; }

    // Whether choosing the location would have to contact a directory server.
    bool ChoiceProbesDirectory() const;

    // Whether the path may hold the root that GetActivePath gives, without contacting a
    // server to find out. Once the choice is made, or can be made without a server, every path may.
    // Until then only one that holds the base of one of the locations may.
    bool MayHold(const std::string& path) const;

    bool ownsItems = true;
    CDepot* owner;  // never owned

private:
    void ChooseLocation();
    std::optional<std::size_t> FindReachable();
    std::optional<std::size_t> FindReachableFrom(std::size_t first);
    // Takes what a look at the location has found.
    void TakeOver(LocationProbe& probe, CDepotPath& location, bool isChosen);
    void Forget();

    PointerArray<CDepotPath> array_;
    std::string activePath_;
    CDepotPath* activeLocation_ = nullptr;
    std::unique_ptr<CLDAPItems> directory_;  // of the chosen location
};

// Returns the location's path with its macros expanded, kept in the record after the first time. A
// location that belongs to no list of depots keeps its macros.
std::string ExpandedPath(CDepotPath& location);

}  // namespace depot
