// Definitions as files, and files as definitions.
#include "depotctl/definition_file.h"

#include <gmock/gmock.h>

#include <random>
#include <regex>

#include "depotctl/definition_edit.h"

namespace depot::ctl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr char kKey[] = "Software\\Quillon\\Farrow\\Depots";
constexpr char kStart[] = "Windows Registry Editor Version 5.00\r\n\r\n";
constexpr char kWork[] = "[HKEY_CURRENT_USER\\Software\\Quillon\\Farrow\\Depots\\Work]\r\n";

RawDefinition Work() {
    RawValue expandable = TextValue("Icon", "%A%\\\xE8\xA1\xA8.ico");
    expandable.type = kRegistryExpandableText;
    return {"Work",
            {TextValue("Path1", "C:\\\xE5\x8D\x81\\\"<&>'\"\\"),
             NumberValue("OrderIndex", 0xFEDCBA98), expandable, TextValue("Password1", "secret")}};
}

// A definition's values as one text each, in their order.
std::vector<std::string> Shown(const FiledDefinition& definition) {
    std::vector<std::string> shown;
    for (const std::string& name : definition.change.removed) shown.push_back("-" + name);
    for (const RawValue& value : definition.change.written) {
        shown.push_back(value.name + "/" + std::to_string(value.type) + "/" +
                        (value.IsText() ? value.text.Plain() : std::to_string(value.number)));
    }
    return shown;
}

std::string Problem(const std::string& bytes) {
    return ReadDefinitionFile(bytes, kKey).problem;
}

class BothFormsTest : public testing::TestWithParam<FileForm> {
protected:
    static std::string Bytes(const std::vector<FiledDefinition>& definitions) {
        const std::string text = FileText(definitions, GetParam(), kKey);
        return GetParam() == FileForm::kRegistry ? RegistryFileBytes(text) : text;
    }
};

TEST_P(BothFormsTest, WhatIsWrittenIsReadBack) {
    std::vector<std::string> leftOut;
    const FiledDefinition work = {false, "Work", false, WholeDefinition(Work(), leftOut)};
    const FiledDefinition other = {true, "B\xC3\xBC & <x>", true, {{TextValue("Path1", "")}, {}}};
    const FiledDefinition gone = {true, "Gone", true, {}};
    const auto read = ReadDefinitionFile(Bytes({work, other, gone}), kKey);
    ASSERT_EQ("", read.problem);
    ASSERT_EQ(3u, read.definitions.size());
    EXPECT_EQ("Work", read.definitions[0].key);
    EXPECT_FALSE(read.definitions[0].isForMachine || read.definitions[0].isRemoved);
    EXPECT_EQ(Shown(work), Shown(read.definitions[0]));
    EXPECT_EQ(other.key, read.definitions[1].key);
    EXPECT_TRUE(read.definitions[1].isForMachine && read.definitions[1].isRemoved);
    EXPECT_THAT(Shown(read.definitions[1]), ElementsAre("Path1/1/"));
    EXPECT_TRUE(read.definitions[2].isRemoved);
    EXPECT_THAT(Shown(read.definitions[2]), ElementsAre());
    EXPECT_TRUE(leftOut.empty());
}

TEST_P(BothFormsTest, PasswordIsNeverWrittenAndRemovedByAnImport) {
    std::vector<std::string> leftOut;
    const std::string text =
        FileText({{false, "Work", false, WholeDefinition(Work(), leftOut)}}, GetParam(), kKey);
    EXPECT_THAT(text, Not(HasSubstr("secret")));
    EXPECT_THAT(text, HasSubstr("store it by --ask-password"));
    EXPECT_EQ("-Password1", Shown(ReadDefinitionFile(text, kKey).definitions[0])[0]);
}

