#include "model/abandoned_copies.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "model/recovered_files.h"
#include "model/recovered_origins.h"
#include "model/working_copy_record.h"
#include "platform/checksum.h"
#include "platform/file_search.h"
#include "platform/held_file.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/trace.h"

namespace depot {
namespace {

// More journals than this, or a longer one, come from no run of this component.
constexpr std::size_t kMaxJournals = 64;
constexpr std::size_t kMaxJournalBytes = kMaxWorkingCopyRecords * kWorkingCopyRecordBytes;
// A profile of this size stays where it is.
constexpr std::size_t kMaxCopyBytes = std::size_t{256} * 1024 * 1024;

using Bytes = std::vector<std::uint8_t>;
using RecordSpan = std::span<const std::uint8_t, kWorkingCopyRecordBytes>;

// Calls `each` with every whole record of a journal and its place.
template <class Each>
void ForEachRecord(const Bytes& journal, const Each& each) {
    for (std::size_t at = 0; at + kWorkingCopyRecordBytes <= journal.size();
         at += kWorkingCopyRecordBytes) {
        each(RecordSpan(journal.data() + at, kWorkingCopyRecordBytes), at);
    }
}

bool IsFree(RecordSpan record) {
    return std::equal(record.begin(), record.end(), kNoWorkingCopy.begin());
}

// A journal that its process holds may still be read.
Bytes ReadLivingJournal(const std::string& path) {
    const UniqueHandle file = OwnFile(CreateFileA(
        path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
        OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    LARGE_INTEGER size = {};
    if (!file || !GetFileSizeEx(file.get(), &size)) return {};
    Bytes bytes(std::min(static_cast<std::size_t>(size.QuadPart), kMaxJournalBytes));
    DWORD read = 0;
    if (!ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr)) {
        return {};
    }
    bytes.resize(read);
    return bytes;
}

class Sweep {
public:
    explicit Sweep(const std::string& folder) : folder_(folder) {}

    void Run() {
        FindJournals();
        for (const HeldFile& journal : abandoned_) SweepJournal(journal);
    }

private:
    void FindJournals() {
        WIN32_FIND_DATAA found = {};
        FileSearch search(JoinPath(folder_, kWorkingCopyJournals));
        while (abandoned_.size() < kMaxJournals && search.Next(found)) {
            if (IsWorkingCopyJournal(found.cFileName)) Claim(JoinPath(folder_, found.cFileName));
        }
    }

    // To hold a journal is to be the only one who deals with its copies.
    void Claim(const std::string& path) {
        HeldFile journal(path);
        if (!journal) {
            NoteLiving(ReadLivingJournal(path));
        } else if (journal.IsPlainFile() && journal.IsOwnedByUser()) {
            abandoned_.push_back(std::move(journal));
        }
    }

    // The name of a copy that someone removed may be that of another process's copy by now.
    void NoteLiving(const Bytes& journal) {
        ForEachRecord(journal, [&](RecordSpan bytes, std::size_t) {
            if (const auto record = DecodeWorkingCopy(bytes)) living_.emplace_back(record->file);
        });
    }
    bool IsLiving(std::string_view file) const {
        return std::any_of(living_.begin(), living_.end(),
                           [&](const std::string& living) { return EqualsNoCase(living, file); });
    }

    // A journal with anything in it that is no record, or that is still needed, stays.
    void SweepJournal(const HeldFile& journal) const {
        const std::optional<Bytes> bytes = journal.Read(kMaxJournalBytes);
        if (!bytes) return;
        bool done = bytes->size() % kWorkingCopyRecordBytes == 0;
        ForEachRecord(*bytes, [&](RecordSpan recordBytes, std::size_t at) {
            if (IsFree(recordBytes)) return;
            const auto record = DecodeWorkingCopy(recordBytes);
            // What is done is not done again, whatever keeps the journal here.
            if (!record || !SweepCopy(*record) || !journal.Write(at, kNoWorkingCopy)) done = false;
        });
        if (done) journal.Delete();
    }

    // Returns whether the copy needs no more care.
    bool SweepCopy(const WorkingCopyRecord& record) const {
        if (IsLiving(record.file)) return true;
        const HeldFile copy(JoinPath(folder_, record.file));
        if (!copy) return copy.Error() == ERROR_FILE_NOT_FOUND;
        if (!copy.IsPlainFile()) return true;
        const std::optional<Bytes> bytes = copy.Read(kMaxCopyBytes);
        if (!bytes) return false;
        const bool unchanged = bytes->size() == record.length &&
                               ChecksumOf(bytes->data(), bytes->size()) == record.checksum;
        return unchanged ? Delete(copy, record) : Recover(copy, record, *bytes);
    }

    static bool Delete(const HeldFile& copy, const WorkingCopyRecord& record) {
        const TraceSpan span("DeleteAbandonedCopy", record.dn);
        const bool deleted = copy.Delete();
        span.EndWithCode(deleted ? ERROR_SUCCESS : GetLastError());
        return deleted;
    }

    static bool Recover(const HeldFile& copy, const WorkingCopyRecord& record, const Bytes& bytes) {
        const TraceSpan span("RecoverAbandonedCopy", record.dn);
        const std::string path =
            KeepRecovered(std::string(record.name), bytes.data(), bytes.size());
        const bool kept = !path.empty();
        NoteRecovered(path, {.server = record.server,
                             .dn = record.dn,
                             .reason = "the program that edited it ended without storing it"});
        // One that resists does no harm, and is not recovered again.
        if (kept) copy.Delete();
        span.EndWithCode(kept ? ERROR_SUCCESS : ERROR_CANNOT_MAKE);
        return kept;
    }

    const std::string& folder_;
    std::vector<HeldFile> abandoned_;
    std::vector<std::string> living_;
};

}  // namespace

void SweepAbandonedCopies(const std::string& folder) {
    Sweep(folder).Run();
}

}  // namespace depot
