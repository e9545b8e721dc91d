// Parts that other parts trust to stay whole, used directly while memory runs out.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <new>

#include "faults/fault_series.h"
#include "model/abandoned_copies.h"
#include "model/working_copy_record.h"
#include "platform/checksum.h"
#include "platform/low_memory.h"
#include "platform/private_file.h"
#include "platform/temp_file.h"
#include "support/working_files.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PlatformFaultsTest : public testing::Test {
protected:
    FaultLayer layer_{GetModuleHandleA(nullptr)};
};

TEST_F(PlatformFaultsTest, TemporaryFileIsThereOnlyWhereItsNameIsReturned) {
    std::string name;
    RunWithFaults({
        .prepare =
            [&] {
                name = {};
                CleanWorkingFiles();
            },
        .operate =
            [&] {
                try {
                    name = MakeTempFileName();
                } catch (const std::bad_alloc&) {
                    name = {};
                }
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_TRUE(failing || !name.empty());
                if (name.empty()) {
                    EXPECT_THAT(WorkingCopies(), IsEmpty());
                } else {
                    EXPECT_THAT(WorkingCopies(), ElementsAre(name));
                }
            },
    });
}

// The working copy and the journal of a process that was ended.
class AbandonedCopy {
public:
    AbandonedCopy() {
        CleanWorkingFiles();
        for (const std::string& path : FilesIn(Folder(), kWorkingCopyJournals)) {
            DeleteFileA(path.c_str());
        }
        Write("lda1.tmp", kEdit, sizeof(kEdit) - 1);
        const WorkingCopyRecordBytes record =
            EncodeWorkingCopy({"lda1.tmp", "a.kra", "server:389", "cn=a.kra", 3, 0});
        Write(WorkingCopyJournalName(1, 1), record.data(), record.size());
    }

    static std::string Folder() {
        char folder[MAX_PATH] = {};
        const DWORD length = GetTempPathA(sizeof(folder), folder);
        return std::string(folder, length - 1);
    }

    static constexpr char kEdit[] = "[S]\r\nK=new\r\n";

private:
    static void Write(const std::string& name, const void* bytes, std::size_t length) {
        const std::string path = Folder() + "\\" + name;
        const UniqueHandle file = CreatePrivateFile(path, GENERIC_WRITE, 0);
        DWORD written = 0;
        WriteFile(file.get(), bytes, static_cast<DWORD>(length), &written, nullptr);
    }
};

TEST_F(PlatformFaultsTest, SweepLosesNoEditOfAnAbandonedCopy) {
    const std::string folder = AbandonedCopy::Folder();
    RunWithFaults({
        .prepare = [] { AbandonedCopy(); },
        .operate =
            [&] {
                try {
                    SweepAbandonedCopies(folder);
                } catch (const std::bad_alloc&) {
                    return;
                }
            },
        .verify =
            [](std::optional<Fault> failing) {
                std::vector<std::string> kept = RecoveredFiles();
                const std::vector<std::string> copies = WorkingCopies();
                EXPECT_TRUE(failing || copies.empty());
                kept.insert(kept.end(), copies.begin(), copies.end());
                ASSERT_FALSE(kept.empty());
                // What could not be written whole may stay beside it where nothing can be deleted.
                const auto holdsEdit = [](const std::string& path) {
                    return FileBytes(path) == AbandonedCopy::kEdit;
                };
                EXPECT_TRUE(std::any_of(kept.begin(), kept.end(), holdsEdit));
                EXPECT_TRUE(std::all_of(copies.begin(), copies.end(), holdsEdit));
                EXPECT_TRUE(failing || std::all_of(kept.begin(), kept.end(), holdsEdit));
            },
    });
}

TEST_F(PlatformFaultsTest, SlotsOfAPoolAreItsOwnAndApart) {
    // So many that the pool takes a second block.
    constexpr std::size_t kSlotBytes = 64;
    static std::array<std::size_t*, 800> slots;
    std::size_t count = 0;
    bool apart = true;
    const auto take = [](LowMemoryPool& pool) -> std::size_t* {
        try {
            return static_cast<std::size_t*>(pool.Allocate());
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    };
    RunWithFaults({
        .prepare = [&] { count = 0; },
        .operate =
            [&] {
                LowMemoryPool pool(kSlotBytes);
                for (std::size_t& used = count; used < slots.size();) {
                    slots[used] = take(pool);
                    if (slots[used] == nullptr && (slots[used] = take(pool)) == nullptr) break;
                    *slots[used] = used;
                    ++used;
                }
                for (std::size_t number = 0; number < count; ++number) {
                    apart = apart && *slots[number] == number;
                    pool.Free(slots[number]);
                }
            },
        .verify =
            [&](std::optional<Fault> failing) {
                EXPECT_TRUE(apart);
                // One failed call costs nothing but itself.
                if (!failing || !failing->onwards) {
                    EXPECT_EQ(slots.size(), count);
                }
            },
    });
}

}  // namespace
}  // namespace depot::test
