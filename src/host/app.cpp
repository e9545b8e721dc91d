#include "host/app.h"

#include "platform/ansi_case.h"

namespace depot {

BOOL CDepotIntrApp::InitInstance() {
    InstallAnsiCaseTable();
    return CWinApp::InitInstance();
}

int CDepotIntrApp::ExitInstance() {
    return CWinApp::ExitInstance();
}

}  // namespace depot
