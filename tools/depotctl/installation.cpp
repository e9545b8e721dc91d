#include "depotctl/installation.h"

#include <aclapi.h>

#include <array>
#include <memory>

#include "com/braced_text.h"
#include "depotctl/encoding.h"
#include "host/identifiers.h"
#include "model/depot_paths.h"
#include "platform/local_file.h"
#include "platform/module_state.h"
#include "platform/paths.h"
#include "platform/registry_key.h"
#include "platform/system_folder.h"
#include "platform/text.h"
#include "texts/language_settings.h"

namespace depot::ctl {
namespace {

constexpr char kLibrary[] = "qdirsvc.dll";

constexpr char kRepair[] =
    "install the package again (msiexec /i ... REINSTALL=ALL), or run "
    "regsvr32 DepotIntr.dll";

std::string ClassesValue(const std::string& path) {
    const auto key = RegistryKey::Open(HKEY_CLASSES_ROOT, path);
    return key ? key->ReadString("", MAX_PATH).value_or("") : "";
}

bool HasClassesKey(const std::string& path) {
    return RegistryKey::Open(HKEY_CLASSES_ROOT, path).has_value();
}

// One class of the component as the registry describes it.
struct Registration {
    std::string programId, classId, libraryId;

    std::string ClassKey() const { return "CLSID\\" + classId; }
    std::string Server() const { return ClassesValue(ClassKey() + "\\InprocServer32"); }
    bool HasName() const { return EqualsNoCase(ClassesValue(programId + "\\CLSID"), classId); }
    bool HasLibrary() const {
        const std::string version = "TypeLib\\" + libraryId + "\\1.0\\0\\win64";
        return PathExists(ClassesValue(version));
    }
    bool IsAbsent() const { return !HasName() && !HasClassesKey(ClassKey()); }
};

const Registration kComponent = {"DepotIntr.DepotIntrApi", DEPOT_BRACED_TEXT(DEPOTINTR_CLSID),
                                 DEPOT_BRACED_TEXT(DEPOTINTR_LIBID)};

// Files that the system is to put in place before anything else starts again.
std::string WaitingFiles() {
    constexpr char kKey[] = "SYSTEM\\CurrentControlSet\\Control\\Session Manager";
    constexpr DWORD kMostBytes = 1 << 20;
    std::string list(kMostBytes, '\0');
    DWORD bytes = kMostBytes;
    const LSTATUS status = RegGetValueA(HKEY_LOCAL_MACHINE, kKey, "PendingFileRenameOperations",
                                        RRF_RT_REG_MULTI_SZ, nullptr, list.data(), &bytes);
    list.resize(status == ERROR_SUCCESS ? bytes : 0);
    return list;
}

struct LocalFreer {
    void operator()(void* memory) const { LocalFree(memory); }
};

constexpr ACCESS_MASK kWriting =
    FILE_ADD_FILE | FILE_DELETE_CHILD | WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;

bool MeansOrdinaryUsers(PSID sid) {
    constexpr std::array kGroups = {WinWorldSid, WinAuthenticatedUserSid, WinBuiltinUsersSid,
                                    WinInteractiveSid};
    for (const WELL_KNOWN_SID_TYPE group : kGroups) {
        if (IsWellKnownSid(sid, group)) return true;
    }
    return false;
}

bool LetsOrdinaryUsersWrite(ACL* list, DWORD index) {
    void* entry = nullptr;
    if (!GetAce(list, index, &entry)) return false;
    auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    const bool counts = allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE &&
                        (allowed->Header.AceFlags & INHERIT_ONLY_ACE) == 0;
    return counts && (allowed->Mask & kWriting) != 0 && MeansOrdinaryUsers(&allowed->SidStart);
}

// Returns whether the folder's permissions let every user, or every user who is logged on, put
// files there or replace them; not when they cannot be read.
bool OrdinaryUsersMayWrite(const std::string& folder) {
    ACL* list = nullptr;
    void* descriptor = nullptr;
    const DWORD error =
        GetNamedSecurityInfoA(folder.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, &list, nullptr, &descriptor);
    const std::unique_ptr<void, LocalFreer> owner(descriptor);
    if (error != ERROR_SUCCESS) return false;
    // Without a list everybody may do everything.
    if (list == nullptr) return true;
    for (DWORD index = 0; index < list->AceCount; ++index) {
        if (LetsOrdinaryUsersWrite(list, index)) return true;
    }
    return false;
}

class Installation {
public:
    explicit Installation(Program& program) : program_(program) {}

    Findings Run() {
        CheckUpgrade();
        CheckRegistration();
        CheckRights();
        CheckDialogs();
        CheckFolders();
        CheckTexts();
        return std::move(findings_);
    }

private:
    void Add(Finding finding) { findings_.push_back(std::move(finding)); }
    void Bad(const char* subject, const std::string& text, const std::string& advice) {
        Add(Wrong(subject, text, advice));
    }

    // While a program has the older library loaded the newer one waits beside it.
    void CheckUpgrade() {
        if (FindNoCase(WaitingFiles(), "DepotIntr.dll") == std::string::npos) return;
        Add(Remark("upgrade",
                   "it waits for the next start of Windows; until then programs use the older "
                   "version",
                   "restart Windows"));
    }

