// The browse dialog while a server does not answer, and with very many files.
#include "depotbrowser/silent_server.h"
// The sockets come first.
#include <gtest/gtest.h>

#include <thread>

#include "depotbrowser/browse_fixture.h"

namespace depot::test {
namespace {

class BrowseSlowTest : public BrowseTest {
protected:
    BrowseSlowTest() {
        depots_.Text("Dead", "DisplayName.eng", "Dead server");
        depots_.Text("Dead", "Path1", "dc=farrow,dc=test");
        depots_.Dword("Dead", "Type1", 1);
        depots_.Text("Dead", "Host1", "127.0.0.1");
        depots_.Dword("Dead", "Port1", server_.Port());
        depots_.Dword("Dead", "Authentication1", 2);
        depots_.Dword("Dead", "OrderIndex", 0);
        MakeFile("a.kra");
    }

    // The workers release the library once the server closes the connection.
    ~BrowseSlowTest() override {
        server_.HangUp();
        EXPECT_TRUE(Eventually([this] {
            dialog_.reset();
            return library_.CanUnloadNow() == S_OK;
        }));
    }

    SilentServer server_;
};

TEST_F(BrowseSlowTest, OtherDepotsStayUsableWhileAServerDoesNotAnswer) {
    EXPECT_EQ(kConfirmed, Show([this](const OpenBrowser& browser) {
                  EXPECT_TRUE(server_.Accept());
                  browser.WaitForMessage(L"Loading");
                  EXPECT_TRUE(browser.IsShown(CONTROL_PROGRESS));
                  EXPECT_TRUE(browser.IsShown(CONTROL_STOP));
                  browser.SelectDepot(L"Work profiles");
                  browser.WaitForRows({L"a.kra"});
                  EXPECT_FALSE(browser.IsShown(CONTROL_PROGRESS));
                  browser.DoubleClickRow(L"a.kra");
              }));
}

TEST_F(BrowseSlowTest, StopEndsTheWaitAndF5TriesAgain) {
    EXPECT_EQ(kNotConfirmed, Show([this](const OpenBrowser& browser) {
                  EXPECT_TRUE(server_.Accept());
                  browser.WaitForMessage(L"Loading");
                  browser.Click(CONTROL_STOP);
                  browser.WaitForMessage(L"Loading was stopped.");
                  EXPECT_FALSE(browser.IsShown(CONTROL_STOP));
                  browser.Press(VK_F5);
                  browser.WaitForMessage(L"Loading...");
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseSlowTest, ClosingDoesNotWaitForAWorkerAndKeepsTheLibraryLoaded) {
    DWORD closed = 0;
    EXPECT_EQ(kNotConfirmed, Show([&](const OpenBrowser& browser) {
                  EXPECT_TRUE(server_.Accept());
                  browser.WaitForMessage(L"Loading");
                  closed = GetTickCount();
                  browser.Press(VK_ESCAPE);
              }));
    EXPECT_LT(GetTickCount() - closed, 2000u);
    EXPECT_EQ(S_FALSE, library_.CanUnloadNow());
}

TEST_F(BrowseSlowTest, ServerThatHangsUpIsReportedInPlace) {
    EXPECT_EQ(kNotConfirmed, Show([this](const OpenBrowser& browser) {
                  EXPECT_TRUE(server_.Accept());
                  server_.HangUp();
                  browser.WaitForMessage(L"\"Dead server\" cannot be opened.\n");
                  browser.Press(VK_ESCAPE);
              }));
}

class BrowseManyTest : public BrowseTest {};

TEST_F(BrowseManyTest, TenThousandFilesStayResponsive) {
    constexpr int kFiles = 10000;
    for (int index = 0; index < kFiles; ++index) {
        const UniqueHandle file =
            OwnFile(CreateFileA(At("file" + std::to_string(index) + ".kra").c_str(), GENERIC_WRITE,
                                0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  const HWND list = browser.Control(CONTROL_LIST);
                  EXPECT_TRUE(Eventually([&] { return ListView_GetItemCount(list) == kFiles; }));
                  const DWORD start = GetTickCount();
                  browser.ClickHeader(0);
                  EXPECT_TRUE(Eventually([&] { return browser.Cells(0)[0] == L"file9999.kra"; }));
                  browser.Focus(CONTROL_LIST);
                  browser.Type(L"file77.");
                  browser.WaitForSelection({L"file77.kra"});
                  EXPECT_LT(GetTickCount() - start, 3000u);
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"<Work>\\file77.kra", ChosenPath());
}

}  // namespace
}  // namespace depot::test
