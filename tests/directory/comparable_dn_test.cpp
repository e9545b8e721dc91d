#include "directory/comparable_dn.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

TEST(ComparableDNTest, BlanksAndLettersMakeNoDifference) {
    for (const char* dn :
         {"cn=a b,dc=x", "CN = A  B , DC=X", " cn= a b ,dc=x ", "cn=a   b,dc= x"}) {
        EXPECT_EQ("cn=a b,dc=x", ComparableDN(dn)) << dn;
    }
    EXPECT_EQ("cn=ab,dc=x", ComparableDN("cn=ab,dc=x"));
    EXPECT_EQ("", ComparableDN("  "));
}

}  // namespace
}  // namespace depot
