#include "model/recovered_origins.h"

#include "directory/shared_credentials.h"
#include "model/depot.h"
#include "model/recovered_files.h"
#include "offline/offline_location.h"
#include "platform/data_protection.h"
#include "platform/file_search.h"
#include "platform/file_time.h"
#include "platform/known_folders.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/private_file.h"
#include "platform/replace_file.h"
#include "platform/text.h"
#include "platform/wide_text.h"
// After the Windows headers.
#include <shlobj.h>

namespace depot {
namespace {

constexpr std::string_view kExtension = ".record";

std::string RecordsFolder() {
    const std::string base = GetSpecialFolderPath(CSIDL_LOCAL_APPDATA);
    return base.empty() ? base : JoinPath(base, kRecoveredRecords);
}

std::string RecordOf(const std::string& folder, const std::string& fileName) {
    return Concatenate({JoinPath(folder, fileName), kExtension});
}

// Texts as they are in records.
std::string Stored(std::string_view text) {
    return ExactUtf8FromAnsi(text).value_or(std::string(text));
}

std::string DepotKeyOf(const CDepotPath& location) {
    const bool isOwned = location.owner != nullptr && location.owner->owner != nullptr;
    return isOwned ? location.owner->owner->name : std::string();
}

OriginRecord RecordFor(const std::string& path, const RecoveredOrigin& origin) {
    OriginRecord record;
    record.file = Stored(NamePart(path));
    if (origin.location != nullptr) {
        record.depot = Stored(DepotKeyOf(*origin.location));
        record.server = Stored(ServerKeyOf(*origin.location));
        record.place = Stored(OfflinePlaceOf(*origin.location));
    } else {
        record.server = Stored(origin.server);
    }
    record.dn = Stored(origin.dn);
    record.time = TimeNow();
    record.code = origin.code;
    record.reason = Stored(origin.reason);
    record.isNew = origin.isNew;
    if (origin.base) record.base.emplace(origin.base->begin(), origin.base->end());
    record.baseDigest = origin.baseDigest;
    return record;
}

void Write(const std::string& path, const RecoveredOrigin& origin) {
    const std::string folder = RecordsFolder();
    if (folder.empty()) return;
    EnsureLocalFolder(ParentFolderKeepSlash(folder));
    CreatePrivateFolder(folder);
    const auto sealed = ProtectForUser(EncodeOriginRecord(RecordFor(path, origin)));
    if (!sealed) return;
    ReplaceLocalFile(RecordOf(folder, NamePart(path)), sealed->data(),
                     static_cast<std::uint32_t>(sealed->size()), Flush::kNow);
}

}  // namespace

void NoteRecovered(const std::string& path, const RecoveredOrigin& origin) noexcept try {
    if (path.empty()) return;
    Write(path, origin);
    SweepOrigins();
} catch (...) {
    return;
}

NotedOrigin ReadOrigin(const std::string& fileName) {
    const std::string folder = RecordsFolder();
    if (folder.empty()) return {};
    const std::string path = RecordOf(folder, fileName);
    if (!PathMayExist(path)) return {};
    const auto sealed = ReadLocalFile(path);
    const auto bytes = sealed ? UnprotectForUser(*sealed) : std::nullopt;
    NotedOrigin noted;
    if (bytes) noted.record = DecodeOriginRecord(*bytes);
    // One that was given another name says nothing of this file.
    if (noted.record && noted.record->file != Stored(fileName)) noted.record.reset();
    noted.isDamaged = !noted.record;
    return noted;
}

void ForgetOrigin(const std::string& fileName) {
    const std::string folder = RecordsFolder();
    if (!folder.empty()) DeleteFileA(RecordOf(folder, fileName).c_str());
}

void SweepOrigins() {
    const std::string records = RecordsFolder();
    const std::string files = RecoveredFolder();
    if (records.empty() || files.empty()) return;
    for (const std::string& record : NamesIn(records, kExtension)) {
        const std::string file = record.substr(0, record.size() - kExtension.size());
        if (!PathMayExist(JoinPath(files, file))) DeleteFileA(JoinPath(records, record).c_str());
    }
}

}  // namespace depot
