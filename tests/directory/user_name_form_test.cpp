#include "directory/user_name_form.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

constexpr char kActiveDirectory[] = "1.2.840.113556.1.4.800";

TEST(UserNameExampleTest, ServerOfEntriesTakesTheNameOfOne) {
    EXPECT_EQ("cn=Mary Walker,dc=farrow,dc=test",
              UserNameExample({}, {"dc=farrow,dc=test", "dc=other"}));
    EXPECT_EQ("cn=Mary Walker,O=Farrow", UserNameExample({"1.2.3"}, {"O=Farrow"}));
}

TEST(UserNameExampleTest, ServerOfADomainTakesItsAccounts) {
    EXPECT_EQ("mary.walker@corp.farrow.test",
              UserNameExample({"1.2.3", kActiveDirectory}, {"DC=corp,DC=Farrow,DC=test"}));
    EXPECT_EQ("mary.walker@test", UserNameExample({kActiveDirectory}, {" dc = test "}));
}

TEST(UserNameExampleTest, DomainServerWithoutADomainTakesTheNameOfAnEntry) {
    EXPECT_EQ("cn=Mary Walker,O=Farrow", UserNameExample({kActiveDirectory}, {"O=Farrow"}));
    EXPECT_EQ("cn=Mary Walker,DC=a,O=b", UserNameExample({kActiveDirectory}, {"DC=a,O=b"}));
}

TEST(UserNameExampleTest, ServerThatDoesNotSayEnoughGivesNone) {
    EXPECT_EQ("", UserNameExample({}, {}));
    EXPECT_EQ("", UserNameExample({kActiveDirectory}, {}));
    EXPECT_EQ("", UserNameExample({}, {""}));
}

TEST(UserNameExampleTest, WhatCannotBeShownInALineGivesNone) {
    EXPECT_EQ("", UserNameExample({}, {"o=" + std::string(100'000, 'x')}));
    EXPECT_EQ("", UserNameExample({}, {"o=a\nb"}));
    EXPECT_EQ("", UserNameExample({kActiveDirectory}, {"dc=" + std::string(100'000, 'x')}));
    EXPECT_EQ("", UserNameExample({kActiveDirectory}, {"dc=a\\0Ab"}));
    EXPECT_EQ("cn=Mary Walker,o=%s%n", UserNameExample({}, {"o=%s%n"}));
}

}  // namespace
}  // namespace depot
