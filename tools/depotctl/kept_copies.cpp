#include "depotctl/kept_copies.h"

#include <algorithm>
#include <iterator>

#include "depotctl/directory_words.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/utf8_text.h"
#include "directory/ldap_result.h"
#include "model/recovered_files.h"
#include "model/recovered_origins.h"
#include "offline/offline_folder.h"
#include "platform/file_search.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace depot::ctl {
namespace {

constexpr DWORD kPatience = 3000;
// What the keys of secured servers begin with.
constexpr std::string_view kSecured = "TLS ";
constexpr std::string_view kEdits = ".edit";
// So many digits of each of the two names of an edit's file name it for users.
constexpr std::size_t kShownDigits = 8;

FILETIME FileTimeOf(std::uint64_t time) {
    return {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
}

std::uint64_t SizeOf(const WIN32_FIND_DATAA& found) {
    return std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow;
}

KeptCopy RecoveredCopy(const std::string& folder, const WIN32_FIND_DATAA& found) {
    KeptCopy copy;
    copy.name = Utf8FromAnsi(found.cFileName);
    copy.path = JoinPath(folder, found.cFileName);
    copy.size = SizeOf(found);
    NotedOrigin noted = ReadOrigin(found.cFileName);
    copy.hasDamagedRecord = noted.isDamaged;
    copy.origin = std::move(noted.record);
    copy.time = copy.origin ? FileTimeOf(copy.origin->time) : found.ftLastWriteTime;
    return copy;
}

void AddRecovered(const Program& program, std::vector<KeptCopy>& copies) {
    SweepOrigins();
    const std::string folder = RecoveredFolder();
    if (folder.empty()) return;
    FileSearch search(JoinPath(folder, "*"));
    WIN32_FIND_DATAA found = {};
    while (search.Next(found)) {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            copies.push_back(RecoveredCopy(folder, found));
        }
    }
    if (search.UnsafeNames() > 0) program.ReportLeftOut(search.UnsafeNames());
    std::sort(copies.begin(), copies.end(),
              [](const KeptCopy& a, const KeptCopy& b) { return a.name < b.name; });
}

OriginRecord OriginOf(OfflineRecord&& edit) {
    OriginRecord origin;
    origin.place = std::move(edit.place);
    origin.dn = std::move(edit.dn);
    origin.time = edit.time;
    origin.isNew = !edit.base;
    origin.base = std::move(edit.base);
    return origin;
}

void AddWaitingIn(const std::string& folder, std::vector<KeptCopy>& copies) {
    FileSearch search(Concatenate({JoinPath(folder, "*"), kEdits}));
    WIN32_FIND_DATAA found = {};
    while (search.Next(found)) {
        const std::string name = found.cFileName;
        if (!name.ends_with(kEdits)) continue;
        KeptCopy copy;
        copy.path = JoinPath(folder, name);
        copy.isWaiting = true;
        copy.lockFolder = folder;
        copy.name = Concatenate({CutToBytes(NamePart(folder), kShownDigits), "-",
                                 CutToBytes(name, kShownDigits), kEdits});
        auto edit = ReadOfflineFile(copy.path);
        copy.hasDamagedRecord = !edit || edit->kind != OfflineKind::kEdit;
        copy.size = edit ? edit->bytes.size() : SizeOf(found);
        copy.time = edit ? FileTimeOf(edit->time) : found.ftLastWriteTime;
        if (!copy.hasDamagedRecord) copy.origin = OriginOf(*std::move(edit));
        copies.push_back(std::move(copy));
    }
}

bool IsNamed(const KeptCopy& copy, const std::string& name) {
    return IsSameName(copy.name, name) ||
           (!copy.isWaiting && IsSameName(Utf8FromAnsi(copy.path), name));
}

KeptCopy Named(const std::vector<KeptCopy>& copies, const std::string& name) {
    const auto isNamed = [&](const KeptCopy& copy) { return IsNamed(copy, name); };
    const auto found = std::find_if(copies.begin(), copies.end(), isNamed);
    if (found == copies.end()) {
        Refuse("nothing is kept under the name \"" + name +
               "\"; \"depotctl recovered\" lists what there is");
    }
    if (std::find_if(std::next(found), copies.end(), isNamed) != copies.end()) {
        Refuse("more than one kept copy has the name \"" + name + "\"");
    }
    return *found;
}

// Returns nothing, and the system's error, for what cannot be read.
std::optional<KeptBytes> TryBytes(const KeptCopy& copy) {
    if (!copy.isWaiting) return ReadLocalFile(copy.path);
    auto edit = ReadOfflineFile(copy.path);
    if (!edit) {
        SetLastError(ERROR_INVALID_DATA);
        return std::nullopt;
    }
    return std::move(edit->bytes);
}

}  // namespace

std::string KeptCopy::Server() const {
    if (!origin) return {};
    const std::string key = origin->server.empty()
                                ? origin->place.substr(0, FindAscii(origin->place, '\n'))
                                : origin->server;
    return key.starts_with(kSecured) ? key.substr(kSecured.size()) : key;
}

std::string KeptCopy::Why() const {
    if (isWaiting) return hasDamagedRecord ? "damaged" : "waits for its server";
    if (hasDamagedRecord) return "its record is damaged";
    if (!origin) return {};
    if (origin->code == kContentsChanged) return "someone else had stored another version";
    if (!origin->reason.empty()) return OneLine(origin->reason);
    return origin->code != 0 ? WordsFor(origin->code).text : std::string();
}

std::vector<KeptCopy> FindKeptCopies(const Program& program) {
    std::vector<KeptCopy> copies;
    AddRecovered(program, copies);
    for (const std::string& folder : OfflineFolders()) AddWaitingIn(folder, copies);
    return copies;
}

std::vector<KeptCopy> RequireKeptCopies(const Program& program,
                                        const std::vector<std::string>& names) {
    const std::vector<KeptCopy> copies = FindKeptCopies(program);
    std::vector<KeptCopy> wanted;
    for (const std::string& name : names) {
        KeptCopy copy = Named(copies, name);
        const bool isNew = std::none_of(wanted.begin(), wanted.end(), [&](const KeptCopy& other) {
            return other.path == copy.path;
        });
        if (isNew) wanted.push_back(std::move(copy));
    }
    return wanted;
}

KeptCopy RequireKeptCopy(const Program& program, const std::string& name) {
    return RequireKeptCopies(program, {name}).front();
}

KeptBytes BytesOf(const KeptCopy& copy) {
    auto bytes = TryBytes(copy);
    if (!bytes) Refuse("cannot read " + copy.Shown() + ": " + SystemWords(GetLastError()));
    return *std::move(bytes);
}

std::optional<std::string> DeleteKeptCopy(const KeptCopy& copy,
                                          const std::optional<KeptBytes>& bytes) {
    std::optional<EditsLock> lock;
    if (copy.isWaiting && !lock.emplace(copy.lockFolder, kPatience)) {
        return "cannot delete " + copy.Shown() + ": it is just being stored";
    }
    if (bytes && TryBytes(copy) != bytes) return copy.Shown() + " was changed meanwhile and stays";
    if (!DeleteFileA(copy.path.c_str())) {
        const DWORD error = GetLastError();
        return "cannot delete " + copy.Shown() + ": " + SystemWords(error);
    }
    if (!copy.isWaiting) ForgetOrigin(NamePart(copy.path));
    return std::nullopt;
}

}  // namespace depot::ctl
