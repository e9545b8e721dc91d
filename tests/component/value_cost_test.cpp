// What reading a value asks of the system: what the system's own function does, and nothing else.
#include "component/component.h"
#include "support/import_patch.h"

namespace depot::test {
namespace {

constexpr int kReads = 10;

// Counts the component's calls of a system function. `kId` tells functions of one type apart.
template <class Function, int kId>
class CallCount;

template <class Result, class... Arguments, int kId>
class CallCount<Result(WINAPI*)(Arguments...), kId> {
public:
    explicit CallCount(const char* name) : patch_(name, &Call, Library::Own().Module()) {
        genuine_ = patch_.Genuine();
        count_ = 0;
    }
    int Count() const { return count_; }

private:
    using Function = Result(WINAPI*)(Arguments...);
    static Result WINAPI Call(Arguments... arguments) {
        ++count_;
        return genuine_(arguments...);
    }
    static inline Function genuine_ = nullptr;
    static inline int count_ = 0;
    const ImportPatch<Function> patch_;
};

// Every function by which the component opens, finds or looks at something of the system's.
struct OtherCalls {
    CallCount<decltype(&CreateFileA), 0> openFile{"CreateFileA"};
    CallCount<decltype(&CreateFileW), 0> openWideFile{"CreateFileW"};
    CallCount<decltype(&GetFileAttributesA), 0> attributes{"GetFileAttributesA"};
    CallCount<decltype(&GetFileAttributesW), 0> wideAttributes{"GetFileAttributesW"};
    CallCount<decltype(&FindFirstFileA), 0> find{"FindFirstFileA"};
    CallCount<decltype(&FindFirstFileW), 0> findWide{"FindFirstFileW"};
    CallCount<decltype(&RegOpenKeyExA), 0> openKey{"RegOpenKeyExA"};
    CallCount<decltype(&RegQueryValueExA), 0> readKey{"RegQueryValueExA"};
    CallCount<decltype(&RegQueryValueExW), 0> readText{"RegQueryValueExW"};
    CallCount<decltype(&CreateEventA), 0> event{"CreateEventA"};
    CallCount<decltype(&CreateFileMappingA), 0> block{"CreateFileMappingA"};
    CallCount<decltype(&WaitForSingleObject), 0> wait{"WaitForSingleObject"};
    CallCount<decltype(&WaitForMultipleObjects), 0> waitForAny{"WaitForMultipleObjects"};
    CallCount<decltype(&CloseHandle), 0> close{"CloseHandle"};

    int Count() const {
        return openFile.Count() + openWideFile.Count() + attributes.Count() +
               wideAttributes.Count() + find.Count() + findWide.Count() + openKey.Count() +
               readKey.Count() + readText.Count() + event.Count() + block.Count() + wait.Count() +
               waitForAny.Count() + close.Count();
    }
};

class ValueCostTest : public ComponentTest {
protected:
    ValueCostTest() {
        const std::string file = folder_.MakeFile("a.kra", "[S]\r\nK=value\r\nN=12\r\n");
        EXPECT_EQ(S_OK, api_->DPLoadFile(session_.Address(), Text(file)));
        EXPECT_EQ(L"value", Read(session_, L"S", L"K"));
    }

    Session session_{*api_};
};

TEST_F(ValueCostTest, TextIsReadByOneCallOfTheSystemAlone) {
    const CallCount<decltype(&GetPrivateProfileStringA), 0> reads("GetPrivateProfileStringA");
    const OtherCalls others;
    for (int round = 0; round < kReads; ++round) {
        ASSERT_EQ(L"value", Read(session_, L"S", L"K"));
        ASSERT_EQ(L"(default)", Read(session_, L"S", L"None"));
    }
    EXPECT_EQ(2 * kReads, reads.Count());
    EXPECT_EQ(0, others.Count());
}

TEST_F(ValueCostTest, NumberIsReadByOneCallOfTheSystemAlone) {
    const CallCount<decltype(&GetPrivateProfileIntA), 0> reads("GetPrivateProfileIntA");
    const OtherCalls others;
    for (int round = 0; round < kReads; ++round) {
        ULONG number = 0;
        ASSERT_EQ(S_OK, api_->DPGetProfileInt(session_, Text("S"), Text("N"), 1, &number));
        ASSERT_EQ(12u, number);
    }
    EXPECT_EQ(kReads, reads.Count());
    EXPECT_EQ(0, others.Count());
}

}  // namespace
}  // namespace depot::test
