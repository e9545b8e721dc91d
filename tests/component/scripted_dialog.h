// The browse dialog's component, played by the test: it notes every call and answers as told.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "DepotBrowser.h"
#include "platform/win32.h"
// After the Windows headers.
#include <oleauto.h>

namespace depot::test {

// What the dialogs that COM creates in this process do and what was asked of them. Between
// construction and destruction, classes of this process win over registered ones.
class ScriptedDialogs {
public:
    ScriptedDialogs();
    ~ScriptedDialogs();
    ScriptedDialogs(const ScriptedDialogs&) = delete;
    ScriptedDialogs& operator=(const ScriptedDialogs&) = delete;

    LONG result = 1;
    HRESULT showResult = S_OK;
    bool extended = true;  // whether the dialogs know the second interface
    std::wstring chosenPath;
    HRESULT pathResult = S_OK;
    HRESULT pathsResult = S_OK;
    // Returns a new array, which the caller destroys.
    std::function<SAFEARRAY*()> chosenPaths = [] { return nullptr; };
    std::function<void()> whileShown = [] {};

    // One entry per call in their order, such as "Mode 26".
    std::vector<std::string> calls;
    int living = 0;

private:
    DWORD registration_ = 0;
};

// Returns a new array of BSTR whose first index is `first`.
SAFEARRAY* NewTexts(const std::vector<std::wstring>& texts, LONG first = 0);

}  // namespace depot::test
