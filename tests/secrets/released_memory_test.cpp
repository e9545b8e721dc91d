// No memory that the program gives back holds a password. What the client library keeps of it is
// that library's own: it allocates elsewhere.
#include <cstring>
#include <optional>
#include <string>

#include "config/depot_path.h"
#include "platform/wide_text.h"
#include "support/allocation_count.h"
#include "support/directory_fixture.h"
#include "support/scratch.h"
#include "support/stored_credential.h"

namespace depot {
namespace {

using test::Fails;
using test::ReleasedBlocksWithText;
using testing::SizeIs;

// Too long to lie in a text itself.
constexpr char kPassword[] = "Wq7!zT0pXv93#mLk&dR5sYb2^hNf8@cJ";
constexpr char kKey[] = "Software\\DepotTests\\ReleasedMemory";

class ReleasedMemoryTest : public test::DirectoryFixture {
protected:
    ~ReleasedMemoryTest() override { test::LookInReleasedBlocks(nullptr); }

    // What a test prepares before has copies of its own.
    static void Look() { test::LookInReleasedBlocks(kPassword); }

    // Forgets all that there is of a log-on.
    void Drop() {
        prompt_.shown.clear();
        prompt_.answers.clear();
        items_.reset();
        location_.reset();
    }
};

TEST_F(ReleasedMemoryTest, PasswordThatIsLeftBehindIsFound) {
    Look();
    { const std::string narrow(kPassword); }
    EXPECT_EQ(1u, ReleasedBlocksWithText());
    { const std::wstring wide = WideFromAnsi(kPassword); }
    EXPECT_EQ(2u, ReleasedBlocksWithText());
}

TEST_F(ReleasedMemoryTest, RecordOfALocationLeavesNothing) {
    const test::ScratchKey key(HKEY_CURRENT_USER, kKey);
    key.Text("", "Path1", "dc=farrow");
    key.Dword("", "Type1", 1);
    key.Text("", "Password1", kPassword);
    const RegistryKey opened = RegistryKey::Open(HKEY_CURRENT_USER, kKey).value();
    Look();
    {
        CDepotPath location(nullptr);
        ASSERT_THAT(location.LoadFromRegistry(opened, 1), test::IsDone());
        EXPECT_TRUE(location.password == kPassword);
        const std::unique_ptr<CDepotPath> clone = location.Clone();
        CDepotPath copy(nullptr);
        copy.CopyFrom(clone.get());
        EXPECT_THAT(copy.LoadFromRegistry(opened, 1), test::IsDone());
        copy.password = std::string(200, 'x');
        EXPECT_TRUE(clone->password == kPassword);
        clone->Reset(nullptr);
        EXPECT_TRUE(clone->password.empty());
    }
    EXPECT_EQ(0u, ReleasedBlocksWithText());
}

TEST_F(ReleasedMemoryTest, StoredCredentialLeavesNothing) {
    const test::CredentialScope scope("ReleasedMemory");
    scope.Store("anna", kPassword);
    Look();
    {
        const std::optional<StoredCredential> stored = ReadCredential(scope.Target());
        ASSERT_TRUE(stored);
        EXPECT_TRUE(stored->password == kPassword);
        EXPECT_EQ(0u, WriteCredential(scope.Target(), *stored));
    }
    EXPECT_EQ(0u, ReleasedBlocksWithText());
}

TEST_F(ReleasedMemoryTest, ConversionLeavesNothingOfWhatIsOnTheWay) {
    const std::wstring wide = WideFromUtf8(std::string(kPassword) + "\u00FC");
    const std::string utf8 = Utf8FromWide(wide);
    Look();
    {
        SecretText first = ExactAnsiFromWide(wide).value_or("");
        SecretText second = ExactAnsiFromUtf8(utf8).value_or("");
        EXPECT_TRUE(first == second);
    }
    EXPECT_EQ(0u, ReleasedBlocksWithText());
}

TEST_F(ReleasedMemoryTest, LogOnLeavesNothing) {
    Make(test::kEditor, kPassword);
    const std::string user = test::kEditor;
    prompt_.Type(user, kPassword);
    Look();
    EXPECT_THAT(items_->ConnectLocation(&text_), Fails());
    EXPECT_THAT(prompt_.shown, SizeIs(2));
    EXPECT_TRUE(prompt_.shown[0].password == kPassword);
    Drop();
    EXPECT_EQ(0u, ReleasedBlocksWithText());
}

TEST_F(ReleasedMemoryTest, PasswordOfAnotherProcessLeavesNothing) {
    Make("", "").Connection().Shared().SetUserName("anna");
    std::memcpy(Info().password, kPassword, sizeof(kPassword));
    Look();
    EXPECT_THAT(items_->PromptForCredentials(), test::IsDone());
    EXPECT_TRUE(items_->Location().password == kPassword);
    EXPECT_THAT(items_->ConnectLocation(&text_), Fails());
    SecretText other = "another one";
    items_->Connection().Shared().SetPassword(other);
    Drop();
    EXPECT_EQ(0u, ReleasedBlocksWithText());
}

TEST_F(ReleasedMemoryTest, KeptConnectionLeavesNothingOfWhatItIsComparedBy) {
    Make(test::kEditor, test::kEditorPassword);
    location_->keepConnection = 60;
    ASSERT_THAT(items_->ConnectLocation(&text_), test::IsDone());
    location_->password = kPassword;
    Look();
    items_->Connection().Release();
    EXPECT_THAT(items_->ConnectLocation(&text_), Fails());
    Drop();
    EXPECT_EQ(0u, ReleasedBlocksWithText());
}

}  // namespace
}  // namespace depot
