#include "host/app.h"

#include "directory/directory_help.h"
#include "directory/ldap_items.h"
#include "manager/standard_folders.h"
#include "model/help_texts.h"
#include "model/localization.h"
#include "platform/system_code_page.h"
#include "texts/language_settings.h"
#include "texts/resource_library.h"

namespace depot {

BOOL CDepotIntrApp::InitInstance() {
    InstallSystemCodePage();
    InstallLocalization(
        {CurrentLanguageCode, ResourceText, kLocaleKey, [] { return unsigned{UserLanguageId()}; }});
    InstallCredentialsPrompt(&credentialsDialog_);
    InstallDirectoryHelp(HelpForDirectoryCode);
    // Kept: the library stays usable without its texts.
    // Relied on by: installations whose resource files were removed or damaged.
    static_cast<void>(LoadResources());
    return CWinApp::InitInstance();
}

int CDepotIntrApp::ExitInstance() {
    SetResourceLibrary(nullptr);
    resources_.reset();
    return CWinApp::ExitInstance();
}

bool CDepotIntrApp::LoadResources() {
    StandardFolders folders;
    resources_ = LoadResourceLibraryOrTell(folders.ResourceFolder());
    SetResourceLibrary(resources_.get());
    return resources_ != nullptr;
}

}  // namespace depot
