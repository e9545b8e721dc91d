// A disk that becomes full in the middle of a write.
#pragma once

#include <gtest/gtest.h>

#include "platform/win32.h"
#include "support/import_patch.h"

namespace depot::test {

// While it lives, every write of this program stores half of its bytes and fails.
class HalfWrites {
public:
    HalfWrites() {
        EXPECT_TRUE(patch_.IsInPlace());
        genuine_ = patch_.Genuine();
    }

private:
    using WriteFileCall = BOOL(WINAPI*)(HANDLE, LPCVOID, DWORD, DWORD*, OVERLAPPED*);

    static BOOL WINAPI Write(HANDLE file, LPCVOID bytes, DWORD length, DWORD* written,
                             OVERLAPPED* overlapped) {
        genuine_(file, bytes, length / 2, written, overlapped);
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
    }

    static inline WriteFileCall genuine_ = nullptr;
    const ImportPatch<WriteFileCall> patch_{"WriteFile", &Write};
};

}  // namespace depot::test