    void CheckRegistration() {
        constexpr char kSubject[] = "registration";
        if (kComponent.IsAbsent()) {
            return Add(Remark(kSubject,
                              "the component is not registered; only programs with a manifest for "
                              "it find it",
                              "install the package, or run regsvr32 DepotIntr.dll"));
        }
        const std::string server = kComponent.Server();
        const std::string shown = "\"" + Utf8FromAnsi(server) + "\"";
        if (server.empty()) return Bad(kSubject, "the registration names no library", kRepair);
        if (!PathExists(server)) {
            return Bad(kSubject, "the component is registered as " + shown + ", which is not there",
                       kRepair);
        }
        if (!kComponent.HasName()) {
            return Bad(kSubject,
                       "the name " + kComponent.programId +
                           ", by which scripts create objects, is not registered",
                       kRepair);
        }
        if (!kComponent.HasLibrary()) {
            return Bad(kSubject, "the type library is not registered, or its file is not there",
                       kRepair);
        }
        folder_ = FolderPrefix(server);
        Add(Good(kSubject, shown));
    }

    // Every program that uses the component runs what is in its folder.
    void CheckRights() {
        if (folder_.empty() || !OrdinaryUsersMayWrite(folder_)) return;
        Add(Remark("folder",
                   "ordinary users may write to \"" + Utf8FromAnsi(folder_) +
                       "\": who replaces the libraries has other users run them",
                   "let only administrators write there"));
    }

    // The dialogs are classes of another library, which may be left out.
    void CheckDialogs() {
        const std::string classId = ClassesValue("DepotBrowser.UserPasswordPromptDialog\\CLSID");
        const std::string server = ClassesValue("CLSID\\" + classId + "\\InprocServer32");
        if (classId.empty() || server.empty()) {
            return Add(Remark("dialogs",
                              "DepotBrowser.dll is not registered: nobody is asked for a password, "
                              "and the browse dialog does not open",
                              "run regsvr32 DepotBrowser.dll"));
        }
        if (!PathExists(server)) {
            return Bad(
                "dialogs",
                "they are registered as \"" + Utf8FromAnsi(server) + "\", which is not there",
                "install the package again, or run regsvr32 DepotBrowser.dll");
        }
        Add(Good("dialogs", "\"" + Utf8FromAnsi(server) + "\""));
    }

    void CheckFolders() {
        constexpr char kSubject[] = "user folder";
        const bool missing = !folder_.empty() && !PathExists(folder_ + kLibrary) &&
                             !PathExists(SystemFolder() + kLibrary);
        if (missing) {
            return Bad(kSubject,
                       "qdirsvc.dll is neither beside DepotIntr.dll nor in the system "
                       "folder: clients get no session",
                       "install the product, or the stand-in of the package");
        }
        const std::string folder =
            RemoveTrailingBackslash(program_.Session().Folders().UserFolder());
        if (folder.empty()) {
            return Bad(kSubject, "nobody knows it: clients get no session", HowToName("UserDir"));
        }
        const std::string shown = "\"" + Utf8FromAnsi(folder) + "\"";
        if (IsLocalFolder(folder)) return Add(Good(kSubject, shown));
        if (PathExists(folder)) return Bad(kSubject, shown + " is a file", "correct UserDir");
        const std::string place = VolumeOf(folder);
        if (!PathExists(place)) {
            return Bad(kSubject,
                       shown + " is out of reach, because there is no \"" + Utf8FromAnsi(place) +
                           "\" here: depots below it are, too",
                       "connect it, or correct UserDir");
        }
        Add(Remark(kSubject, shown + " is not there", "create the folder, or correct UserDir"));
    }

    // Only the library that is asked for the folders reads the values.
    static std::string HowToName(const char* value) {
        const bool hasLibrary =
            PathExists(OwnModuleFolder() + kLibrary) || PathExists(SystemFolder() + kLibrary);
        return hasLibrary ? std::string("set ") + value
                          : std::string("put ") + kLibrary + " beside this program";
    }

    // The drive or the share that a folder lies on.
    static std::string VolumeOf(const std::string& folder) {
        char volume[MAX_PATH + 1] = {};
        const bool isKnown = GetVolumePathNameA(folder.c_str(), volume, sizeof(volume)) != 0;
        if (isKnown && volume[0] != '\0') return volume;
        if (!IsAbsolutePath(folder) || NamesNetworkPlace(folder)) return folder;
        return {folder.front(), ':', '\\'};
    }

    void CheckTexts() {
        constexpr char kSubject[] = "texts";
        const std::string folder = program_.Session().Folders().ResourceFolder();
        const std::string plain = folder + kResourceLibraryName;
        const std::string language = CurrentDottedLanguage();
        const std::string variant = folder + "depotintr" + language + ".nls";
        const bool hasVariant = !language.empty() && PathExists(variant);
        if (folder.empty()) {
            return Bad(kSubject, "nobody knows the folder of the language libraries",
                       HowToName("HomeDir64"));
        }
        if (!PathExists(plain)) {
            return Bad(kSubject,
                       "\"" + Utf8FromAnsi(plain) + "\" is not there: " +
                           (hasVariant ? "users of other languages" : "users") +
                           " see a message when a program starts",
                       "install the package again, or copy the .nls files there");
        }
        if (!hasVariant && !language.empty()) {
            return Add(Remark(
                kSubject, "there is no \"" + Utf8FromAnsi(variant) + "\"; the texts are English",
                "install the package again, or copy the .nls files there"));
        }
        Add(Good(kSubject, "\"" + Utf8FromAnsi(hasVariant ? variant : plain) + "\""));
    }

    Program& program_;
    std::string folder_;  // of the registered library, when that is in order
    Findings findings_;
};

}  // namespace

Findings CheckInstallation(Program& program) {
    return Installation(program).Run();
}

}  // namespace depot::ctl
