#include "api/automation_text.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

std::string Narrowed(std::wstring_view text) {
    const UniqueBstr owned(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    BSTR raw = owned.get();
    return NarrowText(&raw);
}

std::wstring Widened(const std::string& text) {
    const UniqueBstr wide = NewBstr(text);
    return std::wstring(wide.get(), SysStringLen(wide.get()));
}

TEST(NarrowTextTest, MissingTextsAreEmpty) {
    BSTR nothing = nullptr;
    EXPECT_EQ("", NarrowText(nullptr));
    EXPECT_EQ("", NarrowText(&nothing));
    EXPECT_EQ("", Narrowed(L""));
}

TEST(NarrowTextTest, TextEndsAtItsFirstNul) {
    EXPECT_EQ("ab", Narrowed(std::wstring_view(L"ab\0cd", 5)));
    EXPECT_EQ("", Narrowed(std::wstring_view(L"\0cd", 3)));
}

TEST(NarrowTextTest, LettersOfTheCodePageAreKeptAndOthersReplaced) {
    EXPECT_EQ("\xE4\xDF\x80", Narrowed(L"\x00E4\x00DF\x20AC"));
    EXPECT_EQ("a?b", Narrowed(L"a\x4E2D"
                              L"b"));
}

TEST(NarrowTextTest, CodePageIsThatOfTheCallingThread) {
    const LCID before = GetThreadLocale();
    ASSERT_TRUE(SetThreadLocale(MAKELCID(MAKELANGID(LANG_RUSSIAN, SUBLANG_DEFAULT), SORT_DEFAULT)));
    const std::string narrow = Narrowed(L"\x0416");
    const std::wstring wide = Widened("\xC6");
    SetThreadLocale(before);
    EXPECT_EQ("\xC6", narrow);
    EXPECT_EQ(L"\x0416", wide);
}

TEST(NarrowTextTest, HugeTextIsConvertedWhole) {
    EXPECT_EQ(std::string(100000, 'x'), Narrowed(std::wstring(100000, L'x')));
}

std::optional<std::string> Exact(std::wstring_view text) {
    const UniqueBstr owned(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    BSTR raw = owned.get();
    return ExactName(&raw);
}

TEST(ExactNameTest, IsTheNameInTheAnsiCodePageWhateverTheThreadsLanguage) {
    const LCID before = GetThreadLocale();
    ASSERT_TRUE(SetThreadLocale(MAKELCID(MAKELANGID(LANG_RUSSIAN, SUBLANG_DEFAULT), SORT_DEFAULT)));
    const auto western = Exact(L"\x00E4\x20AC"), russian = Exact(L"\x0416");
    const UniqueBstr wide = NewNameBstr("\xC6");
    SetThreadLocale(before);
    EXPECT_EQ("\xE4\x80", western);
    EXPECT_EQ(std::nullopt, russian);
    EXPECT_EQ(L"\x00C6", std::wstring(wide.get()));
}

TEST(ExactNameTest, NothingIsAnEmptyName) {
    BSTR nothing = nullptr;
    EXPECT_EQ("", ExactName(nullptr));
    EXPECT_EQ("", ExactName(&nothing));
    EXPECT_EQ("", Exact(L""));
}

TEST(ExactNameTest, NameThatWouldBecomeAnotherOneIsRefused) {
    for (const std::wstring_view name :
         {std::wstring_view(L"\x0100"), std::wstring_view(L"\xFF3C"), std::wstring_view(L"a\0b", 3),
          std::wstring_view(L"\0a", 2), std::wstring_view(L"\xD83D", 1),
          std::wstring_view(L"\x2216")}) {
        EXPECT_EQ(std::nullopt, Exact(name));
    }
}

TEST(ExactNameTest, NulsAtTheEndAreNoPartOfTheName) {
    EXPECT_EQ("a", Exact(std::wstring_view(L"a\0\0", 3)));
    EXPECT_EQ("", Exact(std::wstring_view(L"\0\0", 2)));
}

TEST(NameTextTest, RefusedNameIsThrown) {
    const UniqueBstr owned(SysAllocString(L"\x0100"));
    BSTR raw = owned.get();
    EXPECT_THROW(NameText(&raw), RefusedName);
}

TEST(NewBstrTest, WholeTextIsConvertedEmbeddedNulsIncluded) {
    EXPECT_EQ(std::wstring(L"a\0b", 3), Widened(std::string("a\0b", 3)));
    EXPECT_EQ(L"\x00E4\x20AC", Widened("\xE4\x80"));
}

TEST(NewBstrTest, EmptyTextIsABstr) {
    const UniqueBstr empty = NewBstr("");
    ASSERT_NE(nullptr, empty.get());
    EXPECT_EQ(0u, SysStringLen(empty.get()));
}

TEST(NewBstrTest, EveryByteSurvivesTheWayThereAndBack) {
    for (int byte = 1; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        EXPECT_EQ(text, Narrowed(Widened(text))) << byte;
    }
}

}  // namespace
}  // namespace depot
