// What the browse dialog looks like: icons, names, fonts and the places of its controls.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "depotbrowser/appearance.h"
#include "depotbrowser/browse_fixture.h"
#include "depotbrowser/icon_pixels.h"
#include "depotbrowser/kept_ids.h"
#include "support/child_process.h"
#include "support/languages.h"
#include "support/locale_world.h"
// After the Windows headers.
#include <shellapi.h>

namespace depot::test {
namespace {

constexpr char kIconLibrary[] = "shell32.dll";

// The pixels of one image of a list.
std::vector<DWORD> Pixels(HIMAGELIST images, int index) {
    int width = 0, height = 0;
    ImageList_GetIconSize(images, &width, &height);
    BITMAPINFO form = {};
    form.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(nullptr, &form, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HDC canvas = CreateCompatibleDC(nullptr);
    const HGDIOBJ previous = SelectObject(canvas, bitmap);
    ImageList_Draw(images, index, canvas, 0, 0, ILD_TRANSPARENT);
    GdiFlush();
    const auto* const first = static_cast<const DWORD*>(bits);
    const std::vector<DWORD> pixels(first, first + width * height);
    SelectObject(canvas, previous);
    DeleteDC(canvas);
    DeleteObject(bitmap);
    return pixels;
}

// The pixels of an icon of a file, drawn the same way.
std::vector<DWORD> PixelsOfIcon(const char* file, int number) {
    HICON icon = nullptr;
    EXPECT_EQ(1u, ExtractIconExA(file, number, nullptr, &icon, 1));
    const HIMAGELIST images = ImageList_Create(
        GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON), ILC_COLOR32 | ILC_MASK, 1, 1);
    ImageList_ReplaceIcon(images, -1, icon);
    const std::vector<DWORD> pixels = Pixels(images, 0);
    ImageList_Destroy(images);
    DestroyIcon(icon);
    return pixels;
}

class BrowseIconsTest : public BrowseTest {
protected:
    static std::vector<DWORD> PixelsOfRow(const OpenBrowser& browser, int row) {
        const HWND list = browser.Control(CONTROL_LIST);
        LVITEMW item = {};
        item.mask = LVIF_IMAGE;
        item.iItem = row;
        EXPECT_NE(0, SendMessageW(list, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)));
        return Pixels(ListView_GetImageList(list, LVSIL_SMALL), item.iImage);
    }

    // In the tree: of a depot by its place, or of the first folder below the selected depot.
    static std::vector<DWORD> PixelsOfDepot(const OpenBrowser& browser, int place) {
        const HWND tree = browser.Control(CONTROL_TREE);
        HTREEITEM item = TreeView_GetRoot(tree);
        while (place-- > 0) item = TreeView_GetNextSibling(tree, item);
        return PixelsInTree(tree, item);
    }
    static std::vector<DWORD> PixelsOfFolder(const OpenBrowser& browser) {
        const HWND tree = browser.Control(CONTROL_TREE);
        return PixelsInTree(tree, TreeView_GetChild(tree, TreeView_GetSelection(tree)));
    }

private:
    static std::vector<DWORD> PixelsInTree(HWND tree, HTREEITEM handle) {
        TVITEMW item = {};
        item.mask = TVIF_IMAGE | TVIF_SELECTEDIMAGE;
        item.hItem = handle;
        EXPECT_NE(0, SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)));
        EXPECT_EQ(item.iImage, item.iSelectedImage);
        return Pixels(TreeView_GetImageList(tree, TVSIL_NORMAL), item.iImage);
    }
};

