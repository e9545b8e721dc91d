// The application object: what happens when the DLL is loaded into a process and leaves it.
#pragma once

#include "platform/win32.h"

namespace depot {

// What any library's application object does.
class CWinApp {
public:
    virtual ~CWinApp() = default;
    // Returns whether the library may be used.
    virtual BOOL InitInstance() { return TRUE; }
    virtual int ExitInstance() { return 0; }
};

class CDepotIntrApp final : public CWinApp {
public:
    BOOL InitInstance() override;
    int ExitInstance() override;

    // S_OK: the application object itself never keeps the library loaded.
    HRESULT CanUnloadNow() const { return S_OK; }
};

}  // namespace depot
