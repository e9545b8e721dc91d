// Operations between every two kinds of store.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "directory_files/directory_world.h"
#include "fileops/depot_file.h"
#include "fileops/item_operations.h"
#include "manager/resolve_item.h"
#include "support/results.h"
#include "support/test_folders.h"

namespace depot::test {

enum class StoreKind { kPlain, kFolder, kDirectory };

struct StorePair {
    StoreKind from;
    StoreKind to;
};

inline const char* KindName(StoreKind kind) {
    switch (kind) {
        case StoreKind::kPlain:
            return "Plain";
        case StoreKind::kFolder:
            return "Folder";
        default:
            return "Directory";
    }
}

inline std::ostream& operator<<(std::ostream& stream, const StorePair& pair) {
    return stream << KindName(pair.from) << "To" << KindName(pair.to);
}

inline constexpr StoreKind kKinds[] = {StoreKind::kPlain, StoreKind::kFolder,
                                       StoreKind::kDirectory};

inline std::vector<StorePair> EveryPair() {
    std::vector<StorePair> pairs;
    for (const StoreKind from : kKinds) {
        for (const StoreKind to : kKinds) pairs.push_back({from, to});
    }
    return pairs;
}

inline std::string PairName(const testing::TestParamInfo<StorePair>& info) {
    std::ostringstream name;
    name << info.param;
    return name.str();
}

// Files go from the folder "from" of one store into the folder "to" of another. A plain store is a
// folder of no depot; the default depot is one in a folder.
class PairWorldTest : public testing::Test {
protected:
    PairWorldTest() {
        for (const StoreKind kind : kKinds) {
            StoreOf(kind).MakeFolder("from");
            StoreOf(kind).MakeFolder("to");
        }
    }

    TestFolder& StoreOf(StoreKind kind) {
        if (kind == StoreKind::kDirectory) return directory_;
        return kind == StoreKind::kFolder ? folder_ : plain_;
    }

    CDepotItem Item(const std::string& path) {
        CDepotItem item;
        ResolveItem(world_.depots, path, item);
        return item;
    }

    int Copy(const std::string& source, const std::string& target, bool failIfExists) {
        const CDepotItem from = Item(source), to = Item(target);
        return CopyFile(*from.depot, from.path, to.path, to.depot, failIfExists, &error_);
    }
    int OnItem(UINT operation, const std::string& source, const std::string& target) {
        const CDepotItem to = Item(target);
        return ItemOperation(Item(source), &to, operation, nullptr, &error_);
    }
    int OnList(UINT operation, const std::vector<std::string>& sources, const std::string& target) {
        CDepotItems items;
        for (const std::string& source : sources) items.Append(Item(source).Clone());
        const CDepotItem to = Item(target);
        return ListOperation(items, &to, operation, kQuietFlags, nullptr, &error_);
    }

    DirectoryWorld world_;
    std::string error_ = "junk";
    LocalTestFolder plain_{world_.folder.MakeFolder("p"), world_.folder.At("p") + "\\"};
    LocalTestFolder folder_{world_.folder.At("h"), "<Home>\\"};
    DirectoryTestFolder directory_{world_.server, world_.base, "<Work>\\"};
};

class PairTest : public PairWorldTest, public testing::WithParamInterface<StorePair> {
protected:
    TestFolder& Source() { return StoreOf(GetParam().from); }
    TestFolder& Target() { return StoreOf(GetParam().to); }
    bool FromDirectory() const { return GetParam().from == StoreKind::kDirectory; }
    bool ToDirectory() const { return GetParam().to == StoreKind::kDirectory; }
    std::string From(const std::string& name) { return Source().Path("from\\" + name); }
    std::string To(const std::string& name) { return Target().Path("to\\" + name); }

    // Moves an item while another client changes something once the last file has arrived.
    int MoveWhile(const std::string& name, const std::function<void()>& change) {
        const CDepotItem to = Item(To(name));
        return ItemOperation(Item(From(name)), &to, FO_MOVE, nullptr, &error_,
                             [&](const TransferProgress& progress) {
                                 if (progress.filesDone == progress.filesInAll) change();
                                 return true;
                             });
    }

    // Runs what has to fail and leave both stores as they are.
    template <class Operation>
    void ExpectRefused(const Operation& operation) {
        const StoreContents source = Source().Contents(), target = Target().Contents();
        EXPECT_THAT(operation(), Fails());
        EXPECT_EQ(source, Source().Contents());
        EXPECT_EQ(target, Target().Contents());
    }
};

// A file that this object keeps open.
class OpenElsewhere {
public:
    OpenElsewhere(const std::string& path, DWORD sharing)
        : file_(CreateFileA(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr)) {
        EXPECT_NE(INVALID_HANDLE_VALUE, file_) << path;
    }
    ~OpenElsewhere() { CloseHandle(file_); }
    OpenElsewhere(const OpenElsewhere&) = delete;
    OpenElsewhere& operator=(const OpenElsewhere&) = delete;

private:
    HANDLE file_;
};

}  // namespace depot::test
