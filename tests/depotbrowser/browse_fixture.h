// The browse dialog over depots of a test's own.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "depotbrowser/browse_user.h"
#include "depotbrowser/browser_library.h"
#include "manager/depot_list.h"
#include "support/scratch.h"

namespace depot::test {

class BrowseTest : public testing::Test {
protected:
    static constexpr LONG kJunk = 0x5A5A5A5A;

    using Script = std::function<void(const OpenBrowser& browser)>;

    BrowseTest();

    // Has the dialog speak the configured language, as the component does: without texts beside it
    // it speaks English.
    void SpeakTheLanguage() const;

    // Shows the dialog while `script` plays the user. Returns the out value.
    LONG Show(const Script& script);

    std::wstring ChosenPath() const;
    Names ChosenPaths() const;

    // Defines a folder depot below the scratch folder and returns the folder.
    std::string DefineDepot(const std::string& key, const std::string& name, DWORD order) const;

    // Makes a file in the depot "Work", or in another one, and the folders that lead to it.
    void MakeFile(const std::string& name, const std::string& bytes = "[A]\r\n") const {
        MakeFileIn("Work", name, bytes);
    }
    void MakeFileIn(const std::string& depot, const std::string& name,
                    const std::string& bytes) const;
    std::string At(const std::string& name) const { return folder_.At("Work\\" + name); }

    const ComApartment apartment_;
    const BrowserLibrary library_;
    const ScratchFolder folder_;
    // What dialogs remember from one time to the next.
    const ScratchKey memory_{HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\13.00\\DepotBrowser"};
    const ScratchKey depots_{HKEY_CURRENT_USER, kDepotsKey};
    UniqueCom<IDepotBrowseDialog3> dialog_ = CreateBrowseObject();
};

}  // namespace depot::test
