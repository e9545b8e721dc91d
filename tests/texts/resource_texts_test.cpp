#include <gmock/gmock.h>

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <set>
#include <string>
#include <vector>

#include "platform/handles.h"
#include "platform/module_state.h"
#include "platform/wide_text.h"
#include "resource_ids.h"
#include "support/languages.h"

namespace depot {
namespace {

// What each text is asked for with.
struct TextRow {
    unsigned id;
    int arguments;
};

std::vector<TextRow> Rows() {
    std::vector<TextRow> rows = {{IDS_COPY_PREFIX_NAME, 2}, {IDS_COPY_DASH_NAME, 2}};
    for (unsigned id = IDS_CREDENTIALS_TITLE; id <= IDS_CREDENTIALS_BUSY; ++id)
        rows.push_back({id, 0});
    for (unsigned id = IDS_BROWSE_OPEN; id <= IDS_BROWSE_FOLDER; ++id) {
        const bool named = id == IDS_BROWSE_CONFIRM_DELETE || id == IDS_BROWSE_CONFIRM_OVERWRITE ||
                           id == IDS_BROWSE_NOT_WRITABLE;
        rows.push_back({id, named ? 1 : 0});
    }
    for (unsigned id = IDS_BROWSE_SKEIN_FILE; id <= IDS_BROWSE_OUTSIDE; ++id) {
        const bool plain = id <= IDS_BROWSE_SESSION_FILE || id == IDS_BROWSE_WORKING ||
                           (id >= IDS_BROWSE_DEPOTS && id <= IDS_BROWSE_STOPPED);
        rows.push_back({id, plain ? 0 : 1});
    }
    for (const unsigned id : {IDS_BROWSE_HIDDEN, IDS_BROWSE_DELETE_HELD}) rows.push_back({id, 2});
    for (const unsigned id :
         {IDS_BROWSE_DELETE_WHOLE, IDS_BROWSE_DELETE_FINAL, IDS_BROWSE_DELETE_RECYCLED}) {
        rows.push_back({id, 0});
    }
    for (unsigned id = IDS_KEPT_LINE; id <= IDS_KEPT_NO_DIFFERENCE; ++id) {
        const bool named =
            id == IDS_KEPT_LINE || (id >= IDS_KEPT_ASK_REPLACE && id <= IDS_KEPT_STAYS);
        rows.push_back({id, named ? 1 : 0});
    }
    rows.push_back({IDS_BROWSE_PROPERTIES, 0});
    for (const unsigned id : {IDS_BROWSE_PROFILE_TITLE, IDS_BROWSE_PROFILE_HOST}) {
        rows.push_back({id, 1});
    }
    for (unsigned id = IDS_BROWSE_DROP_TYPE; id <= IDS_BROWSE_DROP_REPLACE; ++id) {
        rows.push_back({id, id == IDS_BROWSE_DROP_TYPE ? 2 : 1});
    }
    for (unsigned id = IDS_CREDENTIALS_SHOW; id <= IDS_CREDENTIALS_EXAMPLE; ++id)
        rows.push_back({id, 0});
    for (const unsigned id : {IDS_CREDENTIALS_STORE, IDS_CREDENTIALS_OPEN}) rows.push_back({id, 0});
    rows.push_back({IDS_CREDENTIALS_NAME_FORM, 1});
    for (unsigned id = IDS_BROWSE_BACK; id <= IDS_BROWSE_SUGGESTIONS; ++id) {
        const bool filled = id == IDS_BROWSE_NOTHING_FOUND || id == IDS_BROWSE_SEARCH_PARTLY ||
                            id == IDS_BROWSE_SEARCH_LIMIT || id == IDS_BROWSE_COUNT;
        rows.push_back({id, id == IDS_BROWSE_COUNT_SELECTED ? 2 : filled ? 1 : 0});
    }
    return rows;
}

std::wstring Load(const UniqueModule& library, unsigned id) {
    wchar_t text[512] = {};
    const int length = LoadStringW(library.get(), id, text, static_cast<int>(std::size(text)));
    return {text, static_cast<std::size_t>(length)};
}

// The text with its arguments put in by the C runtime.
std::wstring Format(const std::wstring& text, const wchar_t* first, const wchar_t* second) {
    std::wstring format = text;
    // The runtime's "%s" takes a narrow text in some of its modes; "%ls" is the same in all.
    for (std::size_t at = 0; (at = format.find(L"%s", at)) != std::wstring::npos; at += 3) {
        format.replace(at, 2, L"%ls");
    }
    wchar_t formatted[512] = {};
    EXPECT_LE(0, swprintf(formatted, std::size(formatted), format.c_str(), first, second));
    return formatted;
}

std::ptrdiff_t Percents(const std::wstring& text) {
    return std::count(text.begin(), text.end(), L'%');
}

int Arguments(const std::wstring& text) {
    int arguments = 0;
    for (std::size_t at = 0; (at = text.find(L"%s", at)) != std::wstring::npos; ++at) ++arguments;
    return arguments;
}

// The access key of a label; 0 for a label without one.
wchar_t AccessKey(const std::wstring& label) {
    const std::size_t mark = label.find(L'&');
    if (mark == std::wstring::npos || mark + 1 == label.size()) return L'\0';
    return static_cast<wchar_t>(towupper(label[mark + 1]));
}

class ResourceTextsTest : public testing::TestWithParam<std::string> {
protected:
    static UniqueModule LoadNamed(const std::string& name) {
        return UniqueModule(LoadLibraryA((OwnModuleFolder() + name).c_str()));
    }

