// What is wrong with paths, servers and bases, as texts.
#include "depotctl/location_checks.h"

#include <gtest/gtest.h>

#include "support/random_text.h"

namespace depot::ctl {
namespace {

std::string Only(const Findings& findings) {
    EXPECT_LE(findings.size(), 1u);
    return findings.empty() ? "" : findings.front().text;
}

std::string Folder(const std::string& path) {
    return Only(CheckFolder("Path1", {path, path, path.size()}));
}

TEST(FolderCheckTest, FullPathsAreGood) {
    for (const char* path :
         {"C:\\Work", "c:\\a b\\c.d\\", "\\\\server\\share", "D:\\.config\\..\\x",
          "\\\\server\\share\\folder\\", "C:\\B\xC3\xBCro", "C:\\50% off"}) {
        EXPECT_EQ("", Folder(path)) << path;
    }
}

TEST(FolderCheckTest, EveryBadRootIsNamed) {
    const struct {
        const char *path, *text;
    } rows[] = {
        {"", "it is empty"},
        {"Work", "it is not a full path and depends on the current folder"},
        {"..\\Work", "it is not a full path and depends on the current folder"},
        {"\\Work", "it is not a full path and depends on the current folder"},
        {"C:\\", "it is a whole drive"},
        {"C:", "it depends on the current folder of the drive"},
        {"C:Work", "it depends on the current folder of the drive"},
        {"\\\\", "it names a server without a share"},
        {"\\\\server", "it names a server without a share"},
        {"\\\\server\\", "it names a server without a share"},
        {"\\\\\\\\server\\\\share", "it begins with more than two backslashes"},
        {"C:\\\\Work\\\\x", "it has two backslashes in a row"},
        {"\\\\server\\share\\\\x", "it has two backslashes in a row"},
        {"C:/Work", "it has slashes, by which files are not found to lie in this depot"},
        {"C:\\Work/x", "it has slashes, by which files are not found to lie in this depot"},
        {"\"C:\\Work\"", "it is not a full path and depends on the current folder"},
        {"C:\\Work?", "it has characters that no folder's name can have"},
        {"C:\\a\\D:\\b", "it has characters that no folder's name can have"},
        {"C:\\Work ", "one of its folders begins with a blank or ends with a blank or a dot"},
        {"C:\\Work.\\x", "one of its folders begins with a blank or ends with a blank or a dot"},
        {"file:///C:/Work", "it is an address, not a folder"},
        {"cn=Profiles,dc=x",
         "it is the name of an entry in a directory, but the location is a folder"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.text, Folder(row.path)) << row.path;
}

TEST(FolderCheckTest, PathThatIsTooLongForFilesIsNamed) {
    EXPECT_EQ("", Folder("C:\\" + std::string(196, 'x')));
    EXPECT_NE(std::string::npos, Folder("C:\\" + std::string(197, 'x')).find("leaves little room"));
    EXPECT_NE(std::string::npos, Folder("C:\\" + std::string(256, 'x')).find("259 bytes of"));
    EXPECT_EQ("it has 260 bytes; a path has at most 259", Folder("C:\\" + std::string(257, 'x')));
}

TEST(FolderCheckTest, LengthCountsInTheBytesOfTheCodePage) {
    // A hundred Japanese characters, which take two bytes each in their code page.
    std::string path = "C:\\";
    for (int count = 0; count < 100; ++count) path += "\xE8\xA1\xA8";
    EXPECT_NE(std::string::npos,
              Only(CheckFolder("Path1", {path, path, 203})).find("it has 203 bytes of"));
    EXPECT_EQ("", Only(CheckFolder("Path1", {path, path, 199})));
}

TEST(FolderCheckTest, MacrosThatStandAreNamed) {
    const auto expanded = [](const char* path) {
        return Only(CheckFolder("Path1", {"$X$", path, std::string(path).size()}));
    };
    EXPECT_EQ("$FATHOMEDIR$ has no value on this machine and stays as it stands",
              expanded("$FATHOMEDIR$\\x"));
    EXPECT_EQ("$UserDir$ is not expanded: letter case counts", expanded("$UserDir$\\x"));
    EXPECT_EQ("there is no macro $NOSUCH$; it stays as it stands", expanded("C:\\$NOSUCH$"));
    EXPECT_EQ("the environment variable %COMPANY% is not set", expanded("%COMPANY%\\x"));
    EXPECT_EQ("$ALLUSER-DESKTOP$ has no value on this machine and stays as it stands",
              expanded("$ALLUSER-DESKTOP$"));
    EXPECT_EQ("", expanded("C:\\a$\\b$c"));
    EXPECT_EQ(2u, CheckMacros("Path1", "$A$$B$").size());
}

TEST(FolderCheckTest, MacrosThatStandForNothingAreNamed) {
    EXPECT_EQ("it stands for nothing on this machine",
              Only(CheckFolder("Path1", {"$USERDIR$", "", 0})));
    EXPECT_EQ("it begins with a macro that stands for nothing on this machine",
              Only(CheckFolder("Path1", {"$USERDIR$\\x", "\\x", 2})));
}

TEST(FolderCheckTest, HasMacrosNeedsAWholeName) {
    EXPECT_TRUE(HasMacros("$A$"));
    EXPECT_TRUE(HasMacros("C:\\%X_Y%\\z"));
    EXPECT_FALSE(HasMacros("C:\\$\\$$%"));
    EXPECT_FALSE(HasMacros("100%"));
    EXPECT_TRUE(HasMacros("%ProgramFiles(x86)%\\x"));
    EXPECT_FALSE(HasMacros("$A(B)$"));
}

// Whatever stands in the registry is reported in texts with advice.
TEST(LocationCheckTest, RandomTextsAreAlwaysReportedWithAdvice) {
    test::RandomTexts random(7);
    const std::vector<std::string> pieces = {"\\", "/",   ":",  "C:",  "$", "%",
                                             "a",  "dc=", ",",  "=",   " ", ".",
                                             "..", "://", "\"", "\\,", "1", "USERDIR"};
    for (int round = 0; round < 20000; ++round) {
        const std::string text = round % 2 == 0 ? random.Pieces(12, pieces) : random.Bytes(20);
        const std::string other = random.Pieces(6, pieces);
        for (const Findings& findings :
             {CheckHost("Host1", text), CheckBase("Path1", text),
              CheckFolder("Path1", {text, other, other.size()}),
              CheckFolder("Path1", {text, text, text.size()}), CheckMacroNames("Path1", text)}) {
            for (const Finding& finding : findings) {
                EXPECT_FALSE(finding.text.empty()) << text;
                EXPECT_FALSE(finding.advice.empty()) << text;
            }
        }
    }
}

TEST(HostCheckTest, ServersAreNamesWithOrWithoutPorts) {
    for (const char* host :
         {"ldap", "ldap.example.com", "127.0.0.1", "a:389 b:636", "::1", "a_b"}) {
        EXPECT_EQ("", Only(CheckHost("Host1", host))) << host;
    }
}

TEST(HostCheckTest, EveryBadServerIsNamed) {
    const struct {
        const char *host, *text;
    } rows[] = {
        {"", "no server is named"},
        {"  ", "no server is named"},
        {"ldap://server", "\"ldap://server\" is an address"},
        {"server:", "\"server:\" has no port behind the colon"},
        {"server:ldap", "\"server:ldap\" has no port behind the colon"},
        {"server:0", "\"server:0\" has no port behind the colon"},
        {"server:65536", "\"server:65536\" has no port behind the colon"},
        {"server:999999999999", "\"server:999999999999\" has no port behind the colon"},
        {"server/x", "\"server/x\" is no server's name"},
        {"a,b", "\"a,b\" is no server's name"},
        {"\\\\server", "\"\\\\server\" is no server's name"},
        {":389", "\":389\" is no server's name"},
    };
    for (const auto& row : rows) EXPECT_EQ(row.text, Only(CheckHost("Host1", row.host)));
}

TEST(BaseCheckTest, NamesOfEntriesAreGood) {
    for (const char* base :
         {"dc=x", "cn=Profiles, dc=example ,dc=com", "OU=\"a, b\",o=c",
          "cn=Profiles,dc=x\\Sessions", "2.5.4.3=x", "cn=a+sn=b,dc=x", "cn=B\xC3\xBCro,dc=x"}) {
        EXPECT_EQ("", Only(CheckBase("Path1", base))) << base;
    }
}

TEST(BaseCheckTest, EveryBadBaseIsNamed) {
    const struct {
        const char *base, *text;
    } rows[] = {
        {"", "it is empty"},
        {"example.com", "it is no valid name of an entry"},
        {"cn=Profiles,,dc=x", "it is no valid name of an entry"},
        {"cn=Profiles,dc=x,", "it is no valid name of an entry"},
        {"cn=,dc=x", "it is no valid name of an entry"},
        {"=x,dc=x", "it is no valid name of an entry"},
        {"c n=x", "it is no valid name of an entry"},
        {"\\cn=x", "it is no valid name of an entry"},
        {"ldap://server/dc=x", "it is an address"},
        {"C:\\Work", "it is a folder's path, but the location is a directory"},
        {"\\\\server\\share", "it is a folder's path, but the location is a directory"},
        {"ou=a\\, b,dc=x", "a backslash separates folders here and cannot escape a character"},
        {"ou=a\\2Cb,dc=x", "a backslash separates folders here and cannot escape a character"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.text, Only(CheckBase("Path1", row.base))) << row.base;
}

}  // namespace
}  // namespace depot::ctl
