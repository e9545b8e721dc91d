// The trace by registry: which target counts, and how much of it is kept.
#include "platform/trace_settings.h"

#include <gmock/gmock.h>

#include <thread>

#include "platform/local_file.h"
#include "platform/managed_key.h"
#include "platform/trace.h"
#include "platform/trace_file.h"
#include "support/import_patch.h"
#include "support/scratch.h"

namespace depot::test {
namespace {

using testing::EndsWith;
using testing::StartsWith;

std::string PolicyKey() {
    return PolicyKeyOf(kTraceKey);
}

class TraceSettingsTest : public testing::Test {
protected:
    TraceSettingsTest() { AllowForAll(kTraceKey, 1); }
    ~TraceSettingsTest() override {
        StopTrace();
        SetEnvironmentVariableA(kTraceVariable, nullptr);
        for (const HKEY hive : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
            RegDeleteTreeA(hive, PolicyKey().c_str());
            RegDeleteTreeA(hive, kTraceKey);
        }
        AllowForAll(kTraceKey, 1);
    }

    static void AllowForAll(const std::string& key, DWORD allowed) {
        WriteRegistryDword(HKEY_LOCAL_MACHINE, key, kTraceElevated, allowed);
    }
    static std::string Target() { return ReadTraceSettings().target; }

    ScratchFolder folder_;
    const std::string path_ = folder_.At("trace.txt");
};

TEST_F(TraceSettingsTest, PolicyWinsOverTheVariableAndThatOverPreferences) {
    EXPECT_EQ("", Target());
    WriteRegistryText(HKEY_LOCAL_MACHINE, kTraceKey, kTraceTarget, "C:\\machine.txt");
    EXPECT_EQ("C:\\machine.txt", Target());
    WriteRegistryText(HKEY_CURRENT_USER, kTraceKey, kTraceTarget, "C:\\user.txt");
    EXPECT_EQ("C:\\user.txt", Target());
    SetEnvironmentVariableA(kTraceVariable, "C:\\variable.txt");
    EXPECT_EQ("C:\\variable.txt", Target());
    WriteRegistryText(HKEY_CURRENT_USER, PolicyKey(), kTraceTarget, "C:\\policy.txt");
    EXPECT_EQ("C:\\policy.txt", Target());
    WriteRegistryText(HKEY_LOCAL_MACHINE, PolicyKey(), kTraceTarget, "off");
    EXPECT_EQ("", Target());
}

TEST_F(TraceSettingsTest, TargetOfTheRegistryIsAnAbsolutePathOrTheDebugger) {
    const std::string beyond(100000, 'x');
    for (const char* text : {"", "off", "trace.txt", "..\\..\\x", "\\x", "C:x", "%s%n",
                             "\\\\.\\NUL", beyond.c_str()}) {
        WriteRegistryText(HKEY_CURRENT_USER, kTraceKey, kTraceTarget, text);
        EXPECT_EQ("", Target()) << std::string(text).substr(0, 20);
    }
    WriteRegistryText(HKEY_CURRENT_USER, kTraceKey, kTraceTarget, "Debugger");
    EXPECT_EQ("Debugger", Target());
    SetEnvironmentVariableA("DEPOT_TEST_FOLDER", "C:\\Traces");
    WriteRegistryText(HKEY_CURRENT_USER, kTraceKey, kTraceTarget, "%DEPOT_TEST_FOLDER%\\t.txt");
    EXPECT_EQ("C:\\Traces\\t.txt", Target());
    SetEnvironmentVariableA("DEPOT_TEST_FOLDER", nullptr);
}

TEST_F(TraceSettingsTest, VariableAloneIsNotLimited) {
    SetEnvironmentVariableA(kTraceVariable, "C:\\variable.txt");
    EXPECT_EQ(0U, ReadTraceSettings().mostBytes);
    WriteRegistryDword(HKEY_LOCAL_MACHINE, kTraceKey, kTraceSize, 3);
    EXPECT_EQ(3U << 20, ReadTraceSettings().mostBytes);
}

TEST_F(TraceSettingsTest, TargetOfTheRegistryIsLimitedAlsoWithoutASize) {
    WriteRegistryText(HKEY_CURRENT_USER, kTraceKey, kTraceTarget, "C:\\user.txt");
    EXPECT_EQ(10U << 20, ReadTraceSettings().mostBytes);
    EXPECT_EQ(1U, ReadTraceSettings().olderFiles);
    WriteRegistryDword(HKEY_CURRENT_USER, kTraceKey, kTraceSize, 0);
    WriteRegistryDword(HKEY_CURRENT_USER, kTraceKey, kTraceFiles, 1000);
    EXPECT_EQ(10U << 20, ReadTraceSettings().mostBytes);
    EXPECT_EQ(1U, ReadTraceSettings().olderFiles);
    WriteRegistryDword(HKEY_LOCAL_MACHINE, PolicyKey(), kTraceSize, 1024);
    WriteRegistryDword(HKEY_LOCAL_MACHINE, PolicyKey(), kTraceFiles, 9);
    EXPECT_EQ(std::uint64_t{1} << 30, ReadTraceSettings().mostBytes);
    EXPECT_EQ(9U, ReadTraceSettings().olderFiles);
}

TEST_F(TraceSettingsTest, RegistryStartsTheTrace) {
    WriteRegistryText(HKEY_CURRENT_USER, kTraceKey, kTraceTarget, path_);
    EXPECT_EQ(TraceStart::kStarted, StartTrace());
    TraceSpan("x").EndWithCode(0);
    EXPECT_THAT(FileBytes(path_), EndsWith(" ms 0\r\n"));
}

TEST_F(TraceSettingsTest, ElevatedProcessFollowsOnlyWhereTheMachineAllowsIt) {
    // The program is elevated.
    WriteRegistryText(HKEY_LOCAL_MACHINE, PolicyKey(), kTraceTarget, path_);
    AllowForAll(kTraceKey, 0);
    EXPECT_EQ(TraceStart::kIgnored, StartTrace());
    AllowForAll(PolicyKey(), 1);
    EXPECT_EQ(TraceStart::kStarted, StartTrace());
    AllowForAll(kTraceKey, 1);
    AllowForAll(PolicyKey(), 0);
    EXPECT_EQ(TraceStart::kIgnored, StartTrace());
    WriteRegistryDword(HKEY_CURRENT_USER, PolicyKey(), kTraceElevated, 1);
    EXPECT_EQ(TraceStart::kIgnored, StartTrace());
}

class TraceFileTest : public testing::Test {
protected:
    static constexpr std::uint64_t kLimit = 1000;

