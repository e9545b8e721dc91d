#include "platform/registry_watch.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "platform/token.h"
#include "support/child_process.h"
#include "support/hive_override.h"
#include "support/leak_counts.h"
#include "support/scratch.h"

namespace depot {
namespace {

constexpr char kTop[] = "Software\\DepotTests\\Watch";
constexpr char kWatched[] = "Software\\DepotTests\\Watch\\On\\Way\\List";

std::string Below(const std::string& name) {
    return std::string(kWatched) + "\\" + name;
}

void Write(const std::string& key, const std::string& text) {
    test::WriteRegistryText(HKEY_CURRENT_USER, key, "Value", text);
}

void Delete(const std::string& key) {
    RegDeleteTreeA(HKEY_CURRENT_USER, key.c_str());
}

struct Change {
    const char* name;
    std::function<void()> make;
};

// Each begins with what the one before left.
const std::vector<Change>& Changes() {
    static const std::vector<Change> changes = {
        {"value of the key", [] { Write(kWatched, "1"); }},
        {"new subkey", [] { test::CreateRegistryKey(HKEY_CURRENT_USER, Below("A")); }},
        {"value of a subkey", [] { Write(Below("A"), "1"); }},
        {"other value of a subkey", [] { Write(Below("A"), "2"); }},
        {"value that goes",
         [] { RegDeleteKeyValueA(HKEY_CURRENT_USER, Below("A").c_str(), "Value"); }},
        {"value far below", [] { Write(Below("A\\B\\C"), "1"); }},
        {"subkey that goes", [] { Delete(Below("A")); }},
        {"key that goes, and what it stands in", [] { Delete(kTop); }},
        {"beginning of the way", [] { test::CreateRegistryKey(HKEY_CURRENT_USER, kTop); }},
        {"whole way", [] { test::CreateRegistryKey(HKEY_CURRENT_USER, kWatched); }},
        {"key without subkeys that goes", [] { Delete(kWatched); }},
    };
    return changes;
}

int ChangeInAnotherProcess(const test::Arguments& arguments) {
    Changes()[std::stoul(arguments.at(0))].make();
    return 0;
}
const test::RoleRegistration changeRole("change-watched-key", &ChangeInAnotherProcess);

class RegistryWatchTest : public testing::Test {
protected:
    RegistryWatchTest() { test::CreateRegistryKey(HKEY_CURRENT_USER, kWatched); }

    test::ScratchKey top_{HKEY_CURRENT_USER, kTop};
};

TEST_F(RegistryWatchTest, EachKindOfChangeIsReportedAtOnce) {
    for (const Change& change : Changes()) {
        SCOPED_TRACE(change.name);
        RegistryWatch watch;
        ASSERT_TRUE(watch.Add(HKEY_CURRENT_USER, kWatched));
        EXPECT_FALSE(watch.HasChanged());
        change.make();
        EXPECT_TRUE(watch.HasChanged());
        EXPECT_TRUE(watch.HasChanged());
    }
}

TEST_F(RegistryWatchTest, ChangeOfAnotherProcessIsReportedBeforeThatCanSaySo) {
    for (std::size_t index = 0; index < Changes().size(); ++index) {
        SCOPED_TRACE(Changes()[index].name);
        RegistryWatch watch;
        ASSERT_TRUE(watch.Add(HKEY_CURRENT_USER, kWatched));
        const test::ChildProcess other("change-watched-key", {std::to_string(index)});
        ASSERT_EQ(0, other.ExitCode());
        EXPECT_TRUE(watch.HasChanged());
    }
}

TEST_F(RegistryWatchTest, ChangeBesideTheKeyIsNotReported) {
    RegistryWatch watch;
    ASSERT_TRUE(watch.Add(HKEY_CURRENT_USER, kWatched));
    Write(kTop, "1");
    Write(std::string(kTop) + "\\On", "1");
    EXPECT_FALSE(watch.HasChanged());
}

TEST_F(RegistryWatchTest, WatchOutlivesTheThreadThatBeganIt) {
    RegistryWatch watch;
    std::thread([&] { EXPECT_TRUE(watch.Add(HKEY_CURRENT_USER, kWatched)); }).join();
    Write(Below("A"), "1");
    EXPECT_TRUE(watch.HasChanged());
}

TEST_F(RegistryWatchTest, SeveralKeysShareOneWatch) {
    RegistryWatch watch;
    ASSERT_TRUE(watch.Add(HKEY_CURRENT_USER, kWatched));
    ASSERT_TRUE(watch.Add(HKEY_LOCAL_MACHINE, kWatched));
    const test::ScratchKey machine(HKEY_LOCAL_MACHINE, kWatched);
    machine.Text("A", "Value", "1");
    EXPECT_TRUE(watch.HasChanged());
}

// The system forgets what an event was signalled for when it is given for another key.
TEST_F(RegistryWatchTest, ChangeBetweenTwoAdditionsIsReported) {
    RegistryWatch watch;
    ASSERT_TRUE(watch.Add(HKEY_CURRENT_USER, kWatched));
    Write(Below("A"), "1");
    ASSERT_TRUE(watch.Add(HKEY_LOCAL_MACHINE, kWatched));
    ASSERT_TRUE(watch.Add(HKEY_CURRENT_USER, std::string(kTop) + "\\Other"));
    EXPECT_TRUE(watch.HasChanged());
}

TEST_F(RegistryWatchTest, WatchOfNothingHasChanged) {
    EXPECT_TRUE(RegistryWatch().HasChanged());
}

TEST_F(RegistryWatchTest, HandlesAreGivenBack) {
    EXPECT_EQ(0u, test::CountLeftovers([] {
                  RegistryWatch watch;
                  EXPECT_TRUE(watch.Add(HKEY_CURRENT_USER, kWatched));
                  Write(Below("A"), "1");
                  Delete(Below("A"));
              }));
}

TEST_F(RegistryWatchTest, HiveThatLeadsElsewhereIsAnotherOne) {
    const HiveMark before = MarkOf(HKEY_LOCAL_MACHINE);
    EXPECT_TRUE(before == MarkOf(HKEY_LOCAL_MACHINE));
    {
        const test::HiveOverride elsewhere(HKEY_LOCAL_MACHINE);
        EXPECT_FALSE(before == MarkOf(HKEY_LOCAL_MACHINE));
    }
    EXPECT_TRUE(before == MarkOf(HKEY_LOCAL_MACHINE));
    EXPECT_FALSE(HiveMark() == HiveMark());
}

TEST(ImpersonationTest, ThreadThatWorksForAUserIsRecognized) {
    EXPECT_FALSE(IsImpersonating());
    ASSERT_TRUE(ImpersonateSelf(SecurityImpersonation));
    EXPECT_TRUE(IsImpersonating());
    ASSERT_TRUE(RevertToSelf());
    EXPECT_FALSE(IsImpersonating());
}

}  // namespace
}  // namespace depot
