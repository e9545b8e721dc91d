// How users log on at whichever server the program runs with.
#include "directory/ldap_items.h"
#include "servers/server_rows.h"
#include "support/directory_fixture.h"
#include "support/directory_kind.h"

namespace depot::test {
namespace {

using ServerLogOnTest = DirectoryFixture;

TEST_F(ServerLogOnTest, PromptShowsTheFormOfNamesThatTheServerWants) {
    const bool isDomain = SharedKind() == DirectoryKind::kSamba;
    Row("show users the form of names that it wants");
    if (isDomain) But("accounts of the domain");
    CLDAPItems& items = Make("", "");
    prompt_.showsExamples = true;
    prompt_.Type(kEditor, kEditorPassword);
    EXPECT_THAT(items.Connection().Open(), IsDone());
    EXPECT_THAT(prompt_.examples,
                testing::ElementsAre(isDomain ? "mary.walker@farrow.test"
                                              : "cn=Mary Walker," + std::string(kSuffix)));
}

}  // namespace
}  // namespace depot::test