TEST_P(BothFormsTest, DamagedFilesAreRefusedAndNeverTakenInPart) {
    std::vector<std::string> leftOut;
    const std::string whole =
        FileText({{false, "Work", false, WholeDefinition(Work(), leftOut)}}, GetParam(), kKey);
    std::mt19937 random(20261122);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes = whole;
        for (std::uint32_t change = random() % 4; change-- > 0;) {
            const std::size_t at = random() % bytes.size();
            switch (random() % 3) {
                case 0:
                    bytes[at] = static_cast<char>(random());
                    break;
                case 1:
                    bytes.erase(at, random() % 20);
                    break;
                default:
                    bytes.insert(at, bytes.substr(random() % bytes.size(), random() % 30));
            }
            if (bytes.empty()) bytes = "x";
        }
        const auto read = ReadDefinitionFile(bytes, kKey);
        EXPECT_TRUE(read.problem.empty() || read.definitions.empty());
        for (const FiledDefinition& definition : read.definitions) {
            EXPECT_EQ(std::string::npos, definition.key.find('\\'));
            EXPECT_NE("", definition.key);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, BothFormsTest,
                         testing::Values(FileForm::kRegistry, FileForm::kPolicyItems),
                         [](const auto& form) {
                             return form.param == FileForm::kRegistry ? "Registry" : "PolicyItems";
                         });

TEST(DefinitionFileTest, ValuesThatNoFileCanHoldAreNamed) {
    RawDefinition definition = {"Work", {TextValue("Icon", "a\r\nb"), NumberValue("Port1", 1)}};
    definition.values[1].bytes = 8;
    definition.values.push_back(TextValue("x\ny", ""));
    std::vector<std::string> leftOut;
    EXPECT_TRUE(WholeDefinition(definition, leftOut).written.empty());
    EXPECT_THAT(leftOut, ElementsAre("Icon", "Port1", "x\ny"));
}

TEST(DefinitionFileTest, PolicyItemsAreThoseOfTheRegistryWithStableIdentifiers) {
    const std::vector<FiledDefinition> definitions = {
        {true, "Work", false, {{NumberValue("Port1", 389), TextValue("Path1", "C:\\a & b")}, {}}}};
    const std::string text = FileText(definitions, FileForm::kPolicyItems, kKey);
    EXPECT_THAT(text,
                HasSubstr("<RegistrySettings clsid=\"{A3CCFC41-DFDB-43a5-8D26-0FE8B954DA51}\">"));
    EXPECT_THAT(text, HasSubstr("<Properties action=\"U\" displayDecimal=\"1\" default=\"0\" "
                                "hive=\"HKEY_LOCAL_MACHINE\" "
                                "key=\"Software\\Quillon\\Farrow\\Depots\\Work\" name=\"Port1\" "
                                "type=\"REG_DWORD\" value=\"00000185\"/>"));
    EXPECT_THAT(text, HasSubstr("type=\"REG_SZ\" value=\"C:\\a &amp; b\"/>"));
    EXPECT_EQ(text, FileText(definitions, FileForm::kPolicyItems, kKey));
    const std::regex identifier("uid=\"\\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\}\"");
    EXPECT_TRUE(std::regex_search(text, identifier)) << text;
}

TEST(DefinitionFileTest, RegistryFilesOfEditorsAreRead) {
    const auto read = ReadDefinitionFile(
        std::string("\xEF\xBB\xBF") + kStart + "; a remark\r\n" + kWork +
            "\"path1\"=hex(2):43,00,3a,\\\r\n  00,5c,00,00,00\r\n\"Port1\"=dword:185\r\n"
            "\"PORT1\"=dword:00000186\r\n\"Icon\"=\"a\\\\b\\\"c\"\n\"Old\"=-\r\n\r\n"
            "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\QUILLON\\FARROW\\DEPOTS\\Gone]\r\n",
        kKey);
    ASSERT_EQ("", read.problem);
    ASSERT_EQ(2u, read.definitions.size());
    EXPECT_THAT(Shown(read.definitions[0]),
                ElementsAre("-Old", "path1/2/C:\\", "PORT1/4/390", "Icon/1/a\\b\"c"));
    EXPECT_TRUE(read.definitions[1].isRemoved && read.definitions[1].isForMachine);
}

TEST(DefinitionFileTest, RegistryFilesWithAnythingElseAreRefusedByTheirLine) {
    EXPECT_EQ("line 1: it does not begin as a .reg file", Problem("REGEDIT4\r\n"));
    const auto refused = [](const std::string& rest) { return Problem(kStart + rest); };
    EXPECT_EQ("line 3: the key is no depot's: HKEY_CURRENT_USER\\Software\\Other",
              refused("[HKEY_CURRENT_USER\\Software\\Other]\r\n"));
    for (const char* key : {"", "\\", "\\Work\\Below", "\\..\\..\\x"}) {
        const std::string path = "HKEY_CURRENT_USER\\" + std::string(kKey) + key;
        if (std::string(key) == "\\..\\..\\x" || std::string(key) == "\\Work\\Below" ||
            std::string(key).size() < 2) {
            EXPECT_THAT(refused("[" + path + "]\r\n"), HasSubstr("the key is no depot's")) << key;
        }
    }
    EXPECT_EQ("line 3: the value stands in no key", refused("\"Path1\"=\"x\"\r\n"));
    for (const char* line : {"\"Path1\"", "Path1=\"x\"", "@=\"x\"", "\"a\\", "\"a"}) {
        EXPECT_EQ("line 4: this is no value of a depot", refused(kWork + std::string(line)))
            << line;
    }
    for (const char* data : {"\"x", "\"x\"y", "dword:", "dword:123456789", "dword:x", "hex:00",
                             "hex(2):0", "hex(2):zz,00", "hex(7):00,00", "x"}) {
        EXPECT_EQ("line 4: the data of A is neither a text nor a number",
                  refused(kWork + ("\"A\"=" + std::string(data))))
            << data;
    }
    EXPECT_EQ("it is no text in UTF-8 or UTF-16", Problem("\xFF"));
    EXPECT_EQ("it is no text in UTF-8 or UTF-16", Problem(std::string("\xFF\xFE\x00\xD8", 4)));
    EXPECT_EQ("it is no text in UTF-8 or UTF-16", Problem(std::string("a\0b", 3)));
}

std::string Items(const std::string& inside) {
    return "<?xml version=\"1.0\"?><!-- x --><RegistrySettings>" + inside + "</RegistrySettings>";
}

std::string Item(const std::string& attributes) {
    return "<Registry name='x'><Properties hive=\"HKEY_LOCAL_MACHINE\" "
           "key=\"Software\\Quillon\\Farrow\\Depots\\Work\" " +
           attributes + "/></Registry>";
}

TEST(DefinitionFileTest, PolicyItemsOfEditorsAreRead) {
    const auto read = ReadDefinitionFile(
        Items("<Collection><Collection>" +
              Item("action='R' name='Path1' type='REG_EXPAND_SZ' value='&#67;&#x3A;\\&apos;'") +
              "</Collection></Collection>" + Item("name='Port1' type='REG_DWORD' value='185'") +
              Item("action='D' name='Icon'") +
              "<Registry disabled='1'><Properties action='U' name='Old' type='X'/></Registry>"),
        kKey);
    ASSERT_EQ("", read.problem);
    ASSERT_EQ(1u, read.definitions.size());
    EXPECT_THAT(Shown(read.definitions[0]), ElementsAre("-Icon", "Path1/2/C:\\'", "Port1/4/389"));
}

TEST(DefinitionFileTest, PolicyItemsWithAnythingElseAreRefused) {
    EXPECT_EQ("it is no list of registry items", Problem("<Drives></Drives>"));
    EXPECT_EQ("its elements do not match", Problem("<Collection></x>"));
    EXPECT_EQ("it has items with conditions, which are not looked at",
              Problem(Items("<Filters/>")));
    EXPECT_THAT(Problem(Items("<Properties hive='HKEY_USERS' key='x' name='y'/>")),
                HasSubstr("the key is no depot's: HKEY_USERS\\x"));
    EXPECT_EQ("an item is no value of a depot", Problem(Items(Item("action='U' name=''"))));
    EXPECT_EQ("the data of A is no number",
              Problem(Items(Item("name='A' type='REG_DWORD' value='x'"))));
    EXPECT_EQ("the data of A is neither a text nor a number",
              Problem(Items(Item("name='A' type='REG_BINARY' value='00'"))));
    for (const char* damaged :
         {"<RegistrySettings>", "<RegistrySettings",
          "<!DOCTYPE x [<!ENTITY a 'b'>]><RegistrySettings/>", "<RegistrySettings a='&b;'/>",
          "<RegistrySettings a='1' a='2'/>", "<RegistrySettings a='&#xD800;'/>",
          "<RegistrySettings a=1/>", "<!-- x"}) {
        EXPECT_EQ("it is no whole list of registry items", Problem(damaged)) << damaged;
    }
    std::string deep;
    for (int depth = 0; depth < 100000; ++depth) deep += "<Collection>";
    EXPECT_EQ("it is no whole list of registry items", Problem(deep));
}

}  // namespace
}  // namespace depot::ctl