TEST_F(BrowseIconsTest, FoldersHaveOneIconInListAndTreeAndFilesAnother) {
    MakeFile("Sessions\\one.kra");
    MakeFile("a.kra");
    MakeFile("b.kra");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRows({L"Sessions", L"a.kra", L"b.kra"});
                  const std::vector<DWORD> folder = PixelsOfRow(browser, 0);
                  EXPECT_EQ(folder, PixelsOfFolder(browser));
                  EXPECT_NE(folder, PixelsOfRow(browser, 1));
                  EXPECT_EQ(PixelsOfRow(browser, 1), PixelsOfRow(browser, 2));
                  EXPECT_NE(folder, PixelsOfDepot(browser, 0));
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseIconsTest, DepotsHaveTheIconOfTheirDefinition) {
    ASSERT_NE(PixelsOfIcon(kIconLibrary, 3), PixelsOfIcon(kIconLibrary, 4));
    depots_.Text("Work", "Icon", "shell32.dll,3");
    depots_.Text("Team", "Icon", "%SystemRoot%\\system32\\shell32.dll, 4");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  EXPECT_EQ(PixelsOfIcon(kIconLibrary, 3), PixelsOfDepot(browser, 0));
                  EXPECT_EQ(PixelsOfIcon(kIconLibrary, 4), PixelsOfDepot(browser, 1));
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseIconsTest, DepotsWhoseIconIsMissingShareTheDialogsOwn) {
    depots_.Text("Team", "Icon", folder_.At("missing.ico") + ",2");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  const std::vector<DWORD> own = PixelsOfDepot(browser, 0);
                  EXPECT_EQ(own, PixelsOfDepot(browser, 1));
                  EXPECT_NE(std::vector<DWORD>(own.size()), own);
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseIconsTest, ProfilesHaveTheIconThatIsConfiguredForTheirType) {
    MakeFile("a.kra");
    const ScratchKey extension(HKEY_LOCAL_MACHINE, "Software\\Classes\\.kra");
    const ScratchKey type(HKEY_LOCAL_MACHINE, "Software\\Classes\\DepotTests.Profile");
    std::vector<DWORD> own, configured;
    const auto look = [](std::vector<DWORD>& pixels) {
        return [&pixels](const OpenBrowser& browser) {
            browser.WaitForRows({L"a.kra"});
            pixels = PixelsOfRow(browser, 0);
            browser.Press(VK_ESCAPE);
        };
    };
    Show(look(own));
    extension.Text("", "", "DepotTests.Profile");
    type.Text("DefaultIcon", "", "shell32.dll,3");
    Show(look(configured));
    EXPECT_EQ(PixelsOfIcon(kIconLibrary, 3), configured);
    EXPECT_NE(own, configured);
}

TEST_F(BrowseIconsTest, OwnIconsAreDrawnAnewForEachResolution) {
    Show([](const OpenBrowser& browser) {
        for (const int resolution : {120, 144, 192, 288, 96}) {
            SCOPED_TRACE(resolution);
            RECT place = {0, 0, 1000, 700};
            SendMessageW(browser.Window(), WM_DPICHANGED, MAKEWPARAM(resolution, resolution),
                         reinterpret_cast<LPARAM>(&place));
            std::vector<DWORD> drawn;
            for (const std::uint32_t pixel : IconPixels(OwnIcon::kDepot, resolution / 6)) {
                drawn.push_back(pixel & 0xFFFFFF);
            }
            std::vector<DWORD> shown = PixelsOfDepot(browser, 0);
            for (DWORD& pixel : shown) pixel &= 0xFFFFFF;
            EXPECT_EQ(drawn, shown);
        }
        browser.Press(VK_ESCAPE);
    });
}

class BrowseLanguageTest : public BrowseTest {
protected:
    const LocaleWorld world_;
};

TEST_F(BrowseLanguageTest, DepotsAreNamedInTheLanguageOfTheUser) {
    for (const Language& one : kLanguages) {
        const std::string language(one.code);
        depots_.Text("Work", "DisplayName." + language, "Work in " + language);
    }
    for (const Language& one : kLanguages) {
        const std::string language(one.code);
        SCOPED_TRACE(language);
        world_.Configure(language, AllLanguages());
        const std::wstring name = L"Work in " + std::wstring(language.begin(), language.end());
        EXPECT_EQ(kNotConfirmed, Show([&](const OpenBrowser& browser) {
                      // The other depot has an English name alone.
                      EXPECT_EQ((Names{name, L"Team profiles"}), browser.Depots());
                      browser.WaitForLocation(name);
                      browser.Press(VK_ESCAPE);
                  }));
    }
}

