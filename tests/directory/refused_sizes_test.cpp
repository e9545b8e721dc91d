#include "directory/refused_sizes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/directory_client.h"

namespace depot {
namespace {

TEST(RefusedSizesTest, NameIsBlamedWhereItIsLongAndTheServerRefusesAValue) {
    for (const std::uint32_t code : {LDAP_CONSTRAINT_VIOLATION, LDAP_INVALID_SYNTAX}) {
        EXPECT_FALSE(RefusedName(code, "short.kra", 64));
        const std::optional<Error> refused = RefusedName(code, "long.kra", 65);
        ASSERT_TRUE(refused);
        EXPECT_EQ(code, refused->code);
        EXPECT_EQ(Reason::kBadName, refused->reason);
        EXPECT_EQ(
            "\"long.kra\": the directory does not take this name of 65 characters. "
            "Some take 64 at most.",
            refused->text);
    }
    EXPECT_FALSE(RefusedName(LDAP_INSUFFICIENT_RIGHTS, "long.kra", 65));
    EXPECT_FALSE(RefusedName(LDAP_SUCCESS, "long.kra", 65));
}

TEST(RefusedSizesTest, FileIsNamedWithItsBytes) {
    const Error refused = RefusedContents("a.kra", 3145728);
    EXPECT_EQ(std::uint32_t{LDAP_ADMIN_LIMIT_EXCEEDED}, refused.code);
    EXPECT_THAT(refused.text, testing::HasSubstr("these 3145728 bytes"));
}

}  // namespace
}  // namespace depot
