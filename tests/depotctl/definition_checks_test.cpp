// Definitions written by hand, with every kind of mistake.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "depotctl/definition_checks.h"
#include "depotctl/known_values.h"
#include "platform/text.h"
#include "support/code_pages.h"
#include "support/random_text.h"

namespace depot::ctl {
namespace {

RawDefinition Folder(std::vector<RawValue> more = {}) {
    RawDefinition definition = {"Work", {TextValue("Path1", "C:\\Work")}};
    definition.values.push_back(TextValue("DisplayName.eng", "Work"));
    std::move(more.begin(), more.end(), std::back_inserter(definition.values));
    return definition;
}

RawDefinition Directory(std::vector<RawValue> more = {}) {
    std::vector<RawValue> values = std::move(more);
    const auto unless = [&](RawValue value) {
        const bool given = std::any_of(values.begin(), values.end(), [&](const RawValue& other) {
            return SameName(other.name, value.name);
        });
        if (!given) values.push_back(std::move(value));
    };
    unless(TextValue("Path1", "cn=Profiles,dc=example,dc=com"));
    unless(NumberValue("Type1", 1));
    unless(TextValue("Host1", "ldap.example.com"));
    unless(TextValue("DisplayName.eng", "Company"));
    return {"Company", values};
}

RawValue OfType(std::string name, std::uint32_t type, std::size_t bytes = 4) {
    RawValue value = NumberValue(std::move(name), 389);
    value.type = type;
    value.bytes = bytes;
    return value;
}

std::string Show(const Findings& findings) {
    std::string text;
    for (const Finding& finding : findings) {
        text += (finding.state == State::kProblem ? "! " : "- ") + finding.subject + ": " +
                finding.text + " [" + finding.advice + "]\n";
    }
    return text;
}

// The one problem of a definition, as "subject: text".
std::string OnlyProblem(const RawDefinition& definition) {
    std::string problem;
    int count = 0;
    const Findings findings = CheckDefinition(definition);
    for (const Finding& finding : findings) {
        if (finding.state != State::kProblem) continue;
        problem = finding.subject + ": " + finding.text;
        EXPECT_FALSE(finding.advice.empty()) << problem;
        ++count;
    }
    EXPECT_EQ(1, count) << Show(findings);
    return problem;
}

TEST(DefinitionTest, GoodDefinitionsHaveNoFindings) {
    EXPECT_EQ("", Show(CheckDefinition(Folder())));
    EXPECT_EQ("", Show(CheckDefinition(Directory())));
    EXPECT_EQ("", Show(CheckDefinition(Folder(
                      {TextValue("Path2", "\\\\server\\share\\Work"), NumberValue("OrderIndex", 7),
                       NumberValue("DefaultDepot", 1), NumberValue("Contains", 0xFFFFFFFF),
                       TextValue("Icon", "work.ico"), TextValue("DisplayName.jpn", "x"),
                       NumberValue("Type2", 0), TextValue("", "")}))));
    EXPECT_EQ("", Show(CheckDefinition(Directory(
                      {NumberValue("Port1", 636), NumberValue("Security1", 2),
                       NumberValue("Authentication1", 2), NumberValue("DetectConflicts1", 1),
                       NumberValue("Version1", 3), NumberValue("ConnectTimeout1", 5),
                       TextValue("Host1", "one two:1636"), TextValue("FolderAttributeName1", "ou"),
                       TextValue("FileObjectClass1", "profile-File2")}))));
}

TEST(DefinitionTest, EmptyKeyIsNoDepot) {
    EXPECT_EQ("Path1: this is no depot: the key is empty", OnlyProblem({"Work", {}}));
}

TEST(DefinitionTest, DefinitionWithoutFirstPathIsNoDepot) {
    EXPECT_EQ("Path1: this is no depot: it has no Path1",
              OnlyProblem({"Work", {TextValue("DisplayName.eng", "x")}}));
}

TEST(DefinitionTest, LocationsBehindAGapAreNeverRead) {
    const Findings findings = CheckDefinition(Folder(
        {TextValue("Path2", "C:\\b"), TextValue("Path4", "C:\\d"), NumberValue("Type4", 0)}));
    ASSERT_EQ(2u, findings.size()) << Show(findings);
    EXPECT_EQ("Path4", findings[0].subject);
    EXPECT_EQ("it is never read: locations are numbered from 1 without a gap", findings[0].text);
    EXPECT_EQ("number it Path3, and its other values too", findings[0].advice);
    EXPECT_EQ("it is never read, because location 4 is not", findings[1].text);
}

TEST(DefinitionTest, ValueOfALocationWithoutPathIsNeverRead) {
    EXPECT_EQ("Host2: it is never read, because location 2 is not",
              OnlyProblem(Folder({TextValue("Host2", "x")})));
}

TEST(DefinitionTest, UnknownValuesAreNamedWithWhatWasMeant) {
    const struct {
        const char *name, *nearest;
    } rows[] = {{"Hots1", "Host1"},
                {"Host", "Host1"},
                {"path", "Path1"},
                {"Path01", "Path1"},
                {"Path0", "Path1"},
                {"OrderIndex1", "OrderIndex"},
                {"Authentification1", "Authentication1"},
                {"DisplayName", "DisplayName.eng"},
                {"UserName1x", "Username1"},
                {"DefaultDepots", "DefaultDepot"},
                {"Colour", ""},
                {"Path99999999", "Path99999999"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Findings findings = CheckDefinition(Folder({TextValue(row.name, "x")}));
        ASSERT_EQ(1u, findings.size()) << Show(findings);
        EXPECT_EQ("there is no value of this name; it is ignored", findings[0].text);
        EXPECT_EQ(row.nearest[0] == '\0'
                      ? "remove it"
                      : "write " + std::string(row.nearest) + " if that is meant",
                  findings[0].advice);
    }
}

TEST(DefinitionTest, DefaultValueOfTheKeyIsNeverRead) {
    EXPECT_EQ("(Default): the key's default value is never read",
              OnlyProblem(Folder({TextValue("", "Work")})));
}

TEST(DefinitionTest, ValueNamesAreFoundInAnyLetterCase) {
    EXPECT_EQ(
        "",
        Show(CheckDefinition({"Work",
                              {TextValue("PATH1", "C:\\Work"), TextValue("displayname.ENG", "Work"),
                               NumberValue("orderindex", 1)}})));
}

TEST(DefinitionTest, NumbersOfAnotherTypeAreIgnored) {
    RawValue text = TextValue("Port1", "389");
    EXPECT_EQ("Port1: it is a text and ignored: 389 is taken", OnlyProblem(Directory({text})));
    EXPECT_EQ("Version1: it is a long number (REG_QWORD) and ignored: 3 is taken",
              OnlyProblem(Directory({OfType("Version1", kRegistryLongNumber, 8)})));
    EXPECT_EQ("OrderIndex: it is a text and ignored: the depot has no place of its own in the list",
              OnlyProblem(Folder({TextValue("OrderIndex", "1")})));
    EXPECT_EQ("DefaultDepot: it is a text and ignored: it is not the default",
              OnlyProblem(Folder({TextValue("DefaultDepot", "1")})));
}

TEST(DefinitionTest, SecurityThatIsNoNumberCountsAsStartTls) {
    EXPECT_EQ("Security1: it is binary (REG_BINARY) and no such number: 1 is taken (StartTLS)",
              OnlyProblem(Directory({OfType("Security1", kRegistryBinary)})));
    EXPECT_EQ("Security1: it is a number of 8 bytes and no such number: 1 is taken (StartTLS)",
              OnlyProblem(Directory({OfType("Security1", kRegistryNumber, 8)})));
    EXPECT_EQ(1u, Directory({TextValue("Security1", "2")}).Location(1).security);
    EXPECT_EQ(0u, Directory({}).Location(1).security);
}

TEST(DefinitionTest, NumbersOfAnotherSizeAreIgnoredWhereTheComponentIgnoresThem) {
    EXPECT_EQ("Port1: it is a number of 8 bytes and ignored: 389 is taken",
              OnlyProblem(Directory({OfType("Port1", kRegistryNumber, 8)})));
    EXPECT_EQ("", Show(CheckDefinition(Folder({OfType("Contains", kRegistryNumber, 8)}))));
}

TEST(DefinitionTest, TypeThatIsATextMakesDirectoryValuesIgnored) {
    const Findings findings = CheckDefinition(Directory({TextValue("Type1", "1")}));
    const std::string shown = Show(findings);
    EXPECT_NE(std::string::npos, shown.find("! Type1: it is a text and ignored: the location is a "
                                            "folder"));
    EXPECT_NE(std::string::npos, shown.find("! Host1: it is ignored: the location is a folder"));
    EXPECT_NE(std::string::npos,
              shown.find("! Path1: it is the name of an entry in a directory, but the location is "
                         "a folder"));
}

TEST(DefinitionTest, NumbersOutOfRangeReportWhatTheyCountAs) {
    const struct {
        const char* name;
        std::uint32_t number;
        const char* text;
    } rows[] = {
        {"Port1", 0, "0 is out of range: no server has such a port"},
        {"Port1", 65536, "65536 is out of range: no server has such a port"},
        {"Authentication1", 3, "3 is out of range: it counts as 1 (a name and a password)"},
        {"Version1", 1, "1 is out of range: there are the versions 2 and 3 only"},
        {"Version1", 4, "4 is out of range: there are the versions 2 and 3 only"},
        {"ConnectTimeout1", 0, "0 is out of range: a second to an hour make sense"},
        {"Security1", 3, "3 is out of range: it counts as 1 (StartTLS)"},
        {"DetectConflicts1", 3, "3 is out of range: it counts as 0 (the last writer wins)"},
        {"DefaultDepot", 2, "2 is out of range: it is not the default"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(std::string(row.name) + ": " + row.text,
                  OnlyProblem(Directory({NumberValue(row.name, row.number)})));
    }
    EXPECT_EQ("Type2: 7 is out of range: the location is a folder",
              OnlyProblem(Folder({TextValue("Path2", "C:\\b"), NumberValue("Type2", 7)})));
}

TEST(DefinitionTest, TextsFitAtTheLimitAndAreIgnoredOneOver) {
    const std::string fits(260, 'x'), over(261, 'x');
    EXPECT_EQ("", Show(CheckDefinition(Folder({TextValue("Icon", fits)}))));
    EXPECT_EQ("Icon: it is longer than 260 characters and ignored: it has no icon",
              OnlyProblem(Folder({TextValue("Icon", over)})));
    EXPECT_EQ(
        "DisplayName.fra: it is longer than 260 characters and ignored: this name is not shown",
        OnlyProblem(Folder({TextValue("DisplayName.fra", over)})));
    const std::string shown = Show(CheckDefinition({"Work", {TextValue("Path1", "C:\\" + over)}}));
    EXPECT_NE(std::string::npos, shown.find("this is no depot: Path1 cannot be read"));
}

TEST(DefinitionTest, TextsOfAnotherTypeAreNamed) {
    RawValue list = TextValue("Icon", std::string("a\0b\0", 4));
    list.type = kRegistryTexts;
    EXPECT_EQ("Icon: it is a list of texts (REG_MULTI_SZ), which is no text",
              OnlyProblem(Folder({list})));
    EXPECT_EQ("Icon: it is a number (REG_DWORD), which is no text",
              OnlyProblem(Folder({NumberValue("Icon", 5)})));
    EXPECT_EQ("Icon: it is of registry type 0, which is no text",
              OnlyProblem(Folder({OfType("Icon", 0)})));
    RawValue expandable = TextValue("Path1", "%TEMP%\\x");
    expandable.type = kRegistryExpandableText;
    EXPECT_EQ("",
              Show(CheckDefinition({"Work", {expandable, TextValue("DisplayName.eng", "Work")}})));
}

TEST(DefinitionTest, TextsThatTheComponentSeesOtherwiseAreNamed) {
    EXPECT_EQ("Icon: what follows its first NUL is never read",
              OnlyProblem(Folder({TextValue("Icon", std::string("a\0b", 3))})));
    EXPECT_EQ("Icon: it has a line end or another control character",
              OnlyProblem(Folder({TextValue("Icon", "a\nb")})));
    RawValue value = TextValue("Icon", "\xD0\x96");
    value.fitsCodePage = false;
    EXPECT_EQ("Icon: it has characters that the system's code page does not have",
              OnlyProblem(Folder({value})));
    value.fitsCodePage = true;
    value.fitsSystem = false;
    EXPECT_THAT(Show(CheckDefinition(Folder({value}))),
                testing::HasSubstr("- Icon: it has characters that the system's code page does not "
                                   "have: programs that do not work in UTF-8 read no such value"));
}

TEST(DefinitionTest, MissingDisplayNameIsRemarked) {
    EXPECT_EQ("- DisplayName: users see the key [write DisplayName.eng]\n",
              Show(CheckDefinition({"Work", {TextValue("Path1", "C:\\Work")}})));
    EXPECT_EQ("- DisplayName: users of other languages see the key [write DisplayName.eng]\n",
              Show(CheckDefinition(
                  {"Work", {TextValue("Path1", "C:\\Work"), TextValue("DisplayName.jpn", "x")}})));
}

TEST(DefinitionTest, BadDisplayNamesAreNamed) {
    EXPECT_EQ("DisplayName.en: \"en\" is no language",
              OnlyProblem(Folder({TextValue("DisplayName.en", "x")})));
    EXPECT_EQ("DisplayName.fra: the name is empty, and users see it",
              OnlyProblem(Folder({TextValue("DisplayName.fra", "")})));
    EXPECT_EQ("DisplayName.fra: <, > and \\ in a name break paths that are given by it",
              OnlyProblem(Folder({TextValue("DisplayName.fra", "<Travail>")})));
}

TEST(DefinitionTest, KeysBelowADepotsKeyAreNeverRead) {
    RawDefinition definition = Folder();
    definition.hasSubkeys = true;
    EXPECT_EQ("Key: keys below this one are never read", OnlyProblem(definition));
}

TEST(DefinitionTest, KeysThatPathsCannotNameAreNamed) {
    for (const char* key : {"", "a<b", "a>", " a", "a ", "a\\b"}) {
        EXPECT_EQ(1u, CheckKey(key).size()) << '"' << key << '"';
    }
    EXPECT_EQ(0u, CheckKey(std::string(255, 'k')).size());
    EXPECT_EQ(1u, CheckKey(std::string(256, 'k')).size());
    EXPECT_EQ(0u, CheckKey("B\xC3\xBCro & Co. 2").size());
}

TEST(DefinitionTest, DirectoryValuesOfAFolderAreIgnored) {
    EXPECT_EQ("Port1: it is ignored: the location is a folder",
              OnlyProblem(Folder({NumberValue("Port1", 389)})));
}

TEST(DefinitionTest, PortsAndSecurityMustFit) {
    EXPECT_EQ(
        "Port1: 389 is the port of connections that are not secured from the start, as "
        "Security = 2 wants it",
        OnlyProblem(Directory({NumberValue("Security1", 2)})));
    EXPECT_EQ("Port1: 636 is the port of connections that are secured from the start",
              OnlyProblem(Directory({NumberValue("Port1", 636)})));
    EXPECT_EQ("Version1: version 2 has no StartTLS, which Security = 1 wants",
              OnlyProblem(Directory({NumberValue("Security1", 1), NumberValue("Version1", 2)})));
}

TEST(DefinitionTest, CredentialsMustFitTheAuthentication) {
    EXPECT_EQ(
        "Username1: it is not used with this Authentication1",
        OnlyProblem(Directory({NumberValue("Authentication1", 0), TextValue("Username1", "x")})));
    EXPECT_EQ("Password1: there is no Username1 for it",
              OnlyProblem(Directory({TextValue("Password1", "secret")})));
    const std::string shown = Show(CheckDefinition(
        Directory({TextValue("Username1", "cn=a"), TextValue("Password1", "secret")})));
    EXPECT_EQ(
        "- Password1: everyone who can read the key can read the password [keep it in the "
        "credential store: depotctl depots set Company --location 1 --store-password]\n"
        "- Security1: name and password cross the network in plain "
        "text [set it to 1 (StartTLS) or 2 (LDAPS)]\n",
        shown);
}

TEST(DefinitionTest, SchemaNamesMustBeNames) {
    EXPECT_EQ("FileAttributeName1: it is no name that a schema can have",
              OnlyProblem(Directory({TextValue("FileAttributeName1", "c n")})));
    EXPECT_EQ("- FileObjectClass1: files and folders are entries of one class []\n",
              Show(CheckDefinition(Directory({TextValue("FileObjectClass1", "QUILLONFOLDER")}))));
}

TEST(DefinitionTest, PathsWithMacrosAreLeftToTheMachineThatExpandsThem) {
    EXPECT_EQ(
        "",
        Show(CheckDefinition({"Work",
                              {TextValue("Path1", "$USERDIR$\\x"), TextValue("Path2", "%COMPANY%"),
                               TextValue("DisplayName.eng", "Work")}})));
    EXPECT_EQ("", Show(CheckDefinition(Directory({TextValue("Path1", "%BASE%")}))));
}

TEST(DefinitionTest, RandomDefinitionsAreCheckedWhateverTheyHold) {
    test::RandomTexts random(11);
    const std::vector<std::string> names = {"Path",         "Type", "Host",  "1",     "2", "0",
                                            "DisplayName.", "eng",  "Order", "Index", "x"};
    const std::uint32_t types[] = {0, 1, 2, 3, 4, 7, 11};
    for (int round = 0; round < 1000; ++round) {
        RawDefinition definition = {random.Bytes(8), {}};
        for (std::size_t count = random.Below(8); count > 0; --count) {
            RawValue value = TextValue(random.Pieces(3, names), random.Bytes(300));
            value.type = types[random.Below(std::size(types))];
            value.number = static_cast<std::uint32_t>(random.Below(5));
            if (value.type == kRegistryNumber) value.bytes = sizeof(value.number);
            definition.values.push_back(value);
        }
        const Findings findings = CheckDefinition(definition);
        EXPECT_TRUE(definition.Locations() > 0 || HasProblems(findings));
    }
}

std::string Together(const std::vector<DepotSummary>& depots) {
    std::string text;
    for (const Findings& findings : CheckTogether(depots, EqualsNoCase))
        text += Show(findings) + "|";
    return text;
}

TEST(DefinitionTest, DepotsBesideEachOtherHaveNoFindings) {
    EXPECT_EQ("||", Together({{"Work", "Travail", true, true, {"C:\\w"}},
                              {"Workshop", "Atelier", false, false, {"C:\\work"}}}));
}

TEST(DefinitionTest, SameKeyInBothHivesIsNamed) {
    EXPECT_EQ(
        "|! Key: the user's depot of the same key stands before it, and every path by that "
        "key goes there [remove one of them, or give it another key]\n|",
        Together({{"Work", "Work", true, false, {}}, {"WORK", "Work", false, false, {}}}));
}

TEST(DefinitionTest, NamesThatLeadToAnotherDepotAreNamed) {
    EXPECT_EQ(
        "|! DisplayName: users cannot tell it from <A>, which has the same name [choose "
        "another name]\n|",
        Together({{"A", "Name", true, false, {}}, {"B", "name", true, false, {}}}));
    EXPECT_EQ(
        "|! DisplayName: the name of <A> is the key of <B>; paths by names go astray [choose "
        "another name]\n|",
        Together({{"A", "B", true, false, {}}, {"B", "Other", true, false, {}}}));
}

TEST(DefinitionTest, FoldersThatContainEachOtherAreRemarked) {
    const auto roots = [](const char* first, const char* second) {
        return Together({{"A", "a", true, false, {first}}, {"B", "b", true, false, {second}}});
    };
    EXPECT_EQ(
        "|- Path: its folder lies in that of <A>, so that plain paths of files in both count "
        "as <A>'s [use folders beside each other]\n|",
        roots("C:\\x", "c:\\X\\y"));
    EXPECT_NE(std::string::npos, roots("C:\\x\\y\\", "C:\\x").find("its folder holds that of <A>"));
    EXPECT_NE(std::string::npos, roots("C:\\x", "C:\\x\\").find("its folder is that of <A>"));
    EXPECT_EQ("||", roots("C:\\x", "C:\\xy"));
    EXPECT_EQ("||", roots("", "C:\\x"));
}

TEST(DefinitionTest, NamesAndFoldersAreComparedByTheLettersOfTheCodePage) {
    const test::CodePageScope utf8(65001);
    const std::string work = "\u00C4rger", other = "\u00E4rger";
    const auto together = [](const DepotSummary& first, const DepotSummary& second) {
        return Together({first, second});
    };
    EXPECT_THAT(together({work, "a", true, false, {}}, {other, "b", false, false, {}}),
                testing::HasSubstr("depot of the same key"));
    EXPECT_THAT(together({"A", work, true, false, {}}, {"B", other, true, false, {}}),
                testing::HasSubstr("which has the same name"));
    EXPECT_THAT(together({"A", "a", true, false, {"C:\\" + work}},
                         {"B", "b", true, false, {"C:\\" + other + "\\x"}}),
                testing::HasSubstr("its folder lies in that of <A>"));
    // The case of this letter takes another number of bytes.
    EXPECT_THAT(together({"A", "a", true, false, {"C:\\\u023A"}},
                         {"B", "b", true, false, {"C:\\\u2C65\\x"}}),
                testing::HasSubstr("its folder lies in that of <A>"));
}

TEST(DefinitionTest, SecondDefaultIsNamed) {
    EXPECT_EQ(
        "||! DefaultDepot: <A> stands before it and is the default [set DefaultDepot for one "
        "depot only]\n|",
        Together(
            {{"A", "a", true, true, {}}, {"B", "b", true, false, {}}, {"C", "c", true, true, {}}}));
}

}  // namespace
}  // namespace depot::ctl