    // Each of the labels has an access key, and none another one's.
    void ExpectOwnKeys(const std::vector<unsigned>& labels) const {
        std::set<wchar_t> keys;
        for (const unsigned id : labels) {
            const wchar_t key = AccessKey(Load(library_, id));
            EXPECT_NE(L'\0', key) << id;
            EXPECT_TRUE(keys.insert(key).second) << id << " shares its key";
        }
    }

    UniqueModule library_ = LoadNamed(GetParam());
};

TEST_P(ResourceTextsTest, EveryTextIsThereAndTakesItsArguments) {
    ASSERT_TRUE(library_);
    for (const TextRow& row : Rows()) {
        SCOPED_TRACE(row.id);
        const std::wstring text = Load(library_, row.id);
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(row.arguments, Arguments(text));
        EXPECT_EQ(row.arguments, Percents(text));
        EXPECT_EQ(std::wstring::npos, text.find(L'\xFFFD'));
        const std::wstring formatted = Format(text, L"<one>", L"<two>");
        EXPECT_EQ(row.arguments > 0, formatted.find(L"<one>") != std::wstring::npos);
        EXPECT_EQ(row.arguments > 1, formatted.find(L"<two>") != std::wstring::npos);
        EXPECT_EQ(0, Percents(formatted));
    }
}

TEST_P(ResourceTextsTest, EveryControlOfTheBrowseDialogHasAnAccessKeyOfItsOwn) {
    ASSERT_TRUE(library_);
    // Open and Save are never there together.
    for (const unsigned confirm : {IDS_BROWSE_OPEN, IDS_BROWSE_SAVE}) {
        ExpectOwnKeys({confirm, IDS_BROWSE_NEW_FOLDER, IDS_BROWSE_RENAME, IDS_BROWSE_MAKE_COPY,
                       IDS_BROWSE_DELETE, IDS_BROWSE_DEPOTS, IDS_BROWSE_FILES, IDS_BROWSE_SEARCH,
                       IDS_BROWSE_FILE_NAME, IDS_BROWSE_FILE_TYPE, IDS_BROWSE_STOP, IDS_BROWSE_HELP,
                       IDS_KEPT_LINE});
    }
}

TEST_P(ResourceTextsTest, EveryControlOfTheWindowOfKeptFilesHasAnAccessKeyOfItsOwn) {
    ASSERT_TRUE(library_);
    ExpectOwnKeys({IDS_BROWSE_FILES, IDS_KEPT_DIFFERENCES, IDS_KEPT_MERGE, IDS_KEPT_REPLACE,
                   IDS_KEPT_EXPORT, IDS_KEPT_DISCARD, IDS_KEPT_VALUES});
}

TEST_P(ResourceTextsTest, EveryControlOfTheCredentialsDialogHasAnAccessKeyOfItsOwn) {
    ASSERT_TRUE(library_);
    ExpectOwnKeys({IDS_CREDENTIALS_USER, IDS_CREDENTIALS_PASSWORD, IDS_CREDENTIALS_SHOW,
                   IDS_CREDENTIALS_STORE});
}

TEST_P(ResourceTextsTest, NoTextHasAnUnknownNumber) {
    ASSERT_TRUE(library_);
    std::set<unsigned> known;
    for (const TextRow& row : Rows()) known.insert(row.id);
    for (unsigned id = 1; id <= 1024; ++id) {
        EXPECT_EQ(known.contains(id), !Load(library_, id).empty()) << id;
    }
}

TEST_P(ResourceTextsTest, PrefixNameLeavesRoomForACounterBehindItsFirstWord) {
    const std::wstring text = Load(library_, IDS_COPY_PREFIX_NAME);
    const std::size_t first = text.find(L"%s");
    ASSERT_TRUE(first != std::wstring::npos && first >= 2);
    // One blank stands before the counter's place, and the name comes last.
    EXPECT_EQ(L' ', text[first - 1]);
    EXPECT_NE(L' ', text[first - 2]);
    EXPECT_TRUE(text.ends_with(L" %s"));
    EXPECT_TRUE(Format(text, L"", L"a.kra").ends_with(L" a.kra"));
}

TEST_P(ResourceTextsTest, DashNameKeepsTheNameInFrontAndTheExtensionLast) {
    const std::wstring name = Format(Load(library_, IDS_COPY_DASH_NAME), L"Report", L".kra");
    EXPECT_TRUE(name.starts_with(L"Report - "));
    EXPECT_TRUE(name.ends_with(L".kra"));
    EXPECT_EQ(std::wstring::npos, name.find_first_of(L"\\/:*?\"<>|"));
}

INSTANTIATE_TEST_SUITE_P(Libraries, ResourceTextsTest, testing::ValuesIn(test::LanguageLibraries()),
                         [](const auto& parameter) {
                             std::string name = parameter.param;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

TEST(ResourceTranslationsTest, EachLanguageNamesCopiesInItsOwnWords) {
    const std::pair<const char*, const char*> rows[] = {
        {"DepotIntr.NLS", "Copy of a.kra"},       {"depotintr.eng.nls", "Copy of a.kra"},
        {"depotintr.fra.nls", "Copie de a.kra"},  {"depotintr.deu.nls", "Kopie von a.kra"},
        {"depotintr.esp.nls", "Copia de a.kra"},  {"depotintr.ita.nls", "Copia di a.kra"},
        {"depotintr.jpn.nls", "コピー ～ a.kra"}, {"depotintr.prt.nls", "Cópia de a.kra"}};
    EXPECT_EQ(std::size(kLanguages) + 1, std::size(rows));
    for (const auto& [file, expected] : rows) {
        SCOPED_TRACE(file);
        const UniqueModule library(LoadLibraryA((OwnModuleFolder() + file).c_str()));
        ASSERT_TRUE(library);
        EXPECT_EQ(expected,
                  Utf8FromWide(Format(Load(library, IDS_COPY_PREFIX_NAME), L"", L"a.kra")));
    }
}

TEST(ResourceTranslationsTest, AccentedLettersArriveWhole) {
    const UniqueModule library(LoadLibraryA((OwnModuleFolder() + "depotintr.deu.nls").c_str()));
    EXPECT_EQ(WideFromUtf8("Größe"), Load(library, IDS_BROWSE_COLUMN_SIZE));
}

}  // namespace
}  // namespace depot
