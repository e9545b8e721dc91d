// What a process does with its messages where no person sees its windows.
#include "platform/user_presence.h"

#include <gmock/gmock.h>

#include <thread>

#include "platform/local_file.h"
#include "platform/program_name.h"
#include "platform/trace.h"
#include "platform/user_notice.h"
#include "support/box_log.h"
#include "support/child_process.h"
#include "support/hive_override.h"
#include "support/scratch.h"
#include "support/unseen_host.h"

namespace depot::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kQuiet = 1;
constexpr int kOpened = 2;
constexpr int kFailed = 3;

int boxes = 0;

int WINAPI CountBox(HWND, LPCSTR, LPCSTR, UINT) {
    ++boxes;
    return IDOK;
}

// A process on a window station of its own, as services have one. Its exit code says whether a box
// was opened, which would wait for ever.
int ShowOnAnotherStation(const Arguments&) {
    const HWINSTA station = CreateWindowStationW(nullptr, 0, WINSTA_ALL_ACCESS, nullptr);
    if (station == nullptr || !SetProcessWindowStation(station)) return kFailed;
    const ImportPatch box("MessageBoxA", &CountBox);
    const EventLogNotes notes;
    if (!box.IsInPlace() || !notes.IsInPlace()) return kFailed;
    ShowNotice("It failed", "Quillon", nullptr);
    if (boxes != 0 || HasAPerson()) return kOpened;
    return notes.Taken().size() == 1 ? kQuiet : kFailed;
}
const RoleRegistration onAnotherStation("show-on-another-station", &ShowOnAnotherStation);

// A process that fails all the time. Its exit code is the count of its entries.
int FailAllTheTime(const Arguments&) {
    const UnseenHost host;
    for (int round = 0; round < 10000; ++round) ShowNotice("It failed", "Quillon", nullptr);
    return static_cast<int>(host.Taken().size());
}
const RoleRegistration failAllTheTime("fail-all-the-time", &FailAllTheTime);

std::wstring OwnName() {
    return ProgramName().Get();
}

void NameAsQuiet(HKEY root, const std::wstring& program, DWORD type, DWORD number) {
    RegSetKeyValueW(root, kQuietHostsKey, program.c_str(), type, &number, sizeof(number));
}

class UserPresenceTest : public testing::Test {
protected:
    static void Show(const std::string& text = "It failed") {
        ShowNotice(text, "Quillon", nullptr);
    }

    const BoxLog boxes_;
};

TEST_F(UserPresenceTest, ProcessOnAVisibleStationHasAPerson) {
    EXPECT_TRUE(HasAPerson());
    const EventLogNotes notes;
    Show();
    EXPECT_THAT(boxes_.Texts(), ElementsAre("It failed"));
    EXPECT_THAT(notes.Taken(), IsEmpty());
}

TEST_F(UserPresenceTest, ProcessOnAnotherStationOpensNoBox) {
    const ChildProcess service("show-on-another-station");
    EXPECT_EQ(kQuiet, service.ExitCode());
}

TEST_F(UserPresenceTest, UnseenNoticeReachesTheEventLog) {
    const UnseenHost host;
    ASSERT_TRUE(host.IsInPlace());
    Show();
    EXPECT_THAT(boxes_.Texts(), IsEmpty());
    const std::vector<LogEntry> entries = host.Taken();
    ASSERT_THAT(entries, SizeIs(1));
    EXPECT_EQ(L"DepotIntr", entries[0].source);
    EXPECT_EQ(EVENTLOG_ERROR_TYPE, entries[0].type);
    EXPECT_EQ(static_cast<DWORD>(LogMessage::kNoticeNotShown), entries[0].message);
    EXPECT_THAT(entries[0].values, ElementsAre(OwnName(), L"It failed"));
    EXPECT_EQ(0, host.OpenSources());
}

TEST_F(UserPresenceTest, ReceiverTakesTheNoticeFirst) {
    const UnseenHost host;
    InstallNoticeReceiver([](const std::string&) {});
    Show();
    InstallNoticeReceiver(nullptr);
    EXPECT_THAT(host.Taken(), IsEmpty());
}

TEST_F(UserPresenceTest, UnseenNoticeReachesTheTraceAlsoWithoutAnEventLog) {
    const ScratchFolder folder;
    const std::string path = folder.At("trace.txt");
    SetEnvironmentVariableA(kTraceVariable, path.c_str());
    StartTrace();
    {
        UnseenHost host;
        Show("first %s%n");
        host.Stop();
        Show("second");
    }
    StopTrace();
    SetEnvironmentVariableA(kTraceVariable, nullptr);
    const auto bytes = ReadLocalFile(path).value_or(std::vector<std::uint8_t>());
    const std::string written(bytes.begin(), bytes.end());
    EXPECT_THAT(written, HasSubstr(" message not shown \"first %s%n\" "));
    EXPECT_THAT(written, HasSubstr(" ms in the event log\r\n"));
    EXPECT_THAT(written, HasSubstr(" message not shown \"second\" "));
    EXPECT_THAT(written, HasSubstr(" ms not in the event log\r\n"));
}

