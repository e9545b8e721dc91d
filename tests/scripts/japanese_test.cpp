// Clients in Japan: the depot, its folder and its files have Japanese names.
#include <algorithm>
#include <cstring>

#include "platform/wide_text.h"
#include "scripts/script_fixture.h"
#include "support/page_names.h"

namespace depot::test {
namespace {

using WideLines = std::vector<std::wstring>;

constexpr wchar_t kDepot[] = L"\u4E88\u5B9A\u8868";
constexpr wchar_t kShownDepot[] = L"\u793E\u5185\u306E\u4E88\u5B9A\u8868";
constexpr wchar_t kFolder[] = L"\u30BD\u30FC\u30B9";
constexpr wchar_t kTable[] = L"\u8868.kra";
constexpr wchar_t kTen[] = L"\u5341.kra";
constexpr wchar_t kSo[] = L"\u30BD.kra";
constexpr wchar_t kTenCopy[] = L"\u5341 - copy.kra";
constexpr char kOld[] = "[Plan]\r\nTitle=old\r\n";
constexpr char kNew[] = "[Plan]\r\nTitle=new\r\n";

std::wstring Decoded(UINT codePage, const std::string& bytes) {
    const int size = static_cast<int>(bytes.size());
    std::wstring text(bytes.size(), L'\0');
    const int length = MultiByteToWideChar(codePage, 0, bytes.data(), size, text.data(), size);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// A text file of the scripting runtime: a byte order mark and UTF-16.
std::wstring TextOfUtf16(const std::string& bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text.starts_with(L'\xFEFF') ? text.substr(1) : text;
}

WideLines LinesOf(const std::wstring& text) {
    WideLines lines;
    std::wstring line;
    for (const wchar_t c : text) {
        if (c == L'\n')
            lines.push_back(std::exchange(line, {}));
        else if (c != L'\r')
            line.push_back(c);
    }
    return lines;
}

class JapaneseClientTest : public ScriptTest {
protected:
    JapaneseClientTest() {
        if (!PageIsFit()) return;
        CreateDirectoryW(Local().c_str(), nullptr);
        CreateDirectoryW((Local() + L"\\" + kFolder).c_str(), nullptr);
        for (const wchar_t* name : {kTable, kTen}) MakeWideFile(At(name), kOld);
        const std::string key = Narrowed(kDepot);
        depots_.Text(key, "Path1", Narrowed(Local()));
        depots_.Text(key, "DisplayName.eng", Narrowed(kShownDepot));
        depots_.Dword(key, "DefaultDepot", 1);
    }

    // The Japanese code page and that of UTF-8 have these names.
    static bool PageIsFit() { return ExactAnsiFromWide(kShownDepot).has_value(); }

    std::wstring Local() const { return WideFromAnsi(folder_.Path()) + L"\\" + kDepot; }
    std::wstring At(const std::wstring& name) const {
        return Local() + L"\\" + kFolder + L"\\" + name;
    }
    static std::wstring Display(const std::wstring& name) {
        return std::wstring(L"<") + kDepot + L">\\" + kFolder + L"\\" + name;
    }

    static std::wstring Script() {
        return Decoded(CP_UTF8, FileBytes(OwnModuleFolder() + "clients\\plan.vbs"));
    }
    // Runs the script of these bytes, or another one that is given their place.
    WideLines RunScript(const std::string& bytes, const std::string& runner = {}) {
        const std::string script = "\"" + folder_.MakeFile("plan.vbs", bytes) + "\"";
        const std::string report = folder_.At("report.txt");
        const std::string output = folder_.At("output.txt");
        EXPECT_EQ(0u, RunCommandInto(output, "cscript.exe //nologo " + runner + script + " \"" +
                                                 report + "\""));
        EXPECT_EQ("", FileBytes(output));
        return LinesOf(TextOfUtf16(FileBytes(report)));
    }

    // What plan.vbs prints and leaves behind.
    void ExpectPlan(const WideLines& lines) {
        WideLines expected{std::wstring(L"<") + kDepot + L">\\",
                           Display(kTable),
                           At(kTable).substr(2),
                           L"old",
                           Display(kTenCopy),
                           L"listed " + Display(kSo),
                           L"listed " + Display(kTable),
                           L"end"};
        WideLines sorted = lines;
        if (sorted.size() == expected.size()) std::sort(sorted.begin() + 5, sorted.end() - 1);
        EXPECT_EQ(expected, sorted);
        EXPECT_EQ(kNew, WideBytes(At(kTable)));
        EXPECT_EQ(kOld, WideBytes(At(kSo)));
        for (const wchar_t* name : {kTen, kTenCopy}) EXPECT_EQ("(missing)", WideBytes(At(name)));
    }
};

TEST_F(JapaneseClientTest, ScriptSavedInTheCodePageUsesTheDepotByItsNames) {
    if (!PageIsFit()) return;
    ExpectPlan(RunScript(Narrowed(Script())));
}

// The emulator's cscript takes every file for one in the code page, so another script reads this
// one.
TEST_F(JapaneseClientTest, ScriptSavedAsUtf16UsesTheDepotByItsNames) {
    if (!PageIsFit()) return;
    const std::wstring script = L"\xFEFF" + Script();
    ExpectPlan(RunScript(
        std::string(reinterpret_cast<const char*>(script.data()), script.size() * sizeof(wchar_t)),
        "\"" + OwnModuleFolder() + "clients\\run_utf16.vbs\" "));
}

TEST_F(JapaneseClientTest, SampleInCppReadsAndWritesAProfileByItsNames) {
    if (!PageIsFit()) return;
    MakeWideFile(At(kTable), "[PROFILE]\r\nTitle=Office\r\n[Host]\r\nPort=24\r\n");
    const std::string output = folder_.At("output.txt");
    EXPECT_EQ(0u, RunCommandInto(output, "\"" + OwnModuleFolder() + "first.exe\" \"" +
                                             Narrowed(Display(kTable)) + "\""));
    EXPECT_EQ((WideLines{std::wstring(L"Default depot:  <") + kDepot + L">\\",
                         L"Kept in:        " + At(kTable), L"[PROFILE] Title: {Office}",
                         L"[Host] Name: {(not set)}", L"[Screen] Font: {(not set)}",
                         L"[Keyboard] Layout: {(not set)}", L"[Host] Port:    24",
                         L"[Notes] Indented: {   three blanks before}",
                         L"[Notes] Quoted: {\"in double quotes\"}", L"Session ended."}),
              LinesOf(WideFromAnsi(FileBytes(output))));
    EXPECT_NE(std::string::npos,
              WideBytes(At(kTable)).find("[Notes]\r\nIndented='   three blanks before'\r\n"));
    EXPECT_EQ(kOld, WideBytes(At(kTen)));
}

}  // namespace
}  // namespace depot::test
