#include "directory/dn.h"

#include <gtest/gtest.h>

#include "support/code_pages.h"
#include "support/random_text.h"

#include <random>

namespace depot {
namespace {

const NamingAttributes kDefaults = {"CN", "CN"};
const NamingAttributes kDifferent = {"OU", "UID"};

struct PathRow {
    const char* path;
    const char* dn;
};

TEST(PathToDNTest, PathsBecomeEntryNames) {
    const PathRow rows[] = {
        {"base", "base"},
        {"base\\", "base"},
        {"base\\sub\\a.krc", "CN=a.krc,CN=sub,base"},
        {"base\\sub\\", "CN=sub,base"},
        {"dc=x,dc=y\\v1.2\\a", "CN=a,CN=v1.2,dc=x,dc=y"},
        {"", ""},
        {"\\", ""},
        {"base\\a,b+c=d.krc", "CN=a\\,b\\+c\\=d.krc,base"},
        {"base\\#1\\ a .krc", "CN=\\20a .krc,CN=\\#1,base"},
        {"o=Farrow\\a.krc", "CN=a.krc,o=Farrow"},
        {"base\\\\a", "CN=a,CN=,base"},
        {"base\\sub\\\\", "CN=,CN=sub,base"},
    };
    for (const PathRow& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(row.dn, PathToDN(row.path, kDefaults));
    }
}

TEST(PathToDNTest, ParentStepsTakeTheNameBeforeThemAway) {
    const PathRow rows[] = {
        {"base\\a\\..\\b", "CN=b,base"},
        {"base\\a\\..", "base"},
        {"base\\a\\..\\", "base"},
        {"base\\a\\b\\..\\..\\c.krc", "CN=c.krc,base"},
        {"base\\a\\..\\b\\..\\c", "CN=c,base"},
        {"base\\a\\..b\\c", "CN=c,CN=..b,CN=a,base"},
        {"base\\a...\\b", "CN=b,CN=a...,base"},
    };
    for (const PathRow& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(row.dn, PathToDN(row.path, kDefaults));
    }
}

TEST(PathToDNTest, ParentStepsNeverTakeTheBaseAway) {
    EXPECT_EQ("CN=..,base", PathToDN("base\\..", kDefaults));
    EXPECT_EQ("CN=x,CN=..,base", PathToDN("base\\..\\x", kDefaults));
    EXPECT_EQ("CN=..,base", PathToDN("base\\a\\..\\..", kDefaults));
    EXPECT_EQ("CN=..,", PathToDN("\\..", kDefaults));
}

TEST(PathToDNTest, DotChoosesTheAttributeAlsoWhereTheAttributesDiffer) {
    EXPECT_EQ("UID=a.krc,OU=sub,base", PathToDN("base\\sub\\a.krc", kDifferent));
    EXPECT_EQ("UID=v1.2,base", PathToDN("base\\v1.2", kDifferent));
}

TEST(PathToDNTest, AnyTextEndsInAText) {
    std::mt19937 random(7);
    const std::string alphabet = "\\\\\\..ab,=";
    for (int round = 0; round < 20000; ++round) {
        std::string path(random() % 24, '\0');
        for (char& c : path) c = alphabet[random() % alphabet.size()];
        const std::string dn = PathToDN(path, kDefaults);
        // What is left of backslashes are escapes.
        for (std::size_t at = 0; at < dn.size(); ++at) {
            if (dn[at] == '\\') {
                ASSERT_LT(at + 1, dn.size()) << path;
                EXPECT_TRUE(dn[at + 1] == ',' || dn[at + 1] == '=') << path;
                ++at;
            }
        }
    }
}

TEST(SplitFirstComponentTest, WithOneAttributeTheDotDistinguishesFilesFromFolders) {
    const auto file = SplitFirstComponent("CN=report.krc", kDefaults);
    ASSERT_TRUE(file);
    EXPECT_EQ("report.krc", file->name);
    EXPECT_FALSE(file->isFolder);
    const auto folder = SplitFirstComponent("CN=reports", kDefaults);
    ASSERT_TRUE(folder);
    EXPECT_EQ("reports", folder->name);
    EXPECT_TRUE(folder->isFolder);
}

TEST(SplitFirstComponentTest, FolderWithADotInItsNameIsReadAsAFile) {
    EXPECT_FALSE(SplitFirstComponent("CN=v1.2", kDefaults)->isFolder);
}

TEST(SplitFirstComponentTest, DifferentAttributesDecideAlone) {
    EXPECT_FALSE(SplitFirstComponent("UID=plain", kDifferent)->isFolder);
    EXPECT_EQ("plain", SplitFirstComponent("UID=plain", kDifferent)->name);
    EXPECT_TRUE(SplitFirstComponent("OU=v1.2", kDifferent)->isFolder);
    EXPECT_EQ("v1.2", SplitFirstComponent("OU=v1.2", kDifferent)->name);
}

TEST(SplitFirstComponentTest, LetterCaseOfTheAttributeDoesNotMatter) {
    EXPECT_EQ("a.krc", SplitFirstComponent("cn=a.krc", kDefaults)->name);
    EXPECT_TRUE(SplitFirstComponent("cn=a", NamingAttributes{"cn", "CN"})->isFolder);
}

TEST(SplitFirstComponentTest, AnotherAttributeIsNoEntry) {
    EXPECT_FALSE(SplitFirstComponent("dc=farrow", kDefaults));
    EXPECT_FALSE(SplitFirstComponent("CN=a", kDifferent));
    EXPECT_FALSE(SplitFirstComponent("", kDefaults));
}

TEST(SplitFirstComponentTest, ExtensionIsRemovedOnlyFromFilesAndOnlyOnRequest) {
    const auto stripped = [](const char* component, const NamingAttributes& attributes) {
        return SplitFirstComponent(component, attributes, FileExtension::kStrip)->name;
    };
    EXPECT_EQ("x.tar", stripped("CN=x.tar.gz", kDefaults));
    EXPECT_EQ("plain", stripped("UID=plain", kDifferent));
    EXPECT_EQ("v1.2", stripped("OU=v1.2", kDifferent));
    EXPECT_EQ("x.tar.gz", SplitFirstComponent("CN=x.tar.gz", kDefaults)->name);
}

TEST(SplitFirstComponentTest, EscapesAreNoPartOfTheName) {
    for (const char* component : {"CN=a\\,b.krc", "CN=a\\2Cb.krc", "cn=\\61\\2cb\\2ekrc"}) {
        const auto file = SplitFirstComponent(component, kDefaults);
        ASSERT_TRUE(file) << component;
        EXPECT_EQ("a,b.krc", file->name);
        EXPECT_FALSE(file->isFolder);
    }
    // An escaped sign makes no attribute.
    const auto folder = SplitFirstComponent("OU=uid\\=x", kDifferent);
    ASSERT_TRUE(folder);
    EXPECT_EQ("uid=x", folder->name);
    EXPECT_TRUE(folder->isFolder);
}

TEST(EntryDNTest, OnlyTheNameIsEscaped) {
    EXPECT_EQ("CN=a\\,b\\+c,dc=x+o=y", EntryDN("CN", "a,b+c", "dc=x+o=y"));
    EXPECT_EQ("CN=Report 1.krc,dc=x", EntryDN("CN", "Report 1.krc", "dc=x"));
}

TEST(JoinComponentsTest, JoinsFromTheGivenIndexOn) {
    const std::vector<std::string> components = {"CN=a", "CN=b", "dc=x"};
    EXPECT_EQ("CN=a,CN=b,dc=x", JoinComponents(components, 0));
    EXPECT_EQ("dc=x", JoinComponents(components, 2));
    EXPECT_EQ("", JoinComponents(components, 3));
}

TEST(DecodeNonAsciiEscapesTest, OnlyRunsAboveAsciiAreConverted) {
    const auto convert = [](std::string_view bytes) {
        return std::optional<std::string>("<" + std::string(bytes) + ">");
    };
    EXPECT_EQ("CN=r<\xC3\xA9>s", DecodeNonAsciiEscapes("CN=r\\C3\\A9s", convert));
    EXPECT_EQ("<\xC3\xA9\xC3\xA8>", DecodeNonAsciiEscapes("\\c3\\a9\\C3\\A8", convert));
    EXPECT_EQ("a\\2Cb\\,c\\", DecodeNonAsciiEscapes("a\\2Cb\\,c\\", convert));
    EXPECT_EQ("\\C", DecodeNonAsciiEscapes("\\C", convert));
    EXPECT_EQ("", DecodeNonAsciiEscapes("", convert));
}

TEST(DecodeNonAsciiEscapesTest, EscapedBackslashBeginsNoRun) {
    const auto keep = [](std::string_view utf8) { return std::optional<std::string>(utf8); };
    EXPECT_EQ("CN=a\\\\C3\\\\A9\xC3\xA9", DecodeNonAsciiEscapes("CN=a\\\\C3\\\\A9\\C3\\A9", keep));
}

TEST(DecodeNonAsciiEscapesTest, RunThatCannotBeConvertedStays) {
    const auto refuse = [](std::string_view) { return std::optional<std::string>(); };
    EXPECT_EQ("a\\FF\\FEb", DecodeNonAsciiEscapes("a\\FF\\FEb", refuse));
}

TEST(UnsafeNamesTextTest, ReportsHowManyEntriesWereLeftOut) {
    EXPECT_EQ("", UnsafeNamesText(0));
    EXPECT_EQ("1 entry was left out: the name cannot be the name of a local file.",
              UnsafeNamesText(1));
    EXPECT_EQ("12 entries were left out: the name cannot be the name of a local file.",
              UnsafeNamesText(12));
}

TEST(ServerKeyTest, IsTheLowerCasedHostAndThePort) {
    EXPECT_EQ("ldap.example.com:389", ServerKey("LDAP.Example.COM", 389));
    EXPECT_EQ(":636", ServerKey("", 636));
}

TEST(ServerKeyTest, SecuredServerHasAKeyThatNoHostGives) {
    EXPECT_EQ("TLS ldap.example.com:389", SecuredServerKey("LDAP.Example.COM", 389));
    EXPECT_NE(SecuredServerKey("a", 389), ServerKey("TLS a", 389));
    EXPECT_EQ(229u, SecuredServerKey(std::string(300, 'a'), 389).size());
}

TEST(ServerKeyTest, FitsIntoAnObjectsName) {
    const std::string fits(229 - 4, 'a');
    EXPECT_EQ(fits + ":389", ServerKey(fits, 389));
    EXPECT_EQ(fits + "a:38", ServerKey(fits + "a", 389));
    EXPECT_EQ("a/b:389", ServerKey("a\\b", 389));
}

TEST(RandomNamesTest, NoNameMakesTheFunctionsGiveWhatTheyMustNot) {
    test::RandomTexts random(11);
    const NamingAttributes attributes = {"CN", "uid"};
    for (int round = 0; round < 5000; ++round) {
        const std::string name = random.Bytes(24);
        const auto entry = SplitFirstComponent(name, attributes, FileExtension::kStrip);
        if (entry) {
            EXPECT_LE(entry->name.size(), name.size());
        }
        const std::string escapes = random.Text(24, "\\ABCDEF089ax=,");
        const auto decoded = DecodeNonAsciiEscapes(
            escapes, [](std::string_view utf8) { return std::optional<std::string>(utf8); });
        EXPECT_LE(decoded.size(), escapes.size());
        const std::string key = ServerKey(random.Bytes(400), 389);
        EXPECT_LE(key.size(), 229u);
        EXPECT_EQ(std::string::npos, key.find('\\'));
    }
}

TEST(PathToDNTest, SecondBytesSeparateNoNames) {
    const test::CodePageScope scope(932);
    EXPECT_EQ("CN=\x95\\.kra,CN=\x97\\\x92\xE8\x95\\,base",
              PathToDN("base\\\x97\\\x92\xE8\x95\\\\\x95\\.kra", kDefaults));
    EXPECT_EQ("CN=\x8F\\.kra,base",
              PathToDN("base\\\x97\\\x92\xE8\x95\\\\..\\\x8F\\.kra", kDefaults));
    EXPECT_EQ("CN=\x95\\..,base", PathToDN("base\\\x95\\..", kDefaults));
}

TEST(SplitFirstComponentTest, SecondByteIsNoPartOfAnAttribute) {
    const test::CodePageScope scope(932);
    EXPECT_EQ(std::nullopt, SplitFirstComponent("\x83"
                                                "cn=a",
                                                kDefaults));
    EXPECT_EQ(
        "\x83"
        "c.kra",
        SplitFirstComponent("cn=\x83"
                            "c.kra",
                            kDefaults)
            ->name);
}

TEST(DecodeNonAsciiEscapesTest, SecondByteBeginsNoEscape) {
    const test::CodePageScope scope(932);
    const auto keep = [](std::string_view utf8) { return std::optional<std::string>(utf8); };
    EXPECT_EQ("\x95\\C3\xC3\xA4", DecodeNonAsciiEscapes("\x95\\C3\\C3\\A4", keep));
}

TEST(ServerKeyTest, CutHalvesNoCharacterAndSecondBytesStay) {
    const test::CodePageScope scope(932);
    EXPECT_EQ("\x95\\/a:1", ServerKey("\x95\\\\A", 1));
    EXPECT_EQ(std::string(228, 'a'), ServerKey(std::string(228, 'a') + "\x95\\", 1));
}

}  // namespace
}  // namespace depot
