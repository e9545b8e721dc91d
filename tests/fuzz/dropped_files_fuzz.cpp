#include "depotbrowser/dropped_files.h"
#include "fuzz/fuzz_input.h"

using namespace depot;

namespace {

// Every path is one that the block holds whole.
template <class Texts>
std::size_t Bytes(const Texts& paths) {
    std::size_t bytes = 0;
    for (const auto& path : paths) {
        test::Require(!path.empty() && path.find('\0') == path.npos);
        bytes += (path.size() + 1) * sizeof(path.front());
    }
    return bytes;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DroppedPaths paths = ParseDroppedPaths({reinterpret_cast<const std::byte*>(data), size});
    test::Require(paths.wide.empty() || paths.narrow.empty());
    test::Require(Bytes(paths.wide) + Bytes(paths.narrow) <= size);
    return 0;
}
