// One row of the list of files.
#pragma once

#include <cstdint>
#include <string>

namespace depot {

// A file or folder as a listing told it. Entries of a directory have neither a size nor a date.
struct BrowseEntry {
    std::string name;        // as paths spell it
    std::wstring shownName;  // the same for the screen
    bool isFolder = false;
    std::int32_t fileType = 0;
    bool hasDetails = false;  // whether size and date are known
    std::uint64_t size = 0;
    std::uint64_t date = 0;  // in the file system's units of 100 nanoseconds
    std::wstring typeName;
};

}  // namespace depot