    std::string Bytes(const std::string& behind) const {
        const auto bytes = ReadLocalFile(path_ + behind);
        return bytes ? std::string(bytes->begin(), bytes->end()) : "(no file)";
    }

    ScratchFolder folder_;
    const std::string path_ = folder_.At("trace.txt");
    TraceFile file_;
};

std::string Line(char letter) {
    return std::string(98, letter) + "\r\n";
}

TEST_F(TraceFileTest, FileThatIsFullIsRenamedAndTheLastOneGone) {
    ASSERT_TRUE(file_.Open(path_, {kLimit, 2}));
    for (const char letter : std::string("abcd")) {
        for (int count = 0; count < 10; ++count) file_.Write(Line(letter));
    }
    EXPECT_EQ(kLimit, Bytes("").size());
    EXPECT_THAT(Bytes(""), StartsWith("ddd"));
    EXPECT_THAT(Bytes(".1"), StartsWith("ccc"));
    EXPECT_THAT(Bytes(".2"), StartsWith("bbb"));
    EXPECT_EQ("(no file)", Bytes(".3"));
    EXPECT_EQ(kLimit, Bytes(".1").size());
}

TEST_F(TraceFileTest, WithoutALimitNothingIsRenamed) {
    ASSERT_TRUE(file_.Open(path_, {}));
    for (int count = 0; count < 100; ++count) file_.Write(Line('a'));
    EXPECT_EQ(10000U, Bytes("").size());
    EXPECT_EQ("(no file)", Bytes(".1"));
}

TEST_F(TraceFileTest, SeveralWritersLoseNoLine) {
    constexpr int kWriters = 4, kLines = 100;
    std::vector<std::thread> threads;
    for (int writer = 0; writer < kWriters; ++writer) {
        threads.emplace_back([&] {
            TraceFile own;
            if (!own.Open(path_, {kLimit, 9})) return;
            for (int count = 0; count < kLines / kWriters; ++count) own.Write(Line('x'));
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::size_t bytes = 0;
    for (const char* behind : {"", ".1", ".2", ".3", ".4", ".5", ".6", ".7", ".8", ".9"}) {
        const std::string found = Bytes(behind);
        if (found == "(no file)") continue;
        EXPECT_EQ(0U, found.size() % 100) << behind;
        EXPECT_GE(2 * kLimit, found.size()) << behind;
        bytes += found.size();
    }
    // The tenth file may be one that was full already when the ninth was pushed out.
    EXPECT_GE(kLines * 100U, bytes);
    EXPECT_LE(9 * 100U, bytes);
}

TEST_F(TraceFileTest, WriterFollowsAFileThatAnotherRenamed) {
    TraceFile other;
    ASSERT_TRUE(file_.Open(path_, {kLimit, 1}));
    ASSERT_TRUE(other.Open(path_, {kLimit, 1}));
    for (int count = 0; count < 11; ++count) file_.Write(Line('a'));
    other.Write(Line('b'));
    EXPECT_EQ(Line('a') + Line('b'), Bytes(""));
    EXPECT_EQ(kLimit, Bytes(".1").size());
}

TEST_F(TraceFileTest, FileThatCannotBeRenamedGrowsToTwiceTheLimit) {
    ASSERT_TRUE(file_.Open(path_, {kLimit, 1}));
    folder_.MakeFolder("trace.txt.1");
    folder_.MakeFile("trace.txt.1\\in the way", "");
    for (int count = 0; count < 50; ++count) file_.Write(Line('a'));
    EXPECT_EQ(2 * kLimit, Bytes("").size());
    RemoveDirectoryA(
        (DeleteFileA(folder_.At("trace.txt.1\\in the way").c_str()), path_ + ".1").c_str());
    file_.Write(Line('b'));
    EXPECT_EQ(Line('b'), Bytes(""));
    EXPECT_EQ(2 * kLimit, Bytes(".1").size());
}

TEST_F(TraceFileTest, LinkThatTookThePlaceIsNotWritten) {
    ASSERT_TRUE(file_.Open(path_, {kLimit, 1}));
    for (int count = 0; count < 10; ++count) file_.Write(Line('a'));
    folder_.MakeFile("other.txt", "before\n");
    ASSERT_TRUE(MoveFileA(path_.c_str(), folder_.At("moved.txt").c_str()));
    ASSERT_TRUE(CreateHardLinkA(path_.c_str(), folder_.At("other.txt").c_str(), nullptr));
    file_.Write(Line('b'));
    EXPECT_EQ("before\n", FileBytes(folder_.At("other.txt")));
    EXPECT_EQ("(no file)", Bytes(".1"));
}

}  // namespace
}  // namespace depot::test