TEST_F(UserPresenceTest, HostileTextIsCutAndStandsForNothing) {
    const UnseenHost host;
    Show("%1 %s %n\r\nError: forged");
    Show(std::string(100000, '%'));
    Show(std::string("before\0behind", 13));
    const std::vector<LogEntry> entries = host.Taken();
    ASSERT_THAT(entries, SizeIs(3));
    EXPECT_EQ(L"% 1 %s %n  Error: forged", entries[0].values[1]);
    EXPECT_GT(31839u, entries[1].values[1].size());
    EXPECT_EQ(L"before", entries[2].values[1]);
}

TEST_F(UserPresenceTest, ProgramThatFailsAllTheTimeDoesNotFillTheLog) {
    const ChildProcess failing("fail-all-the-time");
    const int entries = failing.ExitCode();
    EXPECT_LT(0, entries);
    EXPECT_GT(10000, entries);
}

TEST_F(UserPresenceTest, ThreadsReportTheirNoticesEach) {
    const UnseenHost host;
    std::vector<std::thread> threads;
    for (int count = 0; count < 8; ++count) threads.emplace_back([] { Show(); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(host.Taken(), SizeIs(8));
    EXPECT_EQ(0, host.OpenSources());
}

using QuietHostTest = UserPresenceTest;

TEST_F(QuietHostTest, HostThatTheMachineNamesShowsNothing) {
    const HiveOverride machine(HKEY_LOCAL_MACHINE);
    const EventLogNotes notes;
    NameAsQuiet(HKEY_LOCAL_MACHINE, OwnName(), REG_DWORD, 1);
    EXPECT_FALSE(HasAPerson());
    Show();
    EXPECT_THAT(boxes_.Texts(), IsEmpty());
    EXPECT_THAT(notes.Taken(), SizeIs(1));
}

TEST_F(QuietHostTest, OtherHostsOtherNumbersAndOtherTypesShowBoxes) {
    const HiveOverride machine(HKEY_LOCAL_MACHINE);
    NameAsQuiet(HKEY_LOCAL_MACHINE, L"other.exe", REG_DWORD, 1);
    EXPECT_TRUE(HasAPerson());
    NameAsQuiet(HKEY_LOCAL_MACHINE, OwnName(), REG_DWORD, 0);
    EXPECT_TRUE(HasAPerson());
    NameAsQuiet(HKEY_LOCAL_MACHINE, OwnName(), REG_BINARY, 1);
    EXPECT_TRUE(HasAPerson());
}

TEST_F(QuietHostTest, PolicyWinsOverWhatTheMachineSays) {
    const HiveOverride machine(HKEY_LOCAL_MACHINE);
    const auto name = [](DWORD type, const std::wstring& data) {
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, kQuietHostsPolicy, OwnName().c_str(), type,
                        data.c_str(), static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t)));
    };
    const DWORD zero = 0;
    NameAsQuiet(HKEY_LOCAL_MACHINE, OwnName(), REG_DWORD, 1);
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kQuietHostsPolicy, OwnName().c_str(), REG_DWORD, &zero,
                    sizeof(zero));
    EXPECT_TRUE(HasAPerson());
    name(REG_SZ, L"0");
    EXPECT_TRUE(HasAPerson());
    NameAsQuiet(HKEY_LOCAL_MACHINE, OwnName(), REG_DWORD, 0);
    // What a list of the policy editor writes: the name itself, or a text of its own.
    for (const std::wstring& text : {OwnName(), std::wstring(L"1"), std::wstring(100000, L'x')}) {
        name(REG_SZ, text);
        EXPECT_FALSE(HasAPerson());
    }
}

TEST_F(QuietHostTest, HiveOfTheUserSilencesNoProgram) {
    NameAsQuiet(HKEY_CURRENT_USER, OwnName(), REG_DWORD, 1);
    EXPECT_TRUE(HasAPerson());
    const EventLogNotes notes;
    Show();
    EXPECT_THAT(boxes_.Texts(), ElementsAre("It failed"));
    EXPECT_THAT(notes.Taken(), IsEmpty());
    RegDeleteTreeW(HKEY_CURRENT_USER, kQuietHostsKey);
}

}  // namespace
}  // namespace depot::test
