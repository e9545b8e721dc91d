// Pseudo-random texts that are the same in every run.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace depot::test {

// A source of texts and numbers with a fixed seed, so that a failure can be repeated. With
// --gtest_shuffle every repetition has other texts, told by the seed that the test program prints.
class RandomTexts {
public:
    explicit RandomTexts(std::uint32_t seed)
        : engine_(seed +
                  static_cast<std::uint32_t>(testing::UnitTest::GetInstance()->random_seed())) {}

    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(engine_()) % bound; }

    // A text of at most `maxLength` characters out of `alphabet`.
    std::string Text(std::size_t maxLength, std::string_view alphabet) {
        std::string text(Below(maxLength + 1), '\0');
        for (char& c : text) c = alphabet[Below(alphabet.size())];
        return text;
    }

    // A text of at most `maxLength` bytes of any value.
    std::string Bytes(std::size_t maxLength) {
        std::string text(Below(maxLength + 1), '\0');
        for (char& c : text) c = static_cast<char>(Below(256));
        return text;
    }

    // A text of at most `maxCount` of the given pieces.
    std::string Pieces(std::size_t maxCount, const std::vector<std::string>& pieces) {
        std::string text;
        for (std::size_t count = Below(maxCount + 1); count > 0; --count) {
            text += pieces[Below(pieces.size())];
        }
        return text;
    }

private:
    std::mt19937 engine_;
};

}  // namespace depot::test
