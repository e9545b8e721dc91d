#include "platform/error_text.h"

#include <gmock/gmock.h>

#include <functional>

#include "support/box_log.h"
#include "support/code_pages.h"
#include "support/import_patch.h"
#include "support/leak_counts.h"

namespace depot {
namespace {

constexpr DWORD kCodeWithoutText = 0x2000ABCD;
constexpr char kJunk[] = "junk";

std::string SystemText(DWORD error) {
    char text[1024] = {};
    FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                   0x400, text, sizeof(text), nullptr);
    return text;
}

std::string Formatted(DWORD error, const char* lead) {
    std::string text = kJunk;
    FormatErrorText(error, lead, nullptr, &text, nullptr);
    return text;
}

TEST(ErrorTextTest, NeitherLeadNorCodeIsUnknownError) {
    EXPECT_EQ("Unknown Error", Formatted(0, nullptr));
    EXPECT_EQ("Unknown Error", Formatted(0, ""));
}

TEST(ErrorTextTest, LeadWithoutACodeStandsAlone) {
    EXPECT_EQ("Cannot %s read", Formatted(0, "Cannot %s read"));
}

TEST(ErrorTextTest, CodeWithoutALeadGivesTheSystemsText) {
    ASSERT_NE("", SystemText(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(SystemText(ERROR_FILE_NOT_FOUND), Formatted(ERROR_FILE_NOT_FOUND, nullptr));
    EXPECT_EQ(SystemText(ERROR_FILE_NOT_FOUND), Formatted(ERROR_FILE_NOT_FOUND, ""));
}

TEST(ErrorTextTest, LeadAndCodeStandOnTwoLines) {
    EXPECT_EQ("Lead\n" + SystemText(ERROR_FILE_NOT_FOUND), Formatted(ERROR_FILE_NOT_FOUND, "Lead"));
}

TEST(ErrorTextTest, TextsWithInsertsAreGivenAsTheyStand) {
    // Many of the system's texts have places for names, such as %1.
    for (DWORD code = 1; code < 2000; ++code) {
        ASSERT_EQ(SystemText(code), Formatted(code, nullptr)) << code;
    }
}

TEST(ErrorTextTest, CodeWithoutATextGivesTheLeadAlone) {
    EXPECT_EQ("Lead", Formatted(kCodeWithoutText, "Lead"));
    EXPECT_EQ("", Formatted(kCodeWithoutText, nullptr));
}

// The last argument is a list of inserts, which nobody here looks into.
using FormatSystemText = DWORD(WINAPI*)(DWORD, const void*, DWORD, DWORD, char*, DWORD, void*);

// How often the system was asked for a text, and how it was asked last.
struct AskedText {
    int times;
    DWORD flags;
    DWORD error;
    DWORD language;
};
AskedText asked;
FormatSystemText formatSystemText = nullptr;

DWORD WINAPI NoteQuestion(DWORD flags, const void* source, DWORD error, DWORD language,
                          char* buffer, DWORD size, void* inserts) {
    asked = {asked.times + 1, flags, error, language};
    return formatSystemText(flags, source, error, language, buffer, size, inserts);
}

TEST(ErrorTextTest, SystemIsAskedOnceAndOnlyForACode) {
    const test::ImportPatch<FormatSystemText> formatting("FormatMessageA", &NoteQuestion);
    formatSystemText = formatting.Genuine();
    asked = {};
    Formatted(0, "Lead");
    Formatted(0, nullptr);
    EXPECT_EQ(0, asked.times);
    Formatted(ERROR_FILE_NOT_FOUND, "Lead");
    EXPECT_EQ(1, asked.times);
    EXPECT_EQ(0x1300u, asked.flags);
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, asked.error);
    EXPECT_EQ(0x400u, asked.language);
}

TEST(ErrorTextTest, TextsOfTheSystemAreFreed) {
    EXPECT_EQ(0u, test::CountLeftovers([] { Formatted(ERROR_FILE_NOT_FOUND, "Lead"); }, 500));
    EXPECT_EQ(0u, test::CountLeftovers([] { Formatted(kCodeWithoutText, "Lead"); }, 500));
}

TEST(ErrorTextTest, MessageIsCutToItsBound) {
    const std::string fit(kErrorTextBytes - 1, 'x');
    EXPECT_EQ(fit, Formatted(0, fit.c_str()));
    EXPECT_EQ(fit, Formatted(0, (fit + "y").c_str()));
    EXPECT_EQ(fit, Formatted(ERROR_FILE_NOT_FOUND, fit.c_str()));
    const std::string nearly(kErrorTextBytes - 4, 'x');
    EXPECT_EQ(nearly + "\n" + SystemText(ERROR_FILE_NOT_FOUND).substr(0, 2),
              Formatted(ERROR_FILE_NOT_FOUND, nearly.c_str()));
    EXPECT_EQ(fit, Formatted(0, std::string(100000, 'x').c_str()));
}

TEST(ErrorTextTest, CutHalvesNoCharacter) {
    const test::CodePageScope scope(932);
    const std::string nearly(kErrorTextBytes - 2, 'x');
    EXPECT_EQ(nearly, Formatted(0, (nearly + "\x95\\").c_str()));
    EXPECT_EQ(nearly.substr(1) + "\x95\\", Formatted(0, (nearly.substr(1) + "\x95\\y").c_str()));
}

TEST(ErrorTextTest, TextIsReportedWithoutABox) {
    const test::BoxLog boxes;
    std::string text = kJunk;
    ReportErrorText(ERROR_ACCESS_DENIED, "Lead", nullptr, &text);
    EXPECT_THAT(boxes.Texts(), testing::IsEmpty());
    EXPECT_EQ("Lead\n" + SystemText(ERROR_ACCESS_DENIED), text);
}

// The only box that a call shows.
test::ShownBox BoxOf(const std::function<void()>& call) {
    const test::BoxLog boxes;
    call();
    EXPECT_EQ(1u, boxes.Boxes().size());
    return boxes.Boxes().empty() ? test::ShownBox{} : boxes.Boxes().front();
}

TEST(ErrorBoxTest, MessageIsShownWithTheErrorIconAndOneButton) {
    const auto box = BoxOf([] { FormatErrorText(0, "Lead", "Caption", nullptr, nullptr); });
    EXPECT_EQ("Caption", box.caption);
    EXPECT_EQ("Lead", box.text);
    EXPECT_TRUE(box.hasErrorIcon);
    EXPECT_EQ(1, box.buttons);
    EXPECT_EQ(nullptr, box.owner);
}

TEST(ErrorBoxTest, CaptionsDifferWhenNoneIsGiven) {
    const auto formatted = [] { FormatErrorText(0, "Lead", nullptr, nullptr, nullptr); };
    EXPECT_EQ("Error", BoxOf(formatted).caption);
    EXPECT_EQ("Quillon", BoxOf([] { ReportErrorText(0, "Lead", nullptr, nullptr); }).caption);
    const auto titled = BoxOf([] { ReportErrorText(0, "Lead", "Mine", nullptr); });
    EXPECT_EQ("Mine", titled.caption);
    EXPECT_EQ(nullptr, titled.owner);
    EXPECT_TRUE(titled.hasErrorIcon);
}

TEST(ErrorBoxTest, BoxBelongsToTheOwnerItIsGiven) {
    const HWND owner = CreateWindowA("STATIC", "owner", WS_OVERLAPPED, 0, 0, 10, 10, nullptr,
                                     nullptr, nullptr, nullptr);
    ASSERT_NE(nullptr, owner);
    const auto box = BoxOf([&] { FormatErrorText(0, "Lead", "Owned", nullptr, owner); });
    DestroyWindow(owner);
    EXPECT_EQ("Owned", box.caption);
    EXPECT_EQ(owner, box.owner);
}

TEST(ErrorBoxTest, EmptyMessageIsShownToo) {
    const auto box = BoxOf([] { ReportErrorText(kCodeWithoutText, "", "Empty", nullptr); });
    EXPECT_EQ("Empty", box.caption);
    EXPECT_EQ("", box.text);
}

}  // namespace
}  // namespace depot
