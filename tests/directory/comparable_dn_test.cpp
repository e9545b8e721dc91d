#include "directory/comparable_dn.h"

#include <gtest/gtest.h>

#include "support/code_pages.h"

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

TEST(ComparableDNTest, EveryWayOfEscapingIsOneName) {
    for (const char* dn : {"cn=a\\,b,dc=x", "CN=A\\2CB,dc=x", "cn=\\61\\2c\\42 , dc=x"}) {
        EXPECT_EQ("cn=a\\2cb,dc=x", ComparableDN(dn)) << dn;
    }
    EXPECT_EQ(ComparableDN("cn=a=b,dc=x"), ComparableDN("cn=a\\=b,dc=x"));
    EXPECT_EQ(ComparableDN("cn=#a,dc=x"), ComparableDN("cn=\\#a,dc=x"));
    EXPECT_EQ(ComparableDN("cn= a ,dc=x"), ComparableDN("cn=\\20a\\20,dc=x"));
    EXPECT_EQ(ComparableDN("cn=a\\ b,dc=x"), ComparableDN("cn=a b,dc=x"));
}

TEST(ComparableDNTest, EscapedSignsEndNothing) {
    EXPECT_NE(ComparableDN("cn=a\\,cn=b,dc=x"), ComparableDN("cn=a,cn=b,dc=x"));
    EXPECT_FALSE(ComparableDN("cn=a\\,cn=b,dc=x").ends_with("," + ComparableDN("cn=b,dc=x")));
    EXPECT_NE(ComparableDN("cn=\\5C2c,dc=x"), ComparableDN("cn=\\2c,dc=x"));
    EXPECT_NE(ComparableDN("cn=a \\= b,dc=x"), ComparableDN("cn=a\\=b,dc=x"));
}

TEST(ComparableDNTest, SecondBytesBeginNoEscape) {
    const test::CodePageScope scope(932);
    EXPECT_NE(ComparableDN("cn=\x95\\2c,dc=x"), ComparableDN("cn=\x95,,dc=x"));
    EXPECT_EQ("cn=\x95\\,dc=x", ComparableDN("cn=\x95\\ , dc=x"));
}

}  // namespace
}  // namespace depot
