// The messages of the event log, read as viewers of the log read them.
#include <gtest/gtest.h>

#include <iterator>
#include <optional>
#include <set>
#include <string>

#include "platform/event_log.h"
#include "platform/handles.h"
#include "platform/module_state.h"
#include "support/languages.h"

namespace depot {
namespace {

constexpr LogMessage kMessages[] = {LogMessage::kNoticeNotShown, LogMessage::kPromptNotShown,
                                    LogMessage::kDialogNotShown};

UniqueModule LoadTexts(const std::string& name) {
    return UniqueModule(LoadLibraryExA((OwnModuleFolder() + name).c_str(), nullptr,
                                       LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
}

BOOL CALLBACK AddLanguage(HMODULE, LPCSTR, LPCSTR, WORD language, LONG_PTR found) {
    reinterpret_cast<std::set<WORD>*>(found)->insert(language);
    return TRUE;
}

BOOL CALLBACK AddLanguagesOfName(HMODULE library, LPCSTR type, LPSTR name, LONG_PTR found) {
    return EnumResourceLanguagesA(library, type, name, &AddLanguage, found);
}

std::set<WORD> LanguagesOf(const UniqueModule& library, LPCSTR type) {
    std::set<WORD> found;
    EnumResourceNamesA(library.get(), type, &AddLanguagesOfName,
                       reinterpret_cast<LONG_PTR>(&found));
    return found;
}

std::wstring Message(const UniqueModule& library, LogMessage message, WORD language) {
    wchar_t text[2000] = {};
    wchar_t program[] = L"<program>", what[] = L"<what>";
    wchar_t* values[] = {program, what};
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, library.get(),
                       static_cast<DWORD>(message), language, text,
                       static_cast<DWORD>(std::size(text)), reinterpret_cast<va_list*>(values));
    return {text, length};
}

bool Names(const std::wstring& text, const wchar_t* value) {
    return text.find(value) != std::wstring::npos;
}

TEST(EventMessagesTest, EveryLanguageOfTheTextsHasThem) {
    const UniqueModule plain = LoadTexts("DepotIntr.NLS");
    ASSERT_TRUE(plain);
    std::set<WORD> expected;
    for (const std::string& library : test::LanguageLibraries()) {
        expected.merge(LanguagesOf(LoadTexts(library), RT_STRING));
    }
    EXPECT_EQ(std::size(kLanguages), expected.size());
    EXPECT_EQ(expected, LanguagesOf(plain, RT_MESSAGETABLE));
}

TEST(EventMessagesTest, EveryMessageNamesTheProgramAndWhatWasNotShown) {
    const UniqueModule plain = LoadTexts("DepotIntr.NLS");
    std::set<std::wstring> seen;
    for (const WORD language : LanguagesOf(plain, RT_MESSAGETABLE)) {
        for (const LogMessage message : kMessages) {
            SCOPED_TRACE(testing::Message() << language << " " << static_cast<DWORD>(message));
            const std::wstring text = Message(plain, message, language);
            EXPECT_TRUE(Names(text, L"<program>"));
            EXPECT_EQ(message != LogMessage::kDialogNotShown, Names(text, L"<what>"));
            EXPECT_FALSE(Names(text, L"%") || Names(text, L"\xFFFD"));
            EXPECT_TRUE(seen.insert(text).second) << "not in its own words";
        }
    }
    EXPECT_EQ(std::size(kLanguages) * std::size(kMessages), seen.size());
}

TEST(EventMessagesTest, LettersArriveWhole) {
    const UniqueModule plain = LoadTexts("DepotIntr.NLS");
    EXPECT_TRUE(Names(Message(plain, LogMessage::kPromptNotShown, 0x407), L" Verzeichnisserver "));
    EXPECT_TRUE(Names(Message(plain, LogMessage::kPromptNotShown, 0x407), L"f\u00FCr den"));
    EXPECT_TRUE(Names(Message(plain, LogMessage::kNoticeNotShown, 0x411),
                      L"\u30C7\u30B9\u30AF\u30C8\u30C3\u30D7"));
}

}  // namespace
}  // namespace depot
