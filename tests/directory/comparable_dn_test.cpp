#include "directory/comparable_dn.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

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

TEST(AreOneNameTest, BlanksAndLettersMakeNoDifference) {
    EXPECT_TRUE(AreOneName("a, b", "A,  B "));
    EXPECT_TRUE(AreOneName("", ""));
    EXPECT_FALSE(AreOneName("a", "b"));
    EXPECT_FALSE(AreOneName("\xB2", "2"));
    EXPECT_FALSE(AreOneName("a\\2c", "a,"));
}

TEST(HasVariantsTest, NamesBeyondAsciiHaveThem) {
    EXPECT_FALSE(HasVariants(""));
    EXPECT_FALSE(HasVariants("a, b\\2c~\\"));
    EXPECT_TRUE(HasVariants("a\xB2"));
    EXPECT_TRUE(HasVariants("a\\C2\\B2"));
}

using DoubtTest = std::tuple<const char*, const char*, const char*, const char*>;

TEST(FindDoubtTest, EntriesAreComparedAtTheLevelOfTheHigherOne) {
    const DoubtTest tests[] = {
        {"cn=\xB2.kra,dc=x", "cn=2.kra,dc=x", "cn=\xB2.kra,dc=x", "cn=2.kra,dc=x"},
        {"cn=a,cn=\xB2,dc=x", "cn=a,cn=2,dc=x", "cn=a,cn=\xB2,dc=x", "cn=a,cn=2,dc=x"},
        {"cn=2,dc=x", "cn=a,cn=b,cn=\xB2, dc=x", "cn=2,dc=x", "cn=\xB2, dc=x"},
        {"cn=a,cn=\xB2,dc=x", "CN=2,dc=x", "cn=\xB2,dc=x", "CN=2,dc=x"},
        {"cn=a,ou=\xB2", "cn=A,ou=2", "cn=a,ou=\xB2", "cn=A,ou=2"},
        {"cn=\\C2\\B2,dc=x", "cn=2,dc=x", "cn=\\C2\\B2,dc=x", "cn=2,dc=x"},
    };
    for (const auto& [dn, other, first, second] : tests) {
        SCOPED_TRACE(dn);
        const auto doubt = FindDoubt(dn, other);
        ASSERT_TRUE(doubt);
        EXPECT_EQ(first, doubt->first);
        EXPECT_EQ(second, doubt->second);
    }
}

TEST(FindDoubtTest, NamesThatDifferInAsciiOrNotAtAllAreInNoDoubt) {
    const std::pair<const char*, const char*> tests[] = {
        {"cn=a,dc=x", "cn=b,dc=x"},
        {"cn=a,cn=\xB2,dc=x", "cn=b,cn=2,dc=x"},
        {"cn=\xB2,dc=x", "CN=\xB2, dc=x"},
        {"cn=\xB2,dc=x", "cn=a,cn=\xB2,dc=x"},
        {"cn=\xB2,dc=x", "ou=2,dc=x"},
        {"cn=a\\,b,dc=x", "cn=ab,dc=x"},
        {"", "cn=\xB2"},
        {"", ""},
    };
    for (const auto& [dn, other] : tests) EXPECT_FALSE(FindDoubt(dn, other)) << dn;
}

}  // namespace
}  // namespace depot
