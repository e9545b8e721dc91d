// One input of a fuzz target, taken apart: fields end at a line end, the last one takes the rest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

// What libFuzzer calls for every input, and the replay program for every file of the corpus. The
// sanitizers see what goes wrong inside; Require sees wrong results.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace depot::test {

class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size)
        : rest_(reinterpret_cast<const char*>(data), size) {}

    std::string Line() {
        const std::size_t end = rest_.find('\n');
        const std::string line(rest_.substr(0, end));
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        return line;
    }
    // A small number, from one byte.
    int Number() {
        if (rest_.empty()) return 0;
        const auto byte = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        return byte;
    }
    std::string Rest() const { return std::string(rest_); }

private:
    std::string_view rest_;
};

inline void Require(bool condition) {
    if (!condition) std::abort();
}

}  // namespace depot::test
