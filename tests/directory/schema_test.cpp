// The schema as administrators load it into a server that is running.
#include "support/directory_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::IsDone;

TEST(SchemaTest, LoadedIntoALiveConfigurationServesFoldersAndFiles) {
    test::DirectoryServer server("live-schema");
    test::ForgetServer(server.Port());
    CDepotPath location = server.Location();
    CLDAPItems items(&location);
    ASSERT_THAT(items.ConnectLocation(nullptr), IsDone());
    const std::string folder = std::string("cn=sub,") + test::kSuffix;
    const std::string file = "cn=a.krc," + folder;
    const std::string bytes("\x80\0text", 6);
    EXPECT_THAT(items.AddFolderEntry(folder, "sub", nullptr), IsDone());
    EXPECT_THAT(
        items.AddFileEntry(file, "a.krc", bytes.data(), static_cast<std::uint32_t>(bytes.size())),
        IsDone());
    FileBuffer buffer;
    EXPECT_THAT(items.ReadFileContents(file, buffer), IsDone());
    EXPECT_EQ(bytes, std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length));
}

TEST(SchemaTest, LoadedIntoALiveConfigurationOutlivesARestart) {
    test::DirectoryServer server("live-schema");
    server.AddFolder("sub", test::kSuffix);
    server.Stop();
    server.Continue();
    server.AddFile("a.krc", std::string("cn=sub,") + test::kSuffix, "x");
    EXPECT_TRUE(server.Holds(std::string("cn=a.krc,cn=sub,") + test::kSuffix));
}

}  // namespace
}  // namespace depot
