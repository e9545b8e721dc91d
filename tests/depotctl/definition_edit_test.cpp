// Changing definitions, and writing the changes down as .reg files.
#include "depotctl/definition_edit.h"

#include <gtest/gtest.h>

namespace depot::ctl {
namespace {

RawDefinition Three() {
    return {"Work",
            {TextValue("Path1", "C:\\a"), TextValue("Path2", "C:\\b"), TextValue("Path3", "C:\\c"),
             NumberValue("Type3", 0), NumberValue("Type2", 0), NumberValue("OrderIndex", 1)}};
}

TEST(DefinitionEditTest, ChangedReplacesRemovesAndAddsInAnyLetterCase) {
    const RawDefinition changed = Changed(
        Three(), {{TextValue("PATH1", "C:\\x"), NumberValue("Contains", 2)}, {"orderindex"}});
    EXPECT_EQ("C:\\x", changed.Text("Path1"));
    EXPECT_EQ(2u, changed.Number("Contains"));
    EXPECT_EQ(nullptr, changed.Find("OrderIndex"));
    EXPECT_EQ(6u, changed.values.size());
}

TEST(DefinitionEditTest, WithoutLocationNumbersThoseBehindItAnew) {
    const auto change = WithoutLocation(Three(), 2);
    ASSERT_TRUE(change);
    const RawDefinition changed = Changed(Three(), *change);
    EXPECT_EQ("C:\\a", changed.Text("Path1"));
    EXPECT_EQ("C:\\c", changed.Text("Path2"));
    EXPECT_EQ(0u, changed.Number("Type2"));
    EXPECT_EQ(nullptr, changed.Find("Path3"));
    EXPECT_EQ(nullptr, changed.Find("Type3"));
    EXPECT_EQ(1u, changed.Number("OrderIndex"));
}

TEST(DefinitionEditTest, WithoutLocationRefusesWhatItCannotDo) {
    EXPECT_FALSE(WithoutLocation(Three(), 0));
    EXPECT_FALSE(WithoutLocation(Three(), 4));
    RawDefinition definition = Three();
    definition.values[3].bytes = 8;  // a number that would lose bytes
    EXPECT_FALSE(WithoutLocation(definition, 1));
    EXPECT_TRUE(WithoutLocation(definition, 3));
}

TEST(DefinitionEditTest, NewProblemsAreThoseThatTheChangeMakes) {
    RawDefinition before = Three();
    before.values.push_back(TextValue("Hots1", "x"));
    EXPECT_TRUE(
        NewProblems(&before, Changed(before, {{NumberValue("OrderIndex", 2)}, {}})).empty());
    const Findings problems =
        NewProblems(&before, Changed(before, {{TextValue("Path2", "relative")}, {}}));
    ASSERT_EQ(1u, problems.size());
    EXPECT_EQ("Path2", problems[0].subject);
    EXPECT_EQ(1u, NewProblems(nullptr, before).size());
}

TEST(DefinitionEditTest, SummaryReportsNameDefaultAndFolders) {
    RawDefinition definition = Three();
    definition.values.push_back(TextValue("DisplayName.deu", "Arbeit"));
    definition.values.push_back(TextValue("DisplayName.fra", "Travail"));
    definition.values.push_back(NumberValue("DefaultDepot", 1));
    definition.values.push_back(TextValue("Path4", "$USERDIR$"));
    const DepotSummary summary = SummaryOf(definition, false);
    EXPECT_EQ("Travail", summary.displayName);
    EXPECT_TRUE(summary.isDefault);
    EXPECT_FALSE(summary.isForUser);
    EXPECT_EQ((std::vector<std::string>{"C:\\a", "C:\\b", "C:\\c"}), summary.roots);
    EXPECT_EQ("Work", SummaryOf(Three(), true).displayName);
}

TEST(DefinitionEditTest, RegistryFileEscapesTextsAndWritesNumbersInHex) {
    const DefinitionChange change = {
        {TextValue("Path1", "C:\\a\\\"b\""), NumberValue("Port1", 389), TextValue("x\"y", "")},
        {"Icon", "Port1"}};
    EXPECT_EQ(
        "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\A]\r\n\"Icon\"=-\r\n"
        "\"Path1\"=\"C:\\\\a\\\\\\\"b\\\"\"\r\n\"Port1\"=dword:00000185\r\n\"x\\\"y\"=\"\"\r\n",
        RegistryFile("HKEY_CURRENT_USER\\A", &change));
    EXPECT_EQ("Windows Registry Editor Version 5.00\r\n\r\n[-HKEY_CURRENT_USER\\A]\r\n",
              RegistryFile("HKEY_CURRENT_USER\\A", nullptr));
}

TEST(DefinitionEditTest, RegistryFileBytesAreUtf16WithAMark) {
    EXPECT_EQ(std::string("\xFF\xFE"
                          "A\0\xFC\0\xAC\x20",
                          8),
              RegistryFileBytes("A\xC3\xBC\xE2\x82\xAC"));
    EXPECT_EQ(std::string("\xFF\xFE\x3D\xD8\x00\xDE", 6), RegistryFileBytes("\xF0\x9F\x98\x80"));
    EXPECT_EQ(2u + 2u, RegistryFileBytes("\xE2\x82").size()) << "a cut text ends, and no more";
}

}  // namespace
}  // namespace depot::ctl
