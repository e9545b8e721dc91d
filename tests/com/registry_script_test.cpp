#include "com/registry_script.h"

#include <gtest/gtest.h>

#include "support/random_text.h"

namespace depot {
namespace {

const RegistryScriptReplacements kReplacements = {
    {"MODULE", "C:\\it's %X% {\\a.dll"}, {"APPID", "{1}"}, {"EMPTY", ""}};

using Roots = std::optional<std::vector<RegistryScriptKey>>;

Roots Parse(std::string_view script) {
    return ParseRegistryScript(script, kReplacements);
}

// Returns the only key below the only root.
RegistryScriptKey ParseOne(const std::string& key) {
    const Roots roots = Parse("HKCR { " + key + " }");
    if (!roots || roots->size() != 1 || roots->at(0).keys.size() != 1) {
        ADD_FAILURE() << "not one key: " << key;
        return {};
    }
    return roots->at(0).keys.at(0);
}

std::string TextOf(const std::optional<RegistryScriptData>& data) {
    return data && std::holds_alternative<std::string>(*data) ? std::get<std::string>(*data)
                                                              : "(no text)";
}

std::string Nested(int levels) {
    std::string script;
    for (int level = 0; level < levels; ++level) script += "K {";
    return script + std::string(static_cast<std::size_t>(levels), '}');
}

// Writes a text as a quoted token that stands for exactly that text.
std::string Quoted(const std::string& text) {
    std::string token = "'";
    for (const char c : text) {
        token += c;
        if (c == '\'' || c == '%') token += c;
    }
    return token + "'";
}

std::string Written(const RegistryScriptData& data) {
    if (const auto* number = std::get_if<std::uint32_t>(&data)) {
        return "d " + std::to_string(*number);
    }
    return "s " + Quoted(std::get<std::string>(data));
}

std::string Written(const RegistryScriptKey& key) {
    std::string script = key.noRemove ? "NoRemove " : key.forceRemove ? "ForceRemove " : "";
    script += Quoted(key.name);
    if (key.defaultValue) script += " = " + Written(*key.defaultValue);
    script += "{";
    for (const RegistryScriptValue& value : key.values) {
        script += " val " + Quoted(value.name) + " = " + Written(value.data);
    }
    for (const RegistryScriptKey& child : key.keys) script += "\r\n" + Written(child);
    return script + "}";
}

RegistryScriptData RandomData(test::RandomTexts& random) {
    if (random.Below(3) == 0) return static_cast<std::uint32_t>(random.Below(0xFFFFFFFF));
    return random.Text(6, "ab '%{}=\\\xC4");
}

RegistryScriptKey RandomKey(test::RandomTexts& random, int depth) {
    RegistryScriptKey key;
    key.name = "k" + random.Text(5, "ab '%{}=\\");
    key.noRemove = random.Below(4) == 0;
    key.forceRemove = !key.noRemove && random.Below(4) == 0;
    if (random.Below(2) == 0) key.defaultValue = RandomData(random);
    for (std::size_t count = random.Below(3); count > 0; --count) {
        key.values.push_back({random.Text(5, "ab '%{}=\\"), RandomData(random)});
    }
    for (std::size_t count = depth < 4 ? random.Below(3) : 0; count > 0; --count) {
        key.keys.push_back(RandomKey(random, depth + 1));
    }
    return key;
}

TEST(RegistryScriptTest, EmptyScriptHasNoRoots) {
    for (const char* script : {"", " \t\r\n"}) {
        const Roots roots = Parse(script);
        ASSERT_TRUE(roots.has_value());
        EXPECT_TRUE(roots->empty());
    }
}

TEST(RegistryScriptTest, KeysValuesAndFlagsAreRead) {
    const Roots roots = Parse(
        "HKCR\r\n{\r\n"
        "  NoRemove AppID\r\n  {\r\n"
        "    '%APPID%' = s 'DepotIntr'\r\n"
        "    'DepotIntr.DLL' { val AppID = s '%APPID%' val Count = d 7 }\r\n"
        "  }\r\n"
        "  ForceRemove Gone = s 'x' { A B = d '12' { C } }\r\n"
        "}\r\nHKCU { D }");
    ASSERT_TRUE(roots.has_value());
    ASSERT_EQ(2u, roots->size());
    const RegistryScriptKey& classes = roots->at(0);
    EXPECT_EQ("HKCR", classes.name);
    EXPECT_FALSE(classes.defaultValue.has_value());
    ASSERT_EQ(2u, classes.keys.size());
    const RegistryScriptKey& appIds = classes.keys.at(0);
    EXPECT_EQ("AppID", appIds.name);
    EXPECT_TRUE(appIds.noRemove);
    EXPECT_FALSE(appIds.forceRemove);
    ASSERT_EQ(2u, appIds.keys.size());
    EXPECT_EQ("{1}", appIds.keys.at(0).name);
    EXPECT_FALSE(appIds.keys.at(0).noRemove);
    EXPECT_EQ("DepotIntr", TextOf(appIds.keys.at(0).defaultValue));
    ASSERT_EQ(2u, appIds.keys.at(1).values.size());
    EXPECT_EQ("AppID", appIds.keys.at(1).values.at(0).name);
    EXPECT_EQ("{1}", TextOf(appIds.keys.at(1).values.at(0).data));
    EXPECT_EQ(7u, std::get<std::uint32_t>(appIds.keys.at(1).values.at(1).data));
    const RegistryScriptKey& gone = classes.keys.at(1);
    EXPECT_TRUE(gone.forceRemove);
    EXPECT_FALSE(gone.noRemove);
    EXPECT_EQ("x", TextOf(gone.defaultValue));
    ASSERT_EQ(2u, gone.keys.size());
    EXPECT_EQ("A", gone.keys.at(0).name);
    EXPECT_EQ(12u, std::get<std::uint32_t>(*gone.keys.at(1).defaultValue));
    EXPECT_EQ("C", gone.keys.at(1).keys.at(0).name);
    EXPECT_EQ("D", roots->at(1).keys.at(0).name);
}

TEST(RegistryScriptTest, BlanksMayBeLeftOutAroundPunctuation) {
    const RegistryScriptKey key = ParseOne("A=s 'x'{val V=d 1 B{}}");
    EXPECT_EQ("A", key.name);
    EXPECT_EQ("x", TextOf(key.defaultValue));
    ASSERT_EQ(1u, key.values.size());
    ASSERT_EQ(1u, key.keys.size());
}

TEST(RegistryScriptTest, DoubledQuoteStandsForOne) {
    EXPECT_EQ("it's", ParseOne("'it''s'").name);
    EXPECT_EQ("'", ParseOne("''''").name);
    EXPECT_EQ("", TextOf(ParseOne("K = s ''").defaultValue));
}

TEST(RegistryScriptTest, QuotesProtectBlanksPunctuationAndWords) {
    EXPECT_EQ("a { = } b\r\n", ParseOne("'a { = } b\r\n'").name);
    EXPECT_EQ("NoRemove", ParseOne("'NoRemove'").name);
    EXPECT_EQ("val", ParseOne("'val'").name);
    EXPECT_EQ("ForceRemove", ParseOne("NoRemove 'ForceRemove'").name);
}

TEST(RegistryScriptTest, WordsCountOnlyWhole) {
    EXPECT_EQ("NoRemoveAll", ParseOne("NoRemoveAll").name);
    EXPECT_EQ("values", ParseOne("values").name);
    EXPECT_EQ("noremove", ParseOne("noremove").name);
    EXPECT_FALSE(Parse("HKCR { A = sx }"));
}

TEST(RegistryScriptTest, ReplacementsAreMadeInNamesAndTexts) {
    const RegistryScriptKey key =
        ParseOne("a%APPID%b%EMPTY% = s '%APPID%%APPID%' { val %APPID% = s x }");
    EXPECT_EQ("a{1}b", key.name);
    EXPECT_EQ("{1}{1}", TextOf(key.defaultValue));
    EXPECT_EQ("{1}", key.values.at(0).name);
}

TEST(RegistryScriptTest, InsertedTextIsNotParsedAgain) {
    EXPECT_EQ("C:\\it's %X% {\\a.dll", TextOf(ParseOne("Key = s '%MODULE%'").defaultValue));
    EXPECT_EQ("C:\\it's %X% {\\a.dll", TextOf(ParseOne("Key = s %MODULE%").defaultValue));
}

TEST(RegistryScriptTest, TwoPercentSignsStandForOne) {
    EXPECT_EQ("100%", TextOf(ParseOne("K = s '100%%'").defaultValue));
    EXPECT_EQ("%APPID%", TextOf(ParseOne("K = s '%%APPID%%'").defaultValue));
}

TEST(RegistryScriptTest, UnknownOrUnfinishedReplacementIsAnError) {
    for (const char* script : {"HKCR { '%NONE%' }", "HKCR { '%APPID' }", "HKCR { A = s '%' }",
                               "HKCR { A = s '%appid%' }", "%X%", "HKCR { val A% = s 'x' }"}) {
        SCOPED_TRACE(script);
        EXPECT_FALSE(Parse(script));
    }
}

TEST(RegistryScriptTest, NumbersAreDecimalAndFit32Bits) {
    EXPECT_EQ(0u, std::get<std::uint32_t>(*ParseOne("K = d 0").defaultValue));
    EXPECT_EQ(0xFFFFFFFFu, std::get<std::uint32_t>(*ParseOne("K = d '4294967295'").defaultValue));
    for (const char* number : {"4294967296", "-1", "+1", "0x10", "1a", "''", "' 1'", "'1 '", "a",
                               "99999999999999999999"}) {
        SCOPED_TRACE(number);
        EXPECT_FALSE(Parse(std::string("HKCR { K = d ") + number + " }"));
    }
}

TEST(RegistryScriptTest, MalformedScriptsAreRefused) {
    for (const char* script : {"{",
                               "}",
                               "=",
                               "HKCR {",
                               "HKCR }",
                               "HKCR { { }",
                               "HKCR { A = }",
                               "HKCR { A = s }",
                               "HKCR { A = s",
                               "HKCR { A =",
                               "HKCR { A = x 'y' }",
                               "HKCR { 'A }",
                               "HKCR { A = s 'x }",
                               "HKCR { val }",
                               "HKCR { val A }",
                               "HKCR { val A = }",
                               "HKCR { val A = s }",
                               "'",
                               "''",
                               "HKCR { '' }",
                               "NoRemove",
                               "HKCR { NoRemove }",
                               "HKCR { NoRemove = s 'x' }",
                               "HKCR = = s 'x'",
                               "HKCR { '%EMPTY%' }",
                               "HKCR {}}"}) {
        SCOPED_TRACE(script);
        EXPECT_FALSE(Parse(script));
    }
}

TEST(RegistryScriptTest, KeysMayNestThirtyTwoDeepBelowARoot) {
    EXPECT_TRUE(Parse(Nested(33)));
    EXPECT_FALSE(Parse(Nested(34)));
    EXPECT_FALSE(Parse(Nested(100'000)));
}

TEST(RegistryScriptTest, ManyKeysSideBySideAreRead) {
    std::string script = "HKCR {";
    for (int number = 0; number < 5000; ++number) script += " K" + std::to_string(number) + " {}";
    const Roots roots = Parse(script + "}");
    ASSERT_TRUE(roots.has_value());
    EXPECT_EQ(5000u, roots->at(0).keys.size());
    EXPECT_EQ("K4999", roots->at(0).keys.back().name);
}

TEST(RegistryScriptTest, RandomKeysAreReadAsTheyWereWritten) {
    test::RandomTexts random(0x5EED50);
    for (int round = 0; round < 2000; ++round) {
        const std::string script = Written(RandomKey(random, 0));
        SCOPED_TRACE(script);
        const Roots roots = Parse(script);
        ASSERT_TRUE(roots.has_value());
        ASSERT_EQ(1u, roots->size());
        ASSERT_EQ(script, Written(roots->at(0)));
    }
}

TEST(RegistryScriptTest, DamagedScriptsAreReadOrRefusedWithoutHarm) {
    test::RandomTexts random(0x5EED51);
    int refused = 0;
    for (int round = 0; round < 5000; ++round) {
        std::string script =
            "HKCR { NoRemove A = s '%APPID%' { val B = d 7 ForceRemove 'it''s' } }";
        for (std::size_t damage = random.Below(4) + 1; damage > 0; --damage) {
            const std::size_t at = random.Below(script.size());
            if (random.Below(2) == 0) {
                script.erase(at, random.Below(4) + 1);
            } else {
                script.insert(at, random.Text(3, "{}='% sd\n\xFF"));
            }
            if (script.empty()) script = "{";
        }
        const Roots roots = Parse(script);
        if (!roots) {
            ++refused;
            continue;
        }
        for (const RegistryScriptKey& root : *roots) ASSERT_NE("", root.name);
    }
    EXPECT_GT(refused, 1000);
    EXPECT_LT(refused, 5000);
}

TEST(RegistryScriptTest, RandomBytesAreReadOrRefusedWithoutHarm) {
    test::RandomTexts random(0x5EED52);
    for (int round = 0; round < 5000; ++round) {
        for (const std::string& script :
             {random.Bytes(60), random.Pieces(20, {"{", "}", "=", "val ", "s ", "d ", "'", "%",
                                                   "A ", "NoRemove ", "1 ", "%APPID%"})}) {
            const Roots roots = Parse(script);
            if (!roots) continue;
            for (const RegistryScriptKey& root : *roots) ASSERT_NE("", root.name);
        }
    }
}

}  // namespace
}  // namespace depot
