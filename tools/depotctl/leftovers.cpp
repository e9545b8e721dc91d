// leftovers: what an installation left on the machine after its libraries were removed, and its
// removal.
#include <shlobj.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "com/braced_text.h"
#include "depotbrowser/identifiers.h"
#include "depotctl/command_line.h"
#include "depotctl/commands.h"
#include "depotctl/definition_store.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/program.h"
#include "depotctl/utf8_text.h"
#include "host/identifiers.h"
#include "manager/depot_list.h"
#include "model/recovered_files.h"
#include "offline/offline_folder.h"
#include "platform/environment.h"
#include "platform/file_search.h"
#include "platform/known_folders.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/registry_key.h"
#include "store/folder_store.h"

namespace depot::ctl {
namespace {

// One thing that is left. Texts are in UTF-8.
struct Leftover {
    std::string place;              // a registry key with its hive, or a folder
    std::string what;               // what it is
    std::string stays;              // why it is never removed here; empty for what may be
    std::function<DWORD()> remove;  // returns a code of the system
};

constexpr char kClasses[] = "Software\\Classes";
constexpr char kOwnKey[] = "Software\\Quillon\\DepotIntr";
constexpr char kEventSource[] =
    "SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\DepotIntr";
// What the installer keeps of its choices.
constexpr const char* kInstallerValues[] = {"InstallDir", "StandIn", "Languages"};

// The keys below the classes that belong to one library alone.
struct Server {
    std::vector<std::string> classIds;
    std::string libraryId;
    std::vector<std::string> otherKeys;
};

std::string Interface(const char* identifier) {
    return std::string("Interface\\") + identifier;
}

const std::array<Server, 2>& Servers() {
    static const std::array<Server, 2> servers = {
        {{{DEPOT_BRACED_TEXT(DEPOTINTR_CLSID)},
          DEPOT_BRACED_TEXT(DEPOTINTR_LIBID),
          {"DepotIntr.DepotIntrApi", "DepotIntr.DepotIntrApi.1",
           "AppID\\" DEPOT_BRACED_TEXT(DEPOTINTR_APPID), "AppID\\DepotIntr.DLL",
           Interface(DEPOT_BRACED_TEXT(DEPOTINTR_IID)),
           Interface(DEPOT_BRACED_TEXT(DEPOTINTR_IID2)),
           Interface(DEPOT_BRACED_TEXT(DEPOTINTR_DEPOTS_IID)),
           Interface(DEPOT_BRACED_TEXT(DEPOTINTR_DEPOT_IID))}},
         {{DEPOT_BRACED_TEXT(DEPOTBROWSER_PROMPT_CLSID),
           DEPOT_BRACED_TEXT(DEPOTBROWSER_BROWSE_CLSID)},
          DEPOT_BRACED_TEXT(DEPOTBROWSER_LIBID),
          {"DepotBrowser.UserPasswordPromptDialog", "DepotBrowser.UserPasswordPromptDialog.1",
           "DepotBrowser.DepotBrowseDialog", "DepotBrowser.DepotBrowseDialog.1",
           "AppID\\" DEPOT_BRACED_TEXT(DEPOTBROWSER_APPID), "AppID\\DepotBrowser.DLL",
           Interface(DEPOT_BRACED_TEXT(DEPOTBROWSER_PROMPT_IID)),
           Interface(DEPOT_BRACED_TEXT(DEPOTBROWSER_PROMPT2_IID)),
           Interface(DEPOT_BRACED_TEXT(DEPOTBROWSER_BROWSE_IID)),
           Interface(DEPOT_BRACED_TEXT(DEPOTBROWSER_BROWSE2_IID)),
           Interface(DEPOT_BRACED_TEXT(DEPOTBROWSER_BROWSE3_IID))}}}};
    return servers;
}

std::string TextIn(HKEY root, const std::string& path, const std::string& name = {}) {
    const auto key = RegistryKey::Open(root, path, KEY_QUERY_VALUE);
    return key ? ExpandEnvironment(key->ReadString(name).value_or("")) : "";
}

bool HasKey(HKEY root, const std::string& path) {
    return RegistryKey::Open(root, path, KEY_QUERY_VALUE).has_value();
}

// Finds what is left. What belongs to an installation whose library is there is not among it. Files
// of directories that were kept for the user may be removed only where that is asked for: programs
// that need no registration may use them.
class LeftoverSearch {
public:
    explicit LeftoverSearch(bool withKeptFiles) : withKeptFiles_(withKeptFiles) {}

