// Where what is dragged may be put, and when a drag scrolls.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace depot {

// Whether a relative folder is the other one, or lies at any depth in it, in any letter case.
bool LiesInFolder(std::string_view folder, std::string_view other);

// Whether a folder of the same depot can take entries of `from`: it is neither `from` itself, where
// they are already, nor one of the folders among them nor a folder below one.
bool CanTakeEntries(std::string_view folder, std::string_view from,
                    const std::vector<std::string>& folderNames);

// By how many lines a drag scrolls at a position of a control of that length: towards the edge
// that is nearer than `edge`, else not at all. A control that is all edge does not scroll.
int ScrollStep(int position, int length, int edge);

}  // namespace depot
