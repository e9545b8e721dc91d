// What the tests of entries share.
#pragma once

#include "support/directory_fixture.h"

namespace depot::test {

class EntriesTest : public DirectoryFixture {
protected:
    std::string Dn(const std::string& name) const { return "cn=" + name + "," + base_; }

    std::string Contents(const std::string& dn) {
        FileBuffer buffer;
        EXPECT_EQ(1, Connected().ReadFileContents(dn, buffer));
        return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
    }

    std::string text_ = "junk";
};

}  // namespace depot::test
