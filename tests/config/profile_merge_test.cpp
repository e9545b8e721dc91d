#include "config/profile_merge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "support/code_pages.h"
#include "support/profile_values.h"

namespace depot {

void PrintTo(const MergeConflict& conflict, std::ostream* out) {
    *out << "[" << conflict.section << "] " << conflict.key;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string Merged(const ProfileVersions& versions) {
    const auto merge = MergeProfiles(versions);
    if (!merge) return "no profile";
    EXPECT_THAT(merge->conflicts, IsEmpty());
    return merge->bytes;
}

std::vector<MergeConflict> ConflictsOf(const ProfileVersions& versions) {
    const auto merge = MergeProfiles(versions);
    return merge ? merge->conflicts : std::vector<MergeConflict>{{"no profile", ""}};
}

std::string Utf16(std::u16string_view text) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

constexpr char kBase[] =
    "; office\r\n[Session]\r\nTitle=Office\r\nHost=one\r\n\r\n[View]\r\nColour=1\r\n";

TEST(ProfileMergeTest, EachSidesOwnEditsAreKept) {
    EXPECT_EQ(
        "; office\r\n[Session]\r\nTitle=Home\r\nHost=one\r\n\r\n[View]\r\nColour=2\r\n",
        Merged(
            {kBase, "; office\r\n[Session]\r\nTitle=Home\r\nHost=one\r\n\r\n[View]\r\nColour=1\r\n",
             "; office\r\n[Session]\r\nTitle=Office\r\nHost=one\r\n\r\n[View]\r\nColour=2\r\n"}));
}

TEST(ProfileMergeTest, WhereOneSideChangedNothingTheOtherOneIsTakenByteForByte) {
    const std::string other = "[View]\nx=1\n\n;;;\nno value";
    EXPECT_EQ(other, Merged({kBase, other, kBase}));
    EXPECT_EQ(other, Merged({kBase, kBase, other}));
    EXPECT_EQ(other, Merged({kBase, other, other}));
    // Whatever they are.
    const std::string binary("\0\1\2", 3);
    EXPECT_EQ(binary, Merged({kBase, kBase, binary}));
}

TEST(ProfileMergeTest, SectionsAndKeysAreComparedWithoutLetterCase) {
    EXPECT_EQ("[SESSION]\r\nTITLE=b\r\nPort=2\r\n",
              Merged({"[Session]\r\nTitle=a\r\nPort=1\r\n", "[SESSION]\r\nTITLE=b\r\nPORT=1\r\n",
                      "[session]\r\ntitle=a\r\nPort=2\r\n"}));
}

TEST(ProfileMergeTest, BlanksAroundNamesAndValuesAreNoChange) {
    EXPECT_EQ("[S]\n a =  1 \nb=9\n",
              Merged({"[S]\na=1\nb=2\n", "[S]\n a =  1 \nb=2\n", "[S]\na=1\nb=9\n"}));
}

TEST(ProfileMergeTest, TheOrderAndTheCommentsOfTheirsStay) {
    EXPECT_EQ("; new\n[B]\ny=1\n; why\n[A]\nx=2\n",
              Merged({"[A]\nx=1\n[B]\ny=1\n", "; new\n[B]\ny=1\n; why\n[A]\nx=1\n",
                      "[A]\nx=2\n[B]\ny=1\n"}));
}

TEST(ProfileMergeTest, ANewValueStandsBehindWhatItStandsBehindInOurs) {
    EXPECT_EQ("[S]\na=1\nnew=1\nb=3\n\n[T]\nx=1\n",
              Merged({"[S]\na=1\nb=2\n\n[T]\nx=1\n", "[S]\na=1\nb=3\n\n[T]\nx=1\n",
                      "[S]\na=1\nnew=1\nb=2\n\n[T]\nx=1\n"}));
    EXPECT_EQ("[S]\nnew=1\na=2\n", Merged({"[S]\na=1\n", "[S]\na=2\n", "[S]\nnew=1\na=1\n"}));
}

TEST(ProfileMergeTest, ANewValueAtTheEndOfASectionStandsBeforeTheBlankLines) {
    EXPECT_EQ("[S]\na=2\nnew=1\n\n[T]\nx=1\n",
              Merged({"[S]\na=1\n\n[T]\nx=1\n", "[S]\na=2\n\n[T]\nx=1\n",
                      "[S]\na=1\nnew=1\n\n[T]\nx=1\n"}));
}

TEST(ProfileMergeTest, ANewSectionComesWithItsComments) {
    EXPECT_EQ("[S]\na=2\n[N]\n; ours\nx=1\n[T]\n",
              Merged({"[S]\na=1\n[T]\n", "[S]\na=2\n[T]\n", "[S]\na=1\n[N]\n; ours\nx=1\n[T]\n"}));
}

TEST(ProfileMergeTest, BothSidesNewValuesAreKept) {
    EXPECT_EQ("[S]\na=1\nours=1\ntheirs=1\n",
              Merged({"[S]\na=1\n", "[S]\na=1\ntheirs=1\n", "[S]\na=1\nours=1\n"}));
    EXPECT_EQ("[T]\nx=1\n[O]\ny=1\n", Merged({" ", "[T]\nx=1\n", "[O]\ny=1\n"}));
}

TEST(ProfileMergeTest, ADeletedValueIsDeleted) {
    EXPECT_EQ("[S]\nb=3\n", Merged({"[S]\na=1\nb=2\n", "[S]\na=1\nb=3\n", "[S]\nb=2\n"}));
    EXPECT_EQ("[S]\nb=3\n", Merged({"[S]\na=1\nb=2\n", "[S]\nb=2\n", "[S]\na=1\nb=3\n"}));
}

TEST(ProfileMergeTest, ADeletedSectionIsDeletedUnlessTheirsHasValuesOfItsOwnInIt) {
    EXPECT_EQ("[T]\nx=2\n",
              Merged({"[S]\n; s\na=1\n[T]\nx=1\n", "[S]\n; s\na=1\n[T]\nx=2\n", "[T]\nx=1\n"}));
    EXPECT_EQ("[S]\nb=1\n[T]\n", Merged({"[S]\na=1\n[T]\n", "[S]\na=1\nb=1\n[T]\n", "[T]\n"}));
}

TEST(ProfileMergeTest, ADeletedSectionKeepsTheirLinesThatWouldBeNoProfileWithoutIt) {
    EXPECT_EQ("[A]\r\nstray\r\n[B]\r\nY=1\r\n",
              Merged({"[A]\r\nX=1\r\n", "[A]\r\nX=1\r\nstray\r\n[B]\r\nY=1\r\n", "\r\n"}));
    // A comment may stand before the first section.
    EXPECT_EQ("; new\r\n[B]\r\nY=1\r\n",
              Merged({"[A]\r\nX=1\r\n", "[A]\r\nX=1\r\n; new\r\n[B]\r\nY=1\r\n", "\r\n"}));
}

TEST(ProfileMergeTest, AValueThatIsNewInADeletedSectionBringsTheSectionBack) {
    EXPECT_EQ("[T]\nx=1\n[S]\nnew=1\n",
              Merged({"[T]\nx=1\n[S]\na=1\n", "[T]\nx=1\n", "[T]\nx=1\n[S]\na=1\nnew=1\n"}));
}

TEST(ProfileMergeTest, WhatBothChangedAlikeIsNoConflict) {
    EXPECT_EQ("[S]\na=2\nb=1\n",
              Merged({"[S]\na=1\nb=0\n", "[S]\na=2\nb=1\n", "[s]\nA= 2\nb=0\n"}));
}

TEST(ProfileMergeTest, AValueThatBothChangedStaysAsTheirsHasItAndIsNamed) {
    const ProfileVersions versions = {"[S]\na=1\nb=1\n", "[S]\na=2\nb=1\n", "[S]\nA=3\nb=2\n"};
    const auto merge = MergeProfiles(versions);
    ASSERT_TRUE(merge);
    EXPECT_EQ("[S]\na=2\nb=2\n", merge->bytes);
    EXPECT_THAT(merge->conflicts, ElementsAre(MergeConflict{"S", "A"}));
}

TEST(ProfileMergeTest, AValueThatOneSideDeletedAndTheOtherChangedIsAConflict) {
    EXPECT_THAT(ConflictsOf({"[S]\na=1\n", "[S]\n", "[S]\na=2\n"}),
                ElementsAre(MergeConflict{"S", "a"}));
    const ProfileVersions deleted = {"[S]\na=1\nb=1\n", "[S]\na=2\nb=1\n", "[S]\nb=1\n"};
    EXPECT_THAT(ConflictsOf(deleted), ElementsAre(MergeConflict{"S", "a"}));
    EXPECT_EQ("[S]\na=2\nb=1\n", MergeProfiles(deleted)->bytes);
}

TEST(ProfileMergeTest, AValueThatBothAddedDifferentlyIsAConflict) {
    EXPECT_THAT(ConflictsOf({"[S]\n", "[S]\na=1\n", "[S]\na=2\n"}),
                ElementsAre(MergeConflict{"S", "a"}));
}

TEST(ProfileMergeTest, ACommentThatOnlyOursHasIsNamedByItsSection) {
    EXPECT_THAT(ConflictsOf({"[S]\na=1\n", "[S]\na=2\n", "[S]\n; mine\na=1\n"}),
                ElementsAre(MergeConflict{"S", ""}));
    EXPECT_THAT(ConflictsOf({"[S]\na=1\n", "[S]\na=2\n", "; mine\n[S]\na=1\n"}),
                ElementsAre(MergeConflict{"", ""}));
    EXPECT_THAT(ConflictsOf({"[S]\na=1\n", "[S]\n; both\na=2\n", "[S]\n; both\na=1\n"}), IsEmpty());
}

TEST(ProfileMergeTest, WhereOursWinsTheirsLendsTheShapeAndTheCommentsOfBothStay) {
    const auto merged = [](const ProfileVersions& versions) {
        return MergeProfiles(versions, MergeWinner::kOurs).value().bytes;
    };
    EXPECT_EQ("; mine\n; t\n[S]\n; why\n\n; here\na=3\n; end\n\n[T]\nx=2\n",
              merged({"[S]\na=1\n[T]\nx=1\n", "; t\n[S]\n; why\n\na=2\n\n[T]\nx=2\n",
                      "; mine\n[S]\n; here\na=3\n; end\n[T]\nx=1\n"}));
    // Neither a comment that ours left out nor one that theirs left out was added.
    EXPECT_EQ("[S]\n; b\na=3\n",
              merged({"[S]\n; a\n; b\na=1\n", "[S]\n; b\na=2\n", "[S]\n; a\na=3\n"}));
    // In a section that theirs deleted.
    EXPECT_EQ("[T]\nx=2\n[S]\n; mine\n",
              merged({"[T]\nx=1\n[S]\na=1\n", "[T]\nx=2\n", "[T]\nx=1\n[S]\n; mine\na=1\n"}));
    EXPECT_EQ("[S]\n; new\nb=2\na=2\n",
              merged({"[S]\na=1\n", "[S]\na=2\n", "[S]\n; new\nb=2\na=1\n"}));
}

TEST(ProfileMergeTest, RepeatedNamesAreComparedInTheirOrder) {
    EXPECT_EQ("[S]\na=1\na=3\nb=1\n[S]\na=9\n",
              Merged({"[S]\na=1\na=2\n[S]\na=4\n", "[S]\na=1\na=3\n[S]\na=4\n",
                      "[S]\na=1\na=2\nb=1\n[S]\na=9\n"}));
}

TEST(ProfileMergeTest, TheLastLineMayLackItsEnd) {
    EXPECT_EQ("[S]\r\na=2\r\nb=1\r\n", Merged({"[S]\r\na=1", "[S]\r\na=2", "[S]\r\na=1\r\nb=1"}));
    EXPECT_EQ("[S]\r\na=1\r\nb=3",
              Merged({"[S]\r\na=0\r\nb=1", "[S]\r\na=1\r\nb=1", "[S]\r\na=0\r\nb=3"}));
}

TEST(ProfileMergeTest, WhatIsAddedEndsAsTheLinesOfTheirsDo) {
    EXPECT_EQ("[S]\na=2\nb=1\n", Merged({"[S]\r\na=1\r\n", "[S]\na=2\n", "[S]\r\na=1\r\nb=1\r\n"}));
}

TEST(ProfileMergeTest, FilesThatAreNoProfilesAreNotMerged) {
    const std::string withNul("[S]\na=1\0\n", 9);
    for (const std::string& file : {std::string("some text\n"), std::string("a=1\n[S]\n"), withNul,
                                    Utf16(u"[S]\na=1\n"), std::string("\xEF\xBB\xBF[S]\na=1\n")}) {
        EXPECT_FALSE(MergeProfiles({file, "[S]\na=2\n", "[S]\na=3\n"}));
        EXPECT_FALSE(MergeProfiles({"[S]\na=1\n", file, "[S]\na=3\n"}));
        EXPECT_FALSE(MergeProfiles({"[S]\na=1\n", "[S]\na=2\n", file}));
    }
}

TEST(ProfileMergeTest, Utf16ProfilesStayUtf16) {
    const auto merge = MergeProfiles(
        {Utf16(u"[\u30A2]\r\n\u8868=1\r\nx=1\r\n"), Utf16(u"[\u30A2]\r\n\u8868=2\r\nx=1\r\n"),
         Utf16(u"[\u30A2]\r\n\u8868=3\r\nx=\U0001F600\xD800\r\n\U0001F601=5\r\n")});
    ASSERT_TRUE(merge);
    EXPECT_EQ(Utf16(u"[\u30A2]\r\n\u8868=2\r\nx=\U0001F600\xD800\r\n\U0001F601=5\r\n"),
              merge->bytes);
    EXPECT_TRUE(merge->namesAreUtf8);
    EXPECT_THAT(merge->conflicts, ElementsAre(MergeConflict{"\u30A2", "\u8868"}));
    const std::string odd = Utf16(u"[S]\n") + "x";
    EXPECT_FALSE(MergeProfiles({Utf16(u"[S]\n"), Utf16(u"[T]\n"), odd}));
}

TEST(ProfileMergeTest, NamesOfSurrogatePairsAreReadable) {
    EXPECT_THAT(ConflictsOf({Utf16(u"[\U0001F600]\na=1\n"), Utf16(u"[\U0001F600]\na=2\n"),
                             Utf16(u"[\U0001F600]\na=3\n")}),
                ElementsAre(MergeConflict{"\U0001F600", "a"}));
}

TEST(ProfileMergeTest, AUtf8MarkStays) {
    EXPECT_EQ("\xEF\xBB\xBF[S]\na=1\nb=2\n",
              Merged({"\xEF\xBB\xBF[S]\na=0\nb=1\n", "\xEF\xBB\xBF[S]\na=1\nb=1\n",
                      "\xEF\xBB\xBF[S]\na=0\nb=2\n"}));
}

TEST(ProfileMergeTest, DoubleByteNamesAreOneCharacterEach) {
    const test::CodePageScope japanese(932);
    // The second bytes are a closing bracket, a letter and a backslash.
    EXPECT_EQ("[\x81\x5D]\n\x83\x41=1\n\x83\x61=2\n\x95\x5C=4\n",
              Merged({"[\x81\x5D]\n\x83\x41=0\n\x83\x61=2\n\x95\x5C=3\n",
                      "[\x81\x5D]\n\x83\x41=1\n\x83\x61=2\n\x95\x5C=3\n",
                      "[\x81\x5D]\n\x83\x41=0\n\x83\x61=2\n\x95\x5C=4\n"}));
    EXPECT_THAT(ConflictsOf({"[\x95\x5C]\na=1\n", "[\x95\x5C]\na=2\n", "[\x95\x5C]\na=3\n"}),
                ElementsAre(MergeConflict{"\x95\x5C", "a"}));
}

// Profiles of a few names, so that both sides meet often.
class RandomProfiles {
public:
    explicit RandomProfiles(unsigned seed) : random_(seed) {}

    using Sections = std::map<std::string, std::map<std::string, std::string>>;

    Sections Make() {
        Sections made;
        for (int count = Below(12); count > 0; --count) Change(made);
        return made;
    }
    Sections Changed(Sections sections) {
        for (int count = Below(6); count > 0; --count) Change(sections);
        return sections;
    }
    static std::string Text(const Sections& sections) {
        std::string text;
        for (const auto& [section, values] : sections) {
            text += "[" + section + "]\r\n";
            for (const auto& [key, value] : values) text += key + "=" + value + "\r\n";
        }
        return text;
    }

private:
    int Below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }
    void Change(Sections& sections) {
        const std::string section(1, static_cast<char>('A' + Below(3)));
        const std::string key(1, static_cast<char>('a' + Below(4)));
        switch (Below(8)) {
            case 0:
                sections.erase(section);
                break;
            case 1:
            case 2:
                if (sections.contains(section)) sections[section].erase(key);
                break;
            default:
                sections[section][key] = std::to_string(Below(4));
        }
    }

    std::mt19937 random_;
};

using Sections = RandomProfiles::Sections;

// The value at a place; nothing where there is none.
std::optional<std::string> At(const Sections& sections, const std::string& section,
                              const std::string& key) {
    const auto found = sections.find(section);
    if (found == sections.end() || !found->second.contains(key)) return std::nullopt;
    return found->second.at(key);
}

Sections Parsed(const std::string& text) {
    Sections sections;
    NameTable names;
    std::string section;
    const auto lines = ReadProfileLines(text, LetterCase::kOfCodePage, names);
    for (const ProfileLine& line : *lines) {
        if (line.kind == LineKind::kHeader) sections[section = std::string(line.name)];
        if (line.kind == LineKind::kValue) sections[section][std::string(line.name)] = line.value;
    }
    return sections;
}

TEST(ProfileMergeTest, EveryValueOfTenThousandRandomMergesIsWhereItBelongs) {
    for (unsigned seed = 0; seed < 10'000; ++seed) {
        SCOPED_TRACE(seed);
        RandomProfiles random(seed);
        const Sections base = random.Make();
        const Sections theirs = random.Changed(base);
        const Sections ours = random.Changed(base);
        const auto merge = MergeProfiles(
            {RandomProfiles::Text(base), RandomProfiles::Text(theirs), RandomProfiles::Text(ours)});
        ASSERT_TRUE(merge);
        const Sections result = Parsed(merge->bytes);
        std::size_t conflicts = 0;
        for (const char section : {'A', 'B', 'C'}) {
            for (const char key : {'a', 'b', 'c', 'd'}) {
                const std::string s(1, section), k(1, key);
                const auto was = At(base, s, k), their = At(theirs, s, k), our = At(ours, s, k);
                const bool isConflict = their != was && our != was && their != our;
                conflicts += isConflict ? 1u : 0u;
                ASSERT_EQ(our != was && !isConflict ? our : their, At(result, s, k)) << s << k;
            }
        }
        ASSERT_EQ(conflicts, merge->conflicts.size());
    }
}

TEST(ProfileMergeTest, WhereOursWinsEveryValueThatOursChangedIsOurs) {
    for (unsigned seed = 0; seed < 10'000; ++seed) {
        SCOPED_TRACE(seed);
        RandomProfiles random(seed);
        const Sections base = random.Make();
        const Sections theirs = random.Changed(base);
        const Sections ours = random.Changed(base);
        const auto merge = MergeProfiles(
            {RandomProfiles::Text(base), RandomProfiles::Text(theirs), RandomProfiles::Text(ours)},
            MergeWinner::kOurs);
        ASSERT_TRUE(merge);
        const Sections result = Parsed(merge->bytes);
        for (const char section : {'A', 'B', 'C'}) {
            for (const char key : {'a', 'b', 'c', 'd'}) {
                const std::string s(1, section), k(1, key);
                const auto was = At(base, s, k), our = At(ours, s, k);
                ASSERT_EQ(our != was ? our : At(theirs, s, k), At(result, s, k)) << s << k;
            }
        }
    }
}

TEST(ProfileMergeTest, TheSidesExchangedGiveTheSameValuesWithoutAConflict) {
    for (unsigned seed = 0; seed < 10'000; ++seed) {
        SCOPED_TRACE(seed);
        RandomProfiles random(seed);
        const Sections base = random.Make();
        const std::string baseText = RandomProfiles::Text(base);
        const std::string theirs = RandomProfiles::Text(random.Changed(base));
        const std::string ours = RandomProfiles::Text(random.Changed(base));
        const auto merge = MergeProfiles({baseText, theirs, ours});
        const auto exchanged = MergeProfiles({baseText, ours, theirs});
        ASSERT_TRUE(merge && exchanged);
        ASSERT_EQ(merge->conflicts.empty(), exchanged->conflicts.empty());
        if (!merge->conflicts.empty()) continue;
        ASSERT_EQ(Parsed(merge->bytes), Parsed(exchanged->bytes));
    }
}

}  // namespace
}  // namespace depot