TEST_F(BrowseLanguageTest, DepotWithoutAnyNameIsNamedByItsKey) {
    RegDeleteKeyValueA(depots_.Root(), (depots_.Path() + "\\Team").c_str(), "DisplayName.eng");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  EXPECT_EQ((Names{L"Work profiles", L"Team"}), browser.Depots());
                  browser.Press(VK_ESCAPE);
              }));
}

class BrowseFontTest : public BrowseTest {
protected:
    BrowseFontTest() {
        dialog_->put_RememberSize(0);
        dialog_->put_HelpTopic(1);
    }
};

// The name by which the system's readers call a control: its own text, or that of the label before
// it where its text is what the user enters.
std::wstring SpokenName(HWND control) {
    wchar_t kind[40] = {};
    GetClassNameW(control, kind, static_cast<int>(std::size(kind)));
    const bool isField = lstrcmpiW(kind, L"Edit") == 0 || lstrcmpiW(kind, L"ComboBox") == 0;
    return OpenDialog(isField ? GetWindow(control, GW_HWNDPREV) : control).Text(0);
}

TEST_F(BrowseFontTest, EveryControlHasANameForScreenReaders) {
    Show([](const OpenBrowser& browser) {
        std::vector<int> reached;
        for (HWND control = GetWindow(browser.Window(), GW_CHILD); control != nullptr;
             control = GetWindow(control, GW_HWNDNEXT)) {
            const int number = GetDlgCtrlID(control);
            const bool isReached = (GetWindowLongW(control, GWL_STYLE) & WS_TABSTOP) != 0;
            if (!isReached && number != CONTROL_PROGRESS) continue;
            reached.push_back(number);
            const std::wstring name = SpokenName(control);
            EXPECT_NE(L"", name) << number;
            if (number == CONTROL_LIST || number == CONTROL_TREE) {
                EXPECT_EQ(std::wstring::npos, name.find(L'&')) << number;
            }
        }
        EXPECT_EQ(
            (std::vector<int>{CONTROL_NEW_FOLDER, CONTROL_RENAME,      CONTROL_MAKE_COPY,
                              CONTROL_DELETE,     CONTROL_BACK,        CONTROL_FORWARD,
                              CONTROL_UP,         CONTROL_FIRST_CRUMB, CONTROL_FIRST_CRUMB + 1,
                              CONTROL_SEARCH,     CONTROL_TREE,        CONTROL_LIST,
                              CONTROL_KEPT_LINE,  CONTROL_PROGRESS,    CONTROL_STOP,
                              CONTROL_NAME,       CONTROL_TYPE,        IDOK,
                              IDCANCEL,           CONTROL_HELP}),
            reached);
        browser.Press(VK_ESCAPE);
    });
}

// The controls of the whole dialog are apart, and their texts are not cut.
void ExpectGoodLayout(const OpenBrowser& browser) {
    ExpectControlsApart(browser);
    for (const int control :
         {CONTROL_NEW_FOLDER, CONTROL_RENAME, CONTROL_MAKE_COPY, CONTROL_DELETE, CONTROL_NAME_LABEL,
          CONTROL_TYPE_LABEL, static_cast<int>(IDOK), static_cast<int>(IDCANCEL)}) {
        const HWND window = browser.Control(control);
        const SIZE needed = NeededSize(window, browser.Text(control), false);
        EXPECT_LE(needed.cx, SizeOf(window).cx) << control;
        EXPECT_LE(needed.cy, SizeOf(window).cy) << control;
    }
}

