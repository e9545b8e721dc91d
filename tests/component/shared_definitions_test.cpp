// Definitions that are read once for many sessions, and are never outdated.
#include <atomic>
#include <thread>
#include <vector>

#include "component/component.h"
#include "support/child_process.h"
#include "support/import_patch.h"
#include "support/leak_counts.h"

namespace depot::test {
namespace {

constexpr int kChanges = 100;
constexpr char kGo[] = "DepotTests go";
constexpr char kDone[] = "DepotTests done";

UniqueHandle TurnEvent(const char* name) {
    return UniqueHandle(CreateEventA(nullptr, FALSE, FALSE, name));
}

bool Await(const UniqueHandle& event) {
    return WaitForSingleObject(event.get(), ChildProcess::kPatience) == WAIT_OBJECT_0;
}

std::string Root(int number) {
    return "C:\\Roots\\" + std::to_string(number);
}

// Moves the depot "Moving" to another place each time that it is told to.
int MoveDepot(const Arguments&) {
    const UniqueHandle go = TurnEvent(kGo), done = TurnEvent(kDone);
    const std::string key = std::string("Software\\Quillon\\Farrow\\Depots\\Moving");
    for (int number = 1; number <= kChanges; ++number) {
        if (!Await(go)) return 1;
        WriteRegistryText(HKEY_CURRENT_USER, key, "Path1", Root(number));
        SetEvent(done.get());
    }
    return 0;
}
const RoleRegistration moveRole("move-depot", &MoveDepot);

class SharedDefinitionsTest : public ComponentTest {
protected:
    SharedDefinitionsTest() { depots_.Text("Moving", "Path1", Root(0)); }

    // Where the depot is for a session that begins now.
    std::wstring Place() {
        OutText path;
        EXPECT_EQ(S_OK, api_->DPPathConvertDPtoFS(Text("<Moving>\\a.kra"), path));
        return path.Value();
    }
    static std::wstring Expected(int number) { return Wide(Root(number) + "\\a.kra"); }
    void UseSession() { const Session session(*api_); }
};

TEST_F(SharedDefinitionsTest, ChangesOfAnotherProgramAreInTheNextSession) {
    const UniqueHandle go = TurnEvent(kGo), done = TurnEvent(kDone);
    const ChildProcess other("move-depot");
    for (int number = 1; number <= kChanges; ++number) {
        SetEvent(go.get());
        ASSERT_TRUE(Await(done));
        ASSERT_EQ(Expected(number), Place());
        // Some changes find definitions that are shared, some those that have just been read.
        for (int again = 0; again < number % 4; ++again) ASSERT_EQ(Expected(number), Place());
    }
    EXPECT_EQ(0, other.ExitCode());
}

TEST_F(SharedDefinitionsTest, ChangesOfThisProgramAreInTheNextSession) {
    for (int number = 1; number <= kChanges; ++number) {
        depots_.Text("Moving", "Path1", Root(number));
        for (int again = 0; again < 4; ++again) ASSERT_EQ(Expected(number), Place());
    }
}

TEST_F(SharedDefinitionsTest, LaterSessionsAskTheRegistryForNoDefinition) {
    static std::atomic<int> asked;
    static decltype(&RegQueryValueExA) genuine;
    static decltype(&RegQueryValueExW) genuineForTexts;
    using Query = LSTATUS(WINAPI*)(HKEY, const char*, DWORD*, DWORD*, BYTE*, DWORD*);
    using QueryText = LSTATUS(WINAPI*)(HKEY, const wchar_t*, DWORD*, DWORD*, BYTE*, DWORD*);
    const QueryText countText = [](HKEY key, const wchar_t* name, DWORD* reserved, DWORD* type,
                                   BYTE* data, DWORD* size) -> LSTATUS {
        ++asked;
        return genuineForTexts(key, name, reserved, type, data, size);
    };
    const Query count = [](HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data,
                           DWORD* size) -> LSTATUS {
        ++asked;
        return genuine(key, name, reserved, type, data, size);
    };
    for (int number = 0; number < 20; ++number) DefineDepot("D" + std::to_string(number));
    for (int session = 0; session < 3; ++session) UseSession();
    const ImportPatch<Query> patch("RegQueryValueExA", count, Library::Own().Module());
    const ImportPatch<QueryText> patchForTexts("RegQueryValueExW", countText,
                                               Library::Own().Module());
    ASSERT_TRUE(patch.IsInPlace() && patchForTexts.IsInPlace());
    genuine = patch.Genuine();
    genuineForTexts = patchForTexts.Genuine();
    asked = 0;
    for (int session = 0; session < 10; ++session) UseSession();
    EXPECT_EQ(0, asked);
    depots_.Dword("D7", "OrderIndex", 1);
    UseSession();
    EXPECT_LT(20, asked);
}

TEST_F(SharedDefinitionsTest, SessionsOfSeveralApartmentsShareThem) {
    std::atomic<int> wrong = 0;
    std::vector<std::thread> apartments;
    for (int thread = 0; thread < 4; ++thread) {
        apartments.emplace_back([&wrong] {
            const Apartment apartment;
            const Com<IDepotIntrApi> api = CreateApi();
            for (int round = 0; round < 50; ++round) {
                OutText path;
                const HRESULT result = api->DPPathConvertDPtoFS(Text("<Moving>\\a.kra"), path);
                if (result != S_OK || path.Value().find(L"C:\\Roots\\") != 0) ++wrong;
            }
        });
    }
    for (int number = 1; number <= kChanges; ++number) {
        depots_.Text("Moving", "Path1", Root(number));
        EXPECT_EQ(Expected(number), Place());
    }
    for (std::thread& apartment : apartments) apartment.join();
    EXPECT_EQ(0, wrong);
}

// Loading and freeing leaves some blocks of the system's behind, whatever the library did.
TEST_F(SharedDefinitionsTest, LibraryThatIsUnloadedLeavesNothingThatWasShared) {
    const ScratchFolder place;
    const std::string copy = CopyComponent(place, "qdirsvc.dll");
    for (int number = 0; number < 10; ++number) DefineDepot("D" + std::to_string(number));
    const auto leftBy = [&](int sessions) {
        return CountLeftovers(
            [&] {
                const Library library(copy);
                const Com<IDepotIntrApi> api = library.CreateApi();
                for (int count = 0; count < sessions; ++count) const Session session(*api);
            },
            10);
    };
    const std::size_t without = leftBy(0);
    EXPECT_GT(without + 10, leftBy(3));
}

}  // namespace
}  // namespace depot::test
