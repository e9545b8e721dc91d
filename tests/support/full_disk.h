// Profile writes on a disk without room, as import patches of this program.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/handles.h"
#include "support/import_patch.h"
#include "support/scratch.h"

namespace depot::test {

// How the system answers a write that did not fit.
enum class CutWrite { kFails, kSucceeds };

// While it lives, the disk that holds the files of one name's beginning is full: every write of a
// value cuts the file in its middle.
class FullDisk {
public:
    FullDisk(const std::string& pathBegins, CutWrite answer) {
        begins_ = pathBegins;
        answer_ = answer;
        EXPECT_TRUE(writing_.IsInPlace() && room_.IsInPlace() && time_.IsInPlace());
        realTime_ = time_.Genuine();
        realWrite_ = writing_.Genuine();
        realRoom_ = room_.Genuine();
    }
    ~FullDisk() { begins_.clear(); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    static bool IsFull(const std::string& path) {
        return !begins_.empty() && _strnicmp(path.c_str(), begins_.c_str(), begins_.size()) == 0;
    }
    static BOOL WINAPI Write(LPCSTR section, LPCSTR key, LPCSTR value, LPCSTR path) {
        if (!IsFull(path)) return realWrite_(section, key, value, path);
        const std::string bytes = FileBytes(path);
        const UniqueHandle file =
            OwnFile(CreateFileA(path, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        SetFilePointer(file.get(), static_cast<LONG>(bytes.size() / 2), nullptr, FILE_BEGIN);
        SetEndOfFile(file.get());
        SetLastError(ERROR_DISK_FULL);
        return answer_ == CutWrite::kSucceeds;
    }
    static BOOL WINAPI Room(LPCSTR folder, ULARGE_INTEGER* room, ULARGE_INTEGER* all,
                            ULARGE_INTEGER* free) {
        const BOOL known = realRoom_(folder, room, all, free);
        if (!begins_.empty() && begins_.starts_with(folder)) room->QuadPart = 0;
        return known;
    }

    // What was seen of the room before is out of date.
    static ULONGLONG WINAPI Later() { return realTime_() + 60 * 1000; }

    static inline std::string begins_;
    static inline CutWrite answer_ = CutWrite::kFails;
    static inline decltype(&WritePrivateProfileStringA) realWrite_ = nullptr;
    static inline decltype(&GetDiskFreeSpaceExA) realRoom_ = nullptr;
    static inline decltype(&GetTickCount64) realTime_ = nullptr;
    const ImportPatch<decltype(&WritePrivateProfileStringA)> writing_{"WritePrivateProfileStringA",
                                                                      &Write};
    const ImportPatch<decltype(&GetDiskFreeSpaceExA)> room_{"GetDiskFreeSpaceExA", &Room};
    const ImportPatch<decltype(&GetTickCount64)> time_{"GetTickCount64", &Later};
};

// While it lives, the pauses of its thread take no time; counts them.
class NoPauses {
public:
    NoPauses() {
        EXPECT_TRUE(sleeping_.IsInPlace());
        realSleep_ = sleeping_.Genuine();
        thread_ = GetCurrentThreadId();
        count_ = 0;
    }
    static int Count() { return count_; }

private:
    static void WINAPI Pass(DWORD milliseconds) {
        if (GetCurrentThreadId() != thread_) return realSleep_(milliseconds);
        ++count_;
    }

    static inline decltype(&Sleep) realSleep_ = nullptr;
    static inline DWORD thread_ = 0;
    static inline int count_ = 0;
    const ImportPatch<decltype(&Sleep)> sleeping_{"Sleep", &Pass};
};

}  // namespace depot::test
