// The schema as administrators load it into a server that is running.
#include "support/directory_fixture.h"

namespace depot {
namespace {

TEST(SchemaTest, LoadedIntoALiveConfigurationServesFoldersAndFiles) {
    test::DirectoryServer server("live-schema");
    test::ForgetServer(server.Port());
    CDepotPath location = server.Location();
    CLDAPItems items(&location);
    ASSERT_EQ(1, items.ConnectLocation(nullptr));
    const std::string folder = std::string("cn=sub,") + test::kSuffix;
    const std::string file = "cn=a.krc," + folder;
    const std::string bytes("\x80\0text", 6);
    EXPECT_EQ(1, items.AddFolderEntry(folder, "sub", nullptr));
    EXPECT_EQ(0u, items.AddFileEntry(file, "a.krc", bytes.data(),
                                     static_cast<std::uint32_t>(bytes.size())));
    FileBuffer buffer;
    EXPECT_EQ(1, items.ReadFileContents(file, buffer));
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
