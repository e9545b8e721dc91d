// Each kind of store in a world of its own, for the tests that all of them pass. A further kind
// gets its world here and its row in kWorlds.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "store/store.h"
#include "support/results.h"

namespace depot::test {

// A store with an empty folder of the test's own.
class StoreWorld {
public:
    StoreWorld() = default;
    virtual ~StoreWorld() = default;
    StoreWorld(const StoreWorld&) = delete;
    StoreWorld& operator=(const StoreWorld&) = delete;

    virtual Store& Get() = 0;
    // The folder.
    virtual std::string Root() const = 0;

    // Makes the place stop answering while it is open; returns the reason of all that follows.
    virtual Reason BreakOff() = 0;
    // Makes every further write fail.
    virtual void RefuseWrites() = 0;
    // Adds something that a listing of the folder leaves out, and returns how much that is.
    virtual LeftOut AddWhatIsLeftOut() = 0;
    // What the trace says of each of these.
    virtual std::vector<std::string> ReasonsToLeaveOut() const = 0;
};

struct WorldKind {
    const char* name;
    std::unique_ptr<StoreWorld> (*make)();
};
extern const WorldKind kWorlds[4];

inline void PrintTo(const WorldKind& kind, std::ostream* stream) {
    *stream << kind.name;
}

// A test of one kind of store, which is open.
class StoreTest : public testing::TestWithParam<WorldKind> {
protected:
    std::string At(const std::string& name, bool isFolder = false) {
        return store_.ChildPath(world_->Root(), name, isFolder);
    }
    std::string In(const std::string& folder, const std::string& name, bool isFolder = false) {
        return store_.ChildPath(folder, name, isFolder);
    }
    std::string AddFile(const std::string& path, const std::string& bytes);
    std::string AddFolder(const std::string& path);
    // The bytes of a file, or "(missing)".
    std::string Bytes(const std::string& path);
    ItemKind KindOf(const std::string& path);
    // The names in a folder, sorted, folders with a backslash.
    std::vector<std::string> Names(const std::string& folder);
    Result Write(const std::string& path, const std::string& bytes, ExistingEntries existing);

    std::unique_ptr<StoreWorld> world_ = GetParam().make();
    Store& store_ = world_->Get();
    std::unique_ptr<StoreScope> open_ = std::make_unique<StoreScope>(store_);
};

// The kinds as parameters, and their names.
inline auto EveryStore() {
    return testing::ValuesIn(kWorlds);
}
inline std::string StoreName(const testing::TestParamInfo<WorldKind>& world) {
    return world.param.name;
}

}  // namespace depot::test
