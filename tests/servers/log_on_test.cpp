// How users log on at whichever server the program runs with.
#include "directory/ldap_items.h"
#include "servers/server_rows.h"
#include "support/directory_fixture.h"
#include "support/directory_kind.h"

namespace depot::test {
namespace {

class ServerLogOnTest : public DirectoryFixture {};

TEST_F(ServerLogOnTest, PromptShowsTheFormOfNamesThatTheServerWants) {
    const bool isDomain = SharedKind() == DirectoryKind::kSamba;
    Row("show users the form of names that it wants");
    if (isDomain) But("accounts of the domain");
    CDepotPath location = server_.Location();
    location.username = {};
    location.password = {};
    location_ = location.Clone();
    items_ = std::make_unique<CLDAPItems>(location_.get());
    items_->Connection().SetPrompt(&prompt_);
    prompt_.showsExamples = true;
    prompt_.Type(kEditor, kEditorPassword);
    EXPECT_THAT(items_->Connection().Open(), IsDone());
    EXPECT_THAT(prompt_.examples,
                testing::ElementsAre(isDomain ? "mary.walker@farrow.test"
                                              : "cn=Mary Walker," + std::string(kSuffix)));
}

}  // namespace
}  // namespace depot::test
