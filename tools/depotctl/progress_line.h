// One line that shows how far a long piece of work is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace depot::ctl {

struct ProgressState {
    std::uint32_t filesDone = 0;
    std::uint32_t filesInAll = 0;
    std::uint64_t bytesDone = 0;
    double seconds = 0;
};

// Returns a number of bytes as people read it, such as "3.1 MB".
std::string SizeText(std::uint64_t bytes);

// Returns a duration as people read it: "0:42", "1:02:03".
std::string DurationText(std::uint64_t seconds);

// Returns a bar, the counts, the bytes, the rate and the time left, such as
// "[#####     ] 12/24 files  3.1 MB  1.2 MB/s  0:03 left", in at most `width` columns: what has no
// room is left out, the counts last. The time is that of the files so far.
std::string ProgressLine(const ProgressState& state, std::size_t width);

}  // namespace depot::ctl
