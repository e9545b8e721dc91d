// What the table of directories says of a test: tools/conformance reads these properties.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace depot::test {

// The operation that the test shows to work.
inline void Row(const std::string& operation) {
    testing::Test::RecordProperty("operation", operation);
}

// What the server of this run does other than the operation's name says; shown instead of "Y".
inline void But(const std::string& limit) {
    testing::Test::RecordProperty("limit", limit);
}

}  // namespace depot::test
