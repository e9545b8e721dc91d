#include "platform/digest.h"

#include <gtest/gtest.h>

#include <string>

namespace depot {
namespace {

std::string Hex(const std::string& bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : DigestOf(bytes.data(), bytes.size())) {
        text.push_back(kDigits[byte >> 4]);
        text.push_back(kDigits[byte & 15]);
    }
    return text;
}

TEST(DigestTest, PublishedExamplesHaveTheirDigests) {
    EXPECT_EQ("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855", Hex(""));
    EXPECT_EQ("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad", Hex("abc"));
    EXPECT_EQ("248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1",
              Hex("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"));
    EXPECT_EQ("cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0",
              Hex(std::string(1'000'000, 'a')));
}

TEST(DigestTest, LengthsAroundABlockHaveTheirDigests) {
    EXPECT_EQ("9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318",
              Hex(std::string(55, 'a')));
    EXPECT_EQ("b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a",
              Hex(std::string(56, 'a')));
    EXPECT_EQ("ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb",
              Hex(std::string(64, 'a')));
}

TEST(DigestTest, NoBytesAtAllCountAsAnEmptyText) {
    EXPECT_EQ(DigestOf("", 0), DigestOf(nullptr, 0));
}

}  // namespace
}  // namespace depot