    std::vector<Leftover> Run() {
        for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
            for (const Server& server : Servers()) AddClasses(root, server);
            AddInstallerValues(root);
        }
        AddEventSource();
        AddKeptFiles();
        AddDefinitions();
        return std::move(found_);
    }

private:
    // A library that is there makes all that is registered with it no leftover.
    static bool IsRegistered(HKEY root, const Server& server) {
        const std::string classes = std::string(kClasses) + "\\";
        const std::string library = classes + "TypeLib\\" + server.libraryId + "\\1.0\\0\\win64";
        if (PathMayExistIn(root, library)) return true;
        return std::any_of(
            server.classIds.begin(), server.classIds.end(), [&](const std::string& id) {
                return PathMayExistIn(root, classes + "CLSID\\" + id + "\\InprocServer32");
            });
    }
    static bool PathMayExistIn(HKEY root, const std::string& key) {
        const std::string path = TextIn(root, key);
        return !path.empty() && PathMayExist(path);
    }

    void AddClasses(HKEY root, const Server& server) {
        if (IsRegistered(root, server)) {
            isInstalled_ = true;
            return;
        }
        for (const std::string& id : server.classIds) AddKey(root, "CLSID\\" + id);
        AddKey(root, "TypeLib\\" + server.libraryId);
        for (const std::string& key : server.otherKeys) AddKey(root, key);
    }

    void AddKey(HKEY root, const std::string& below) {
        const std::string path = std::string(kClasses) + "\\" + below;
        if (!HasKey(root, path)) return;
        found_.push_back(
            {HiveName(root) + path, "a registration without its library", {}, [root, path] {
                 return RemoveKey(root, path);
             }});
    }
    static DWORD RemoveKey(HKEY root, const std::string& path) {
        return static_cast<DWORD>(RegDeleteTreeA(root, path.c_str()));
    }

    // Quiet hosts below the same key are settings of the administrator.
    void AddInstallerValues(HKEY root) {
        const std::string folder = TextIn(root, kOwnKey, "InstallDir");
        if (folder.empty() || PathMayExist(JoinPath(folder, "DepotIntr.dll"))) return;
        found_.push_back(
            {HiveName(root) + kOwnKey, "what the installer noted of its folder", {}, [root] {
                 return RemoveInstallerValues(root);
             }});
        if (IsLocalFolder(folder)) {
            found_.push_back({Utf8FromAnsi(folder),
                              "the folder of the installation",
                              "it may hold files of others",
                              {}});
        }
    }
    static DWORD RemoveInstallerValues(HKEY root) {
        DWORD failed = ERROR_SUCCESS;
        for (const char* const name : kInstallerValues) {
            const auto status = static_cast<DWORD>(RegDeleteKeyValueA(root, kOwnKey, name));
            if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) failed = status;
        }
        return failed;
    }

    void AddEventSource() {
        const std::string library = TextIn(HKEY_LOCAL_MACHINE, kEventSource, "EventMessageFile");
        if (!HasKey(HKEY_LOCAL_MACHINE, kEventSource)) return;
        if (!library.empty() && PathMayExist(library)) return;
        found_.push_back({HiveName(HKEY_LOCAL_MACHINE) + kEventSource,
                          "the source of the event log, without its texts",
                          {},
                          [] { return RemoveKey(HKEY_LOCAL_MACHINE, kEventSource); }});
    }

