#include "config/profile_value.h"

#include "fuzz/fuzz_input.h"

namespace {

constexpr char kBlanks[] = " \t";

// What the system's profile reader makes of a stored value.
std::string ReadBack(const std::string& stored) {
    const std::size_t first = stored.find_first_not_of(kBlanks);
    if (first == std::string::npos) return {};
    std::string value = stored.substr(first, stored.find_last_not_of(kBlanks) - first + 1);
    const bool quoted = value.size() > 1 && value.front() == value.back() &&
                        (value.front() == '"' || value.front() == '\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string value = depot::test::FuzzInput(data, size).Rest();
    depot::test::Require(ReadBack(depot::QuoteProfileValue(value)) == value);
    return 0;
}
