// The question for credentials that the browse dialog asks for its workers.
#include "depotbrowser/browse_fixture.h"
#include "directory/dn.h"
#include "platform/directory_info_block.h"

namespace depot::test {
namespace {

// No server listens there.
constexpr DWORD kPort = 1;

class BrowsePromptTest : public BrowseTest {
protected:
    BrowsePromptTest() {
        depots_.Text("Corp", "DisplayName.eng", "Corporate");
        depots_.Text("Corp", "Path1", "dc=farrow,dc=test");
        depots_.Dword("Corp", "Type1", 1);
        depots_.Text("Corp", "Host1", "127.0.0.1");
        depots_.Dword("Corp", "Port1", kPort);
        MakeFile("a.kra");
        Forget();
    }
    ~BrowsePromptTest() override { Forget(); }

    DirectoryInfo& Shared() { return *block_.Access(); }
    void Forget() { Shared() = {}; }

    static void Replace(const OpenDialog& prompt, int control, const std::wstring& text) {
        prompt.WaitForFocus(control);
        prompt.Type(text);
        prompt.WaitForText(control, text);
    }

    DirectoryInfoBlock block_{ServerKey("127.0.0.1", kPort)};
};

TEST_F(BrowsePromptTest, TextThatTheCodePageCannotHoldIsRefusedInPlace) {
    const std::wstring refusal =
        L"The user name or password contains characters that cannot be used here.";
    const std::wstring foreign = L"\u65E5\u672C";
    EXPECT_EQ(kNotConfirmed, Show([&](const OpenBrowser& browser) {
                  browser.SelectDepot(L"Corporate");
                  const OpenDialog prompt = WaitForPrompt();
                  Replace(prompt, CONTROL_USER, foreign);
                  prompt.Press(VK_RETURN);
                  prompt.WaitForText(CONTROL_INSTRUCTION, refusal);
                  EXPECT_EQ(foreign, prompt.Text(CONTROL_USER));
                  Replace(prompt, CONTROL_USER, L"cn=mary");
                  prompt.Press(VK_TAB);
                  Replace(prompt, CONTROL_PASSWORD, foreign);
                  prompt.Press(VK_TAB);
                  prompt.WaitForFocus(IDOK);
                  prompt.Press(VK_SPACE);
                  Replace(prompt, CONTROL_PASSWORD, L"secret");
                  EXPECT_EQ(0u, Shared().noPrompt);
                  EXPECT_STREQ("", Shared().userName);
                  prompt.Press(VK_RETURN);
                  // The credentials are taken; that there is no server is another matter.
                  const OpenDialog again = WaitForPrompt(prompt.Window());
                  EXPECT_EQ(L"cn=mary", again.Text(CONTROL_USER));
                  EXPECT_NE(refusal, again.Text(CONTROL_INSTRUCTION));
                  EXPECT_STREQ("secret", Shared().password);
                  again.Press(VK_ESCAPE);
                  browser.WaitForMessage(L"\"Corporate\" cannot be opened.");
                  browser.Press(VK_ESCAPE);
              }));
}

}  // namespace
}  // namespace depot::test