    static std::size_t WaitingEdits() {
        std::size_t edits = 0;
        for (const std::string& folder : OfflineFolders()) edits += NamesIn(folder, ".edit").size();
        return edits;
    }

    void AddKeptFiles() {
        const std::string base = GetSpecialFolderPath(CSIDL_LOCAL_APPDATA);
        if (base.empty() || isInstalled_) return;
        const std::string kept = JoinPath(base, kOfflineFolder);
        if (IsLocalFolder(kept)) {
            const std::size_t edits = WaitingEdits();
            const std::string stays = edits > 0        ? Counted(edits, "edit") + " waiting in it"
                                      : withKeptFiles_ ? ""
                                                       : "removed with --kept-files only";
            found_.push_back({Utf8FromAnsi(kept), "files of directories that were kept", stays,
                              [kept] { return RemoveFolder(kept); }});
        }
        const std::string recovered = RecoveredFolder();
        if (!recovered.empty() && IsLocalFolder(recovered)) {
            found_.push_back({Utf8FromAnsi(recovered),
                              "recovered files",
                              "they are the user's; see \"depotctl recovered\"",
                              {}});
        }
    }
    static DWORD RemoveFolder(const std::string& folder) {
        const Result removed = FolderStore::Instance().RemoveTree(folder);
        return removed ? ERROR_SUCCESS : std::max<DWORD>(removed.Why().code, ERROR_ACCESS_DENIED);
    }

    void AddDefinitions() {
        if (isInstalled_) return;
        for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
            const std::vector<StoredDefinition> all = ReadDefinitions();
            const auto count = static_cast<std::size_t>(
                std::count_if(all.begin(), all.end(),
                              [root](const StoredDefinition& one) { return one.root == root; }));
            if (count == 0) continue;
            found_.push_back({HiveName(root) + kDepotsKey,
                              Counted(count, "definition") + " of depots",
                              "the next installation uses them; see \"depotctl depots remove\"",
                              {}});
        }
    }

    const bool withKeptFiles_;
    std::vector<Leftover> found_;
    bool isInstalled_ = false;
};

struct LeftoverOptions {
    bool remove = false;
    bool keptFiles = false;
};

// What became of one leftover.
std::string Remove(const Leftover& leftover, std::size_t& failures) {
    if (!leftover.stays.empty()) return "stays";
    const DWORD status = leftover.remove();
    if (status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND) return "removed";
    ++failures;
    return "not removed: " + SystemWords(status);
}

void ShowLeftovers(const Program& program, const LeftoverOptions& options) {
    Json rows = Json::array();
    std::string text;
    std::size_t failures = 0;
    for (const Leftover& leftover : LeftoverSearch(options.keptFiles).Run()) {
        const std::string state = options.remove           ? Remove(leftover, failures)
                                  : leftover.stays.empty() ? "left over"
                                                           : "stays";
        Json row = {{"place", leftover.place}, {"what", leftover.what}, {"state", state}};
        if (!leftover.stays.empty()) row["reason"] = leftover.stays;
        rows.push_back(std::move(row));
        text += Printable(leftover.place) + "\n  " + leftover.what + ": " + Printable(state) +
                (leftover.stays.empty() ? "" : ", " + leftover.stays) + "\n";
    }
    program.renderer.Lines(rows, text);
    if (failures > 0) {
        Refuse(Counted(failures, "leftover") +
               " could not be removed; run the command as an administrator");
    }
}

}  // namespace

void AddLeftoversCommand(CLI::App& app, Program& program) {
    const auto [command, options] = AddCommand<LeftoverOptions>(
        app, program,
        {"leftovers", "List what an uninstallation left behind; remove it on request",
         "Examples:\n  depotctl leftovers\n  depotctl leftovers --remove"},
        ShowLeftovers);
    command.add_flag("--remove", options.remove,
                     "Remove what belongs to nobody any more; files of users and definitions stay");
    command.add_flag("--kept-files", options.keptFiles,
                     "Count what was kept of directories among it, unless edits wait there");
}

}  // namespace depot::ctl
