#include "manager/depot_file_context.h"

#include <utility>

#include "config/profile_file.h"
#include "manager/display_path.h"
#include "manager/resolve_item.h"
#include "model/depot_item.h"
#include "model/recovered_files.h"
#include "model/working_copy_journal.h"
#include "platform/error_text.h"
#include "platform/file_in_use.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/private_file.h"
#include "platform/text.h"
#include "platform/user_notice.h"
#include "platform/win32.h"

namespace depot {
namespace {

constexpr std::size_t kShortestPlainPath = 8;
// No file has a longer path, and the system's profile functions need not survive one.
constexpr std::size_t kLongestSystemPath = 32766;

bool IsPlainFile(const std::string& path, const CDepotItem& item, const CDepots& depots) {
    const bool absolute = path.find(":\\") != std::string::npos || path.starts_with("\\\\");
    return item.depot == depots.defaultDepot && path.size() >= kShortestPlainPath && absolute &&
           item.path.find('<') == std::string::npos &&
           PathExists(std::string(TrimTrailingBlanks(path)));
}

}  // namespace

DepotFileContext::DepotFileContext(const std::string& path, CDepots& depots) {
    if (path.empty()) return;
    CDepotItem item;
    ResolveItem(depots, path, item);
    // Some depots have no place for a path of the file system, whether or not a file is there.
    if (IsPlainFile(path, item, depots) || (item.depot && !OwnPlaceOf(*item.depot, path))) {
        depotPath = path;
        if (path.size() <= kLongestSystemPath) localPath = path;
    } else {
        Attach(item.depot, item.path);
    }
}

DepotFileContext::~DepotFileContext() {
    if (isWorkingCopy_) DeleteWorkingCopy(localPath);
}

void DepotFileContext::Attach(CDepot* holder, const std::string& displayPath) {
    depot = holder;
    depotPath = displayPath;
    if (depot == nullptr) return;
    std::string path = DisplayToStorage(*depot, depotPath);
    if (NeedsWorkingCopy()) {
        localPath = FetchToLocal(Directory(), path, &origin_, depot->Memory());
        isWorkingCopy_ = !localPath.empty();
    } else if (path.size() <= kLongestSystemPath) {
        localPath = std::move(path);
    }
}

Result DepotFileContext::FetchFailure() const {
    const bool isFailure = origin_.code != LDAP_SUCCESS && origin_.code != LDAP_NO_SUCH_OBJECT;
    return isFailure ? Directory().Connection().Outcome(origin_.code) : Result();
}

std::string DepotFileContext::ReadString(const std::string& section, const std::string& key,
                                         const std::string& defaultValue,
                                         std::uint32_t size) const {
    return ReadProfileString({section, key, defaultValue, size}, localPath);
}

std::uint32_t DepotFileContext::ReadInt(const std::string& section, const std::string& key,
                                        std::uint32_t defaultValue) const {
    return ReadProfileInt(section, key, defaultValue, localPath);
}

DWORD DepotFileContext::WriteString(const std::string& section, const std::string& key,
                                    const std::string& value, const std::string* comparison) {
    const bool removes = value.empty() || (comparison && EqualsNoCase(value, *comparison));
    ProfileEdit edit = {section, key, {}};
    if (!removes) edit.value = value;
    if (isWorkingCopy_ && recoveredFolder_.empty()) recoveredFolder_ = RecoveredFolder();
    if (isWorkingCopy_) return EditWorkingCopy(std::move(edit));
    EditOutcome outcome = {.error = ERROR_BAD_PATHNAME};
    // The system would put any other file into its own folder or the process's current one.
    if (IsAbsolutePath(localPath)) outcome = EditProfile(edit, localPath, room_);
    // Where memory runs out before this, nothing was written.
    changed = true;
    KeepWhatWasLost(outcome);
    return outcome.refusal != ERROR_SUCCESS ? outcome.refusal : outcome.error;
}

DWORD DepotFileContext::EditWorkingCopy(ProfileEdit edit) {
    RefusedEdits& refused = origin_.refused;
    const bool missing = !PathMayExist(localPath);
    EditOutcome outcome;
    const auto attempt = [&] {
        outcome = EditProfile(edit, localPath, room_);
        changed = true;
        SetLastError(outcome.error);
        return outcome.error == ERROR_SUCCESS;
    };
    // Once a copy cannot be stored any more nothing is gained by waiting.
    if (refused.error != ERROR_SUCCESS) {
        attempt();
    } else {
        RetryWhileInUse(FileUse::kOwn, attempt);
    }
    if (missing) {
        // What the system makes of it holds nothing but this edit.
        MakePrivate(localPath);
        if (outcome.error == ERROR_SUCCESS) outcome.error = ERROR_FILE_NOT_FOUND;
    }
    if (refused.error == ERROR_SUCCESS) refused.error = outcome.error;
    if (refused.error == ERROR_SUCCESS) {
        return outcome.refusal;
    }
    if (outcome.lost && !refused.whole) refused.whole = std::move(outcome.lost);
    refused.edits.push_back(std::move(edit));
    return refused.error;
}

void DepotFileContext::KeepWhatWasLost(const EditOutcome& outcome) const {
    if (!outcome.lost) return;
    const std::string kept =
        KeepRecovered(NamePart(localPath), outcome.lost->data(), outcome.lost->size());
    std::string text;
    FormatErrorText(outcome.error, localPath.c_str(), nullptr, &text, nullptr);
    text = std::string(TrimTrailingBlanks(text));
    if (!kept.empty()) text += "\n" + kept;
    ShowNotice(text);
}

bool DepotFileContext::Release() {
    // Without memory for the write-back a changed copy stays: it holds the only edit.
    isWorkingCopy_ = isWorkingCopy_ && !changed;
    // What was written to a file of the file system is already in the file itself.
    if (!NeedsWorkingCopy()) return true;
    const std::string entry = DisplayToStorage(*depot, depotPath);
    const bool stored = ReleaseLocal(Directory(), entry, localPath, changed, nullptr, origin_) != 0;
    isWorkingCopy_ = false;
    localPath.clear();
    return stored;
}

std::optional<std::vector<std::uint8_t>> DepotFileContext::EntryBytes() const {
    const bool isKnown = isWorkingCopy_ && (origin_.code == LDAP_SUCCESS || changed);
    return isKnown ? ReadLocalFile(localPath) : std::nullopt;
}

void DepotFileContext::ContinueWith(std::span<const std::uint8_t> bytes) {
    const Result failure = FetchFailure();
    // What is hidden meanwhile stays so.
    if (failure || failure.Is(Reason::kUnseen)) return;
    const std::string entry = DisplayToStorage(*depot, depotPath);
    std::string copy = CopyOfKnown(Directory(), entry, bytes, origin_);
    if (copy.empty()) return;
    if (isWorkingCopy_) DeleteWorkingCopy(localPath);
    localPath = std::move(copy);
    isWorkingCopy_ = true;
}

Result DepotFileContext::StoreFailure() const {
    const std::uint32_t code = Directory().LastError();
    // A working copy that could not be made is missing for a reason of its own.
    const bool wasMade = code != LDAP_PARAM_ERROR || FetchFailure().IsDone();
    return wasMade ? Directory().Connection().Outcome(code) : FetchFailure();
}

void DepotFileContext::KeepLocally() noexcept try {
    if (!isWorkingCopy_) return;
    isWorkingCopy_ = false;  // what cannot be kept elsewhere stays where it is
    if (changed) {
        KeepWorkingCopy(localPath, NamePart(depotPath), recoveredFolder_, origin_.refused);
    } else {
        DropWorkingCopy(localPath);
    }
} catch (...) {
    return;
}

}  // namespace depot
