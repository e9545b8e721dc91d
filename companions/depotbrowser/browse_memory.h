// What the browse dialog remembers for the user until it is opened again.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "depotbrowser/entry_order.h"
#include "platform/win32.h"

namespace depot {

// Reads and writes values of the user's registry; lengths are kept in units of 1/96 inch and given
// in the pixels of a window with that resolution. Values that no dialog can have written count as
// missing.
class BrowseMemory {
public:
    // Nothing is read and nothing kept unless it is `on`.
    explicit BrowseMemory(bool on) : on_(on) {}

    std::optional<SIZE> Size(int pixelsPerInch) const;
    // The upper left corner on the screen, in pixels.
    std::optional<POINT> Position() const;
    void KeepPlace(const RECT& place, int pixelsPerInch) const;

    // The widths of the columns from the left; empty where none are kept.
    std::vector<int> Columns(int pixelsPerInch) const;
    void KeepColumns(const std::vector<int>& pixels, int pixelsPerInch) const;

    std::optional<EntryOrder> Order() const;
    void KeepOrder(EntryOrder order) const;

    // The display path of the folder from which this program last took, or in which it last saved,
    // a file of this type; empty for none.
    std::string Folder(std::int32_t fileType) const;
    void KeepFolder(std::int32_t fileType, const std::string& displayPath) const;

private:
    bool on_;
};

}  // namespace depot
