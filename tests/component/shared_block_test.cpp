// The block of macro values, which the modules of a process share.
#include <cstring>

#include "component/component.h"
#include "macros/replacer_cache.h"
#include "support/import_patch.h"
#include "support/results.h"

namespace depot::test {
namespace {

// Counts how often the component starts to write into a view of the block of macro values. Each
// view that it maps can only be read at first.
class BlockWrites {
public:
    BlockWrites() {
        genuine_ = mapping_.Genuine();
        count = 0;
    }
    ~BlockWrites() { RemoveVectoredExceptionHandler(handler_); }
    BlockWrites(const BlockWrites&) = delete;
    BlockWrites& operator=(const BlockWrites&) = delete;

    bool IsInPlace() const { return mapping_.IsInPlace(); }

    static inline int count = 0;
    static inline int views = 0;

private:
    static void* WINAPI Map(HANDLE mapping, DWORD access, DWORD high, DWORD low, SIZE_T size) {
        void* const view = genuine_(mapping, access, high, low, size);
        DWORD former = 0;
        if (size == sizeof(MacroValues)) {
            ++views;
            VirtualProtect(view, size, PAGE_READONLY, &former);
        }
        return view;
    }

    static LONG CALLBACK Notice(EXCEPTION_POINTERS* fault) {
        const EXCEPTION_RECORD& record = *fault->ExceptionRecord;
        if (record.ExceptionCode != EXCEPTION_ACCESS_VIOLATION ||
            record.ExceptionInformation[0] != 1)
            return EXCEPTION_CONTINUE_SEARCH;
        void* const place = reinterpret_cast<void*>(record.ExceptionInformation[1]);
        MEMORY_BASIC_INFORMATION region = {};
        DWORD former = 0;
        if (VirtualQuery(place, &region, sizeof(region)) == 0 || region.Type != MEM_MAPPED ||
            region.Protect != PAGE_READONLY ||
            !VirtualProtect(region.BaseAddress, region.RegionSize, PAGE_READWRITE, &former)) {
            return EXCEPTION_CONTINUE_SEARCH;
        }
        ++count;
        return EXCEPTION_CONTINUE_EXECUTION;
    }

    static inline decltype(&MapViewOfFile) genuine_ = nullptr;
    const ImportPatch<decltype(&MapViewOfFile)> mapping_{"MapViewOfFile", &Map,
                                                         Library::Own().Module()};
    void* const handler_ = AddVectoredExceptionHandler(1, Notice);
};

class SharedMacrosTest : public ComponentTest {
protected:
    SharedMacrosTest() {
        depots_.Text("Work", "Path1", "$USERDIR$\\Work");
        folder_.MakeFolder("Farrow\\User\\Work");
        folder_.MakeFile("Farrow\\User\\Work\\a.kra", "[S]\r\nK=1\r\n");
        // The host of the process keeps its block.
        FillSlot(cache_.Data()->organization, "The host's");
        FillSlot(cache_.Data()->languageCode, "eng");
    }

    const std::string user_ = folder_.At("Farrow\\User\\");
    MacroCacheHolder cache_{1, ReplacerBlockName()};
};

TEST_F(SharedMacrosTest, ThousandCallsWithoutAHandleDoNotWriteTheBlock) {
    FillSlot(cache_.Data()->userFolder, user_);
    const BlockWrites writes;
    ASSERT_TRUE(writes.IsInPlace());
    for (int round = 0; round < 500; ++round) {
        OutText path;
        ASSERT_THAT(api_->DPPathConvertDPtoFS(Text("<Work>\\a.kra"), path), IsOk());
        ASSERT_EQ(Wide(user_ + "Work\\a.kra"), path.Value());
        ASSERT_THAT(api_->DPFileExists(0, Text("<Work>\\a.kra")), IsOk());
    }
    EXPECT_EQ(0, BlockWrites::count);
    EXPECT_LE(1000, BlockWrites::views);
}

TEST_F(SharedMacrosTest, CallOfAnotherUserWritesTheBlockOnce) {
    FillSlot(cache_.Data()->userFolder, "C:\\someone else");
    const BlockWrites writes;
    EXPECT_THAT(api_->DPFileExists(0, Text("<Work>\\a.kra")), IsOk());
    EXPECT_THAT(api_->DPFileExists(0, Text("<Work>\\a.kra")), IsOk());
    EXPECT_EQ(1, BlockWrites::count);
    EXPECT_EQ(user_, SlotText(cache_.Data()->userFolder));
    EXPECT_EQ("The host's", SlotText(cache_.Data()->organization));
}

}  // namespace
}  // namespace depot::test
