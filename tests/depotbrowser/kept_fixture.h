// The browse dialog where edits could not be stored, and the window that it opens.
#pragma once

#include <functional>

#include "depotbrowser/browse_fixture.h"
#include "depotbrowser/kept_user.h"
#include "support/kept_world.h"

namespace depot::test {

class KeptDialogTest : public BrowseTest {
protected:
    using KeptScript = std::function<void(const OpenKept& kept)>;

    // Shows the dialog, opens the window from it and closes both.
    void ShowKept(const KeptScript& script) {
        Show([&](const OpenBrowser& browser) {
            const OpenKept kept = OpenKeptFrom(browser);
            if (kept.Window() != nullptr) {
                script(kept);
                kept.Close();
            }
            EXPECT_TRUE(Eventually([&] { return GetForegroundWindow() == browser.Window(); }));
            browser.Press(VK_ESCAPE);
        });
    }

    // The question for credentials comes from this window.
    static void GiveUpLogOn(const OpenKept& kept) {
        const OpenDialog prompt = WaitForPrompt();
        EXPECT_EQ(kept.Window(), GetWindow(prompt.Window(), GW_OWNER));
        prompt.Press(VK_ESCAPE);
    }

    KeptWorld world_{depots_};
};

}  // namespace depot::test