TEST_F(BrowseFontTest, ControlsUseTheSystemsMessageFont) {
    const LOGFONTW expected = SystemMetrics().lfMessageFont;
    Show([&](const OpenBrowser& browser) {
        for (const int control :
             {CONTROL_LIST, CONTROL_TREE, CONTROL_NAME, static_cast<int>(IDOK)}) {
            const LOGFONTW font = FontOf(browser.Control(control));
            EXPECT_STREQ(expected.lfFaceName, font.lfFaceName);
            EXPECT_EQ(expected.lfHeight, font.lfHeight);
        }
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseFontTest, LargerMessageFontMakesControlsLargerAndKeepsThemApart) {
    SIZE before = {};
    Show([&](const OpenBrowser& browser) {
        before = SizeOf(browser.Control(IDOK));
        ExpectGoodLayout(browser);
        browser.Press(VK_ESCAPE);
    });
    const LargerMessageFont font;
    SIZE after = {};
    Show([&](const OpenBrowser& browser) {
        after = SizeOf(browser.Control(IDOK));
        ExpectGoodLayout(browser);
        browser.Press(VK_ESCAPE);
    });
    EXPECT_GT(after.cx, before.cx * 3 / 2);
    EXPECT_GT(after.cy, before.cy * 3 / 2);
}

// Shows the dialog in a process that uses the screen's own resolution. The exit code is the
// height of a button, or 0 when the layout is not good.
int ShowAtOwnResolution(const Arguments&) {
    SetProcessDPIAware();
    const ComApartment apartment;
    const UniqueCom<IDepotBrowseDialog3> dialog = CreateBrowseObject();
    if (!dialog) return -1;
    dialog->put_RememberSize(0);
    int height = 0;
    const DialogUser user(IsBrowser, [&](const OpenDialog& shown) {
        const OpenBrowser browser(shown);
        ExpectGoodLayout(browser);
        height = static_cast<int>(SizeOf(browser.Control(IDOK)).cy);
        browser.Press(VK_ESCAPE);
    });
    LONG result = 0;
    dialog->ShowModal(&result);
    const bool good = !testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed();
    return good ? height : 0;
}
const RoleRegistration showAtOwnResolution("show-at-own-resolution", &ShowAtOwnResolution);

TEST_F(BrowseFontTest, HigherResolutionMakesControlsLargerAndKeepsThemApart) {
    constexpr DWORD kUsual = 96;
    const auto heightAt = [](DWORD resolution) {
        WriteRegistryDword(HKEY_CURRENT_USER, "Control Panel\\Desktop", "LogPixels", resolution);
        return ChildProcess("show-at-own-resolution").ExitCode();
    };
    const int usual = heightAt(kUsual);
    const int higher = heightAt(kUsual * 2);
    WriteRegistryDword(HKEY_CURRENT_USER, "Control Panel\\Desktop", "LogPixels", kUsual);
    EXPECT_LT(0, usual);
    EXPECT_GT(higher, usual * 3 / 2);
}

// The words of a heading, with room for the sign of the order.
TEST_F(BrowseLanguageTest, HeadingsOfEveryLanguageFitTheirColumns) {
    dialog_->put_RememberSize(0);
    SpeakTheLanguage();
    std::set<std::wstring> names;
    for (const Language& one : kLanguages) {
        const std::string language(one.code);
        SCOPED_TRACE(language);
        world_.Configure(language, AllLanguages());
        Show([&names](const OpenBrowser& browser) {
            const HWND list = browser.Control(CONTROL_LIST);
            const HWND header = ListView_GetHeader(list);
            const int count = Header_GetItemCount(header);
            EXPECT_EQ(4, count);
            for (int column = 0; column < count; ++column) {
                wchar_t text[64] = {};
                HDITEMW item = {};
                item.mask = HDI_TEXT;
                item.pszText = text;
                item.cchTextMax = static_cast<int>(std::size(text));
                SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(column),
                             reinterpret_cast<LPARAM>(&item));
                const auto needed =
                    SendMessageW(list, LVM_GETSTRINGWIDTHW, 0,
                                 reinterpret_cast<LPARAM>((std::wstring(text) + L"000").c_str()));
                names.insert(text);
                EXPECT_LE(needed, ListView_GetColumnWidth(list, column));
            }
            browser.Press(VK_ESCAPE);
        });
    }
    // They are texts of the languages.
    EXPECT_LT(std::size(kLanguages) * 2, names.size());
}

}  // namespace
}  // namespace depot::test
