// The list of all depots.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "config/directory_defaults.h"
#include "model/depot.h"
#include "model/owned_list.h"
#include "platform/macro_cache.h"
#include "platform/not_copied.h"
#include "platform/registry_key.h"

namespace depot {

struct DepotDefinitions;

// The depots that the registry defines below one key, or, without a key, a list that borrows depots
// of another. Owns its depots only in the first case (`ownsItems`).
//
// A list that is loaded while the definitions are shared has its own copy of each depot from when
// that is first used; until then it needs next to nothing.
class CDepots : NotCopied {
public:
    // Goes through the depots of a list, which has its own copy of each that it comes to.
    class Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = CDepot*;
        using difference_type = std::ptrdiff_t;
        using pointer = CDepot* const*;
        using reference = CDepot*;

        Iterator() = default;
        Iterator(const CDepots* list, std::size_t index) : list_(list), index_(index) {}
        CDepot* operator*() const { return list_->At(index_); }
        Iterator& operator++() {
            ++index_;
            return *this;
        }
        Iterator operator++(int) { return {list_, index_++}; }
        friend bool operator==(const Iterator&, const Iterator&) = default;

    private:
        const CDepots* list_ = nullptr;
        std::size_t index_ = 0;
    };

    // Makes an empty list that borrows its depots.
    CDepots() = default;

    // Makes a list that owns its depots and loads it from `path`; with an empty path it is a list
    // that borrows. The built-in depot and the macros take `userDir` as the user's folder.
    explicit CDepots(const std::string& path, const std::string& userDir = {});

    virtual ~CDepots();

    // Appends a depot, or a clone of it. An element that cannot be added is dropped silently and
    // stays the caller's.
    virtual void Add(CDepot* depot, bool clone);
    // Appends clones of the other list's depots.
    //
    // Contract: nothing here calls it.
    virtual void Copy(const CDepots* other);
    virtual void RemoveAll(bool deleteElements);
    // Takes a depot out and deletes it, also when it was not in the list.
    //
    // Contract: nothing here calls it.
    virtual void Remove(CDepot* depot);

    std::size_t Count() const { return array_.Count(); }
    CDepot* At(std::size_t index) const {
        CDepot* const depot = array_.At(index);
        return depot != nullptr ? depot : MakeOwn(index);
    }
    Iterator begin() const { return {this, 0}; }
    Iterator end() const { return {this, Count()}; }

    // Returns what a depot of the list is defined as, which may still be shared: to look for a
    // depot without making copies of those before it.
    const CDepot& DefinitionAt(std::size_t index) const;

    // What counts for directories whose definitions do not say it. Read from the registry on first
    // need, once in a reading of the definitions.
    const DirectoryDefaults& DefaultsOfDirectories();

    // Empties the list and reads it anew: the current user's depots, then the machine's, ordered by
    // their order index; when there are none, the built-in depot "My Depot". Sets the default
    // depot.
    void Load(const std::string& path);

    // Appends the depots defined below rootKey\path, in the order of the registry. Returns 1 when
    // the key could be opened, 0 when the path is empty or the key cannot be opened.
    int EnumerateDepotKeys(HKEY rootKey, const std::string& path, REGSAM extraAccess);

    // Puts the depots with an order index first, ascending, and keeps the order of equals and of
    // those without one.
    void SortByOrderIndex();

    // Returns a copy of the values of the path macros as they are at one moment, taken while the
    // event is held: no module that takes the event is changing them.
    MacroValues CopyReplacers();

    // Makes `userDir` the user's folder that the path macros of the whole process expand to. Where
    // it is that already nothing is written. For a list that has just been loaded.
    void ShareUserFolder(const std::string& userDir);

    // See LdapConnection::Leave.
    bool LeaveConnections();

    // Returns the user's folder: the override when there is one, else, with `useCache`, the one in
    // the macro cache, else nothing.
    std::string GetUserDir(bool useCache);

    // Contract: nothing here calls these two.
    //
    // Returns the depot with the smallest order index, the earliest of equals; null when no depot
    // has one.
    CDepot* LowestOrderDepot() const;
    // Returns the values of the path macros, which all lists of the process share. The first call
    // opens them and fills in what is still missing; every call, the first or not, takes and
    // signals the event that serialises this among all processes. Never null.
    MacroCacheHolder* GetReplacers();

    bool ownsItems = false;
    std::string keyPath;
    CDepot* defaultDepot = nullptr;  // never owned
    bool hasConfiguredDepots = false;
    std::string userDirOverride;
    std::unique_ptr<MacroCacheHolder> replacerCache;  // null until first use
    bool ownsReplacerCache = true;                    // cleared while the holder is only borrowed
    std::unique_ptr<CDepots> filteredView;            // borrows from this list; made on first use

private:
    struct RootOfDepot {
        HKEY key;
        REGSAM viewFlags;
    };
    void ReadDefinitions();
    bool TakeDefinitions(std::shared_ptr<const DepotDefinitions> definitions);
    CDepot* MakeOwn(std::size_t index) const;
    void MakeAllOwn() const;
    void AddDepot(const RegistryKey& key, const std::string& subkeyName,
                  const std::string& language, const RootOfDepot& root);
    void AddDepotsBelow(const RegistryKey& key, HKEY rootKey, REGSAM viewFlags);
    void AddBuiltInDepot();
    MacroCacheHolder& OpenReplacers();
    MacroCacheHolder& OpenReplacers(const std::string& language);
    CDepot* ChooseDefault() const;

    // Null where `definitions_` has, at the same index, a depot that was not used yet.
    mutable PointerArray<CDepot> array_;
    std::shared_ptr<const DepotDefinitions> definitions_;
    std::optional<DirectoryDefaults> directoryDefaults_;
    bool leftOut_ = false;  // whether memory ran out for anything while the list was read
};

}  // namespace depot
