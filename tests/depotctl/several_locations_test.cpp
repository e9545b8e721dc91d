// Several locations that let wait for their answers.
#include <condition_variable>
#include <mutex>

#include "depotctl/directory_tool.h"
#include "support/relay.h"

namespace depot::test {
namespace {

using testing::HasSubstr;

// Whoever comes waits until so many are there.
class Meeting {
public:
    explicit Meeting(int expected) : expected_(expected) {}

    void Come() {
        std::unique_lock guard(lock_);
        ++there_;
        changed_.notify_all();
        changed_.wait_for(guard, kPatience, [&] { return there_ >= expected_; });
        if (there_ >= expected_) met_ = true;
    }
    bool HasMet() {
        const std::lock_guard guard(lock_);
        return met_;
    }

private:
    static constexpr std::chrono::seconds kPatience{15};

    std::mutex lock_;
    std::condition_variable changed_;
    const int expected_;
    int there_ = 0;
    bool met_ = false;
};

class SeveralLocationsTest : public ToolTest {
protected:
    // Defines depots whose servers answer no log-on before all of them are asked for one.
    SeveralLocationsTest() {
        for (int index = 0; index < 3; ++index) {
            const std::string key = "Slow" + std::to_string(index);
            relays_.push_back(std::make_unique<Relay>(dir_.server.Port()));
            Relay& relay = *relays_.back();
            Disturbance hold;
            hold.beforeRequest = [this](const RelayedRequest& request) {
                if (request.operation == LdapOperation::kBind) meeting_.Come();
            };
            relay.Disturb(hold);
            dir_.Define(key);
            key_.Dword(key, "Port1", relay.Port());
            ForgetServer(relay.Port());
        }
    }

    // Lets none of the servers answer at all.
    void DropAll() {
        for (const auto& relay : relays_) {
            Disturbance drop;
            drop.beforeRequest = [this](const RelayedRequest&) { meeting_.Come(); };
            drop.dropAfterRequest = 1;
            relay->Disturb(drop);
        }
    }

    DirectoryDepot dir_{key_};
    Meeting meeting_{3};
    std::vector<std::unique_ptr<Relay>> relays_;
};

TEST_F(SeveralLocationsTest, DepotsAsksAllServersAtOnceAndAnswersInOrder) {
    const auto depots = RunTool({"depots", "--json"}).Json();
    EXPECT_TRUE(meeting_.HasMet()) << "a server was asked before another one had answered";
    std::vector<std::string> keys;
    for (const auto& depot : depots) {
        keys.push_back(depot["key"]);
        EXPECT_TRUE(depot["locations"][0]["writable"].get<bool>()) << depot;
    }
    EXPECT_THAT(keys, testing::ElementsAre("Work", "Dir", "Slow0", "Slow1", "Slow2", "Team"));
}

TEST_F(SeveralLocationsTest, DepotsWaitsForDeadServersTogether) {
    DropAll();
    const auto depots = RunTool({"depots", "--json"}).Json();
    EXPECT_TRUE(meeting_.HasMet());
    for (const auto& depot : depots) {
        const bool isSlow = depot["key"].get<std::string>().starts_with("Slow");
        EXPECT_EQ(!isSlow, depot["locations"][0]["reachable"].get<bool>()) << depot;
    }
}

TEST_F(SeveralLocationsTest, CheckAsksAllServersAtOnce) {
    const ToolRun run = RunTool({"check", "--json"});
    EXPECT_TRUE(meeting_.HasMet());
    for (const auto& depot : run.Json()["depots"]) {
        EXPECT_THAT(depot["locations"][0].dump(), HasSubstr("reading and writing"));
    }
}

TEST_F(SeveralLocationsTest, CheckWaitsForDeadServersTogether) {
    DropAll();
    const ToolRun run = RunTool({"check"});
    EXPECT_TRUE(meeting_.HasMet());
    EXPECT_EQ(ExitCode::kUnreachable, run.exitCode);
    EXPECT_THAT(run.errors, HasSubstr("3 locations cannot be reached"));
}

TEST_F(SeveralLocationsTest, NextLocationIsTriedWhileTheFirstDoesNotAnswer) {
    // The second location of the depot is the second relay.
    key_.Text("Slow0", "Path2", dir_.base);
    key_.Dword("Slow0", "Type2", 1);
    key_.Text("Slow0", "Host2", "127.0.0.1");
    key_.Dword("Slow0", "Port2", relays_[1]->Port());
    key_.Text("Slow0", "Username2", kEditor);
    key_.Text("Slow0", "Password2", kEditorPassword);
    Disturbance silent;
    silent.lateAnswer = 1;
    silent.lateness = std::chrono::seconds(30);
    relays_[0]->Disturb(silent);
    relays_[1]->Disturb({});
    const ToolRun run = RunTool({"ls", "<Slow0>\\"});
    EXPECT_THAT(run.output, HasSubstr("Sessions")) << run.errors;
}

}  // namespace
}  // namespace depot::test
