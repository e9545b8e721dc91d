// Which entries of a folder a listing takes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace depot {

// What a listing request asks for: the folder, as a display path, and the lower-case filter.
struct ListingRequest {
    std::string folder;
    std::string filter;
};

// Takes a request apart. Without a filter, and unless only folders are wanted, the last part of the
// path is the filter: "<Work>\Sessions\*.kra" lists "<Work>\Sessions" for "*.kra". A folder that is
// left without any backslash gets one, so that "<Work>\*.kra" lists the root of the depot.
ListingRequest MakeListingRequest(std::string_view path, std::string_view filter,
                                  std::string_view subPath, bool foldersOnly);

// Whether a file passes a lower-case filter: ".*" passes every file; any other text passes
// the files whose extension, dot included, occurs in it.
//
// Kept: a name without a '.' is its own extension.
bool PassesFilter(std::string_view name, std::string_view filter);

// Tells for each listed file whether it stays when only those of one type are wanted: `wanted` says
// for each, in list order, whether it has that type.
//
// Kept: the file behind a removed one is not looked at, so of two neighbours of a wrong type the
// second stays.
std::vector<bool> SurvivorsOfTypeFilter(const std::vector<bool>& wanted);

}  // namespace depot
