#include "model/working_copy_journal.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <vector>

#include "model/abandoned_copies.h"
#include "model/working_copy_record.h"
#include "platform/checksum.h"
#include "platform/file_in_use.h"
#include "platform/file_time.h"
#include "platform/held_file.h"
#include "platform/no_destructor.h"
#include "platform/paths.h"
#include "platform/private_file.h"

namespace depot {
namespace {

// Closed with the DLL. While a process ends the system closes it.
UniqueHandle& JournalFile() {
    static UniqueHandle file;
    return file;
}

class Journal {
public:
    static Journal& Instance() {
        static NoDestructor<Journal> journal;
        return *journal;
    }

    void Note(const std::string& path, WorkingCopyRecord record) {
        const std::string file = NamePart(path);
        if (!IsWorkingCopyName(file)) return;
        record.file = file;
        const std::lock_guard guard(lock_);
        if (!OpenIn(ParentFolderKeepSlash(path))) return;
        const std::size_t slot = SlotOf(file);
        if (slot == kMaxWorkingCopyRecords) return;
        if (slot == files_.size()) files_.emplace_back();
        if (!Write(slot, EncodeWorkingCopy(record)) || !files_[slot].empty()) return;
        files_[slot] = file;
        // The first one makes the journal worth keeping.
        if (used_++ == 0) VanishesWhenClosed(JournalFile().get(), false);
    }

    // Needs no memory: a record of a file that is gone would be taken for one of the next file of
    // that name.
    void Forget(const std::string& path) {
        const std::lock_guard guard(lock_);
        const auto found = std::find_if(files_.begin(), files_.end(), [&](const auto& file) {
            return !file.empty() && path.size() == folder_.size() + 1 + file.size() &&
                   path.starts_with(folder_) && path.ends_with(file);
        });
        if (found == files_.end()) return;
        Write(static_cast<std::size_t>(found - files_.begin()), kNoWorkingCopy);
        found->clear();
        if (--used_ > 0) return;
        files_ = {};
        VanishesWhenClosed(JournalFile().get(), true);
    }

private:
    // The journal lies beside its copies; one in another folder is not noted.
    bool OpenIn(const std::string& folder) {
        if (JournalFile()) return folder == folder_;
        folder_ = folder;
        const std::string name = WorkingCopyJournalName(GetCurrentProcessId(), TimeNow());
        JournalFile() = CreatePrivateFile(JoinPath(folder, name),
                                          GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_READ);
        return JournalFile() != nullptr;
    }

    // The slot of a file, else the first free one.
    std::size_t SlotOf(const std::string& file) const {
        auto slot = std::find(files_.begin(), files_.end(), file);
        if (slot == files_.end()) slot = std::find(files_.begin(), files_.end(), std::string());
        return static_cast<std::size_t>(slot - files_.begin());
    }

    static bool Write(std::size_t slot, const WorkingCopyRecordBytes& record) {
        return WriteAt(JournalFile().get(), slot * kWorkingCopyRecordBytes, record);
    }

    std::mutex lock_;
    std::string folder_;
    std::vector<std::string> files_;  // the names in their slots; empty ones are free
    std::size_t used_ = 0;
};

void SweepOnce(const std::string& folder) {
    static std::atomic<bool> swept = false;
    if (!swept.exchange(true)) SweepAbandonedCopies(folder);
}

}  // namespace

void NoteWorkingCopy(const std::string& path, const WorkingCopySource& source, const void* bytes,
                     std::size_t length) noexcept try {
    Journal::Instance().Note(
        path, {{}, source.name, source.server, source.dn, length, ChecksumOf(bytes, length)});
    if (!path.empty()) SweepOnce(ParentFolderKeepSlash(path));
} catch (const std::exception&) {
    return;
}

void ForgetWorkingCopy(const std::string& path) noexcept try {
    Journal::Instance().Forget(path);
} catch (const std::exception&) {
    return;
}

void DeleteWorkingCopy(const std::string& path) noexcept {
    ForgetWorkingCopy(path);
    DeleteOwnFile(path);
}

}  // namespace depot
