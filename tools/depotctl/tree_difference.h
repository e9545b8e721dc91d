// What distinguishes two files, or two trees, wherever they are.
#pragma once

#include <string>
#include <vector>

#include "depotctl/places.h"
#include "depotctl/tree_pairs.h"

namespace depot::ctl {

enum class ItemState { kOnlyLeft, kOnlyRight, kSame, kDifferent, kOtherKind };

// By what a file that both sides have counts as different.
enum class DifferentBy {
    kName,   // each of them does, whatever it holds
    kDate,   // the left one is of another size or newer; by bytes where a side has no dates
    kBytes,  // it holds other bytes
};

struct DifferentItem {
    std::string name;  // the path below the tops, empty for these
    bool isFolder = false;
    ItemState state = ItemState::kSame;
    // The folder that holds it, an index among the items; the top is its own.
    std::size_t parent = 0;
    // Storage paths; empty on the side where it is not.
    std::string left, right;
};

// The difference of two places. Ends the command when something of either cannot be read.
class TreeDifference {
public:
    struct Top {
        const Place& place;
        ItemKind kind;
    };

    // The right one may be missing.
    TreeDifference(Top left, Top right, DifferentBy by);

    // All that either side has: a folder before what it holds, the left side before what only the
    // right one has.
    const std::vector<DifferentItem>& Items() const { return items_; }

    // The places of an item, by its name.
    Place Left(const DifferentItem& item) const { return Below(left_.place, item); }
    Place Right(const DifferentItem& item) const { return Below(right_.place, item); }

    // What the two listings had to leave out.
    const LeftOut& LeftOutLeft() const { return left_.tree.left; }
    const LeftOut& LeftOutRight() const { return right_.tree.left; }

    const OpenedPlace& LeftOpened() const { return left_.opened; }
    const OpenedPlace& RightOpened() const { return right_.opened; }

private:
    struct Side {
        explicit Side(Top top);
        std::vector<TreeName> Names() const;

        const Place& place;
        const OpenedPlace opened;
        Tree tree;  // a file is a tree of itself alone
    };

    static Place Below(const Place& top, const DifferentItem& item);
    void AddItems();
    void CompareFiles(DifferentBy by);
    bool DecideByDetails(DifferentItem& item, DifferentBy by) const;
    void CompareBytes(const std::vector<DifferentItem*>& items);

    const Side left_, right_;
    std::vector<DifferentItem> items_;
};

}  // namespace depot::ctl
