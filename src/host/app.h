// The application object: what happens when the DLL is loaded into a process and leaves it.
#pragma once

#include "api/credentials_dialog.h"
#include "platform/handles.h"
#include "platform/win32.h"

namespace depot {

// What any library's application object does.
class CWinApp {
public:
    // Returns whether the library may be used.
    virtual BOOL InitInstance() { return TRUE; }
    virtual int ExitInstance() { return 0; }

protected:
    ~CWinApp() = default;
};

class CDepotIntrApp final : public CWinApp {
public:
    // Loads the texts in the user's language and makes them those of the component. Without them
    // the component works all the same, with English texts of its own where it needs some.
    BOOL InitInstance() override;
    int ExitInstance() override;

    // S_OK: the application object itself never keeps the library loaded.
    HRESULT CanUnloadNow() const { return S_OK; }

private:
    // Loads the library with the texts; returns whether there is one.
    bool LoadResources();

    UniqueModule resources_;
    CredentialsDialog credentialsDialog_;
};

}  // namespace depot
