#include "platform/file_in_use.h"

#include <gtest/gtest.h>

#include <functional>

#include "support/full_disk.h"

namespace depot {
namespace {

// Fails a number of times with one error.
class Failing {
public:
    Failing(int times, DWORD error) : left_(times), error_(error) {}
    bool operator()() {
        ++calls_;
        SetLastError(error_);
        return left_-- <= 0;
    }
    int Calls() const { return calls_; }

private:
    int left_;
    DWORD error_;
    int calls_ = 0;
};

TEST(FileInUseTest, AttemptIsRepeatedUntilItSucceeds) {
    const test::NoPauses pauses;
    for (const DWORD error : {ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION}) {
        for (const FileUse use : {FileUse::kOwn, FileUse::kShared}) {
            Failing attempt(5, error);
            EXPECT_TRUE(RetryWhileInUse(use, std::ref(attempt)));
            EXPECT_EQ(6, attempt.Calls());
        }
    }
}

TEST(FileInUseTest, AttemptsEndAfterThreeSecondsWithTheirError) {
    const test::NoPauses pauses;
    Failing attempt(1000, ERROR_SHARING_VIOLATION);
    EXPECT_FALSE(RetryWhileInUse(FileUse::kShared, std::ref(attempt)));
    EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, GetLastError());
    EXPECT_EQ(kAttemptsWhileInUse, attempt.Calls());
    EXPECT_EQ(3000u, kAttemptsWhileInUse * kPauseWhileInUse);
}

TEST(FileInUseTest, DeniedAccessPassesForOwnFilesOnly) {
    const test::NoPauses pauses;
    Failing own(3, ERROR_ACCESS_DENIED);
    EXPECT_TRUE(RetryWhileInUse(FileUse::kOwn, std::ref(own)));
    Failing others(3, ERROR_ACCESS_DENIED);
    EXPECT_FALSE(RetryWhileInUse(FileUse::kShared, std::ref(others)));
    EXPECT_EQ(1, others.Calls());
}

TEST(FileInUseTest, OtherFailuresAreFinalAtOnce) {
    const test::NoPauses pauses;
    for (const DWORD error : {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_DISK_FULL}) {
        Failing attempt(3, error);
        EXPECT_FALSE(RetryWhileInUse(FileUse::kOwn, std::ref(attempt)));
        EXPECT_EQ(error, GetLastError());
    }
    EXPECT_EQ(0, pauses.Count());
}

TEST(FileInUseTest, FileIsDeletedOnceItsLastHandleIsClosed) {
    const test::ScratchFolder folder;
    const std::string path = folder.MakeFile("a.tmp", "x");
    EXPECT_TRUE(DeleteOwnFile(path));
    EXPECT_FALSE(test::Exists(path));
    EXPECT_FALSE(DeleteOwnFile(path));
}

}  // namespace
}  // namespace depot
