// Many users who edit shared profiles for long, while their server comes and goes.
#include <cstdlib>
#include <iostream>
#include <random>

#include "directory/connection_scope.h"
#include "directory_depots/depot_fixture.h"
#include "directory_depots/killed_process.h"
#include "support/offline_files.h"

namespace depot {
namespace {

using test::DirectoryServer;

constexpr int kUsers = 50;
constexpr int kProfiles = 20;
// An edit makes about so many system calls of a kind.
constexpr int kCalls = 80;
constexpr int kKillOneIn = 10;

int NumberFrom(const char* variable, int standard) {
    const char* const text = std::getenv(variable);
    return text != nullptr ? std::atoi(text) : standard;
}

// Every edit writes a value of its own, so that none is replaced by a later one, and one that all
// edits of a profile share, so that they meet.
class ApartSimulation : public test::DepotFixture {
protected:
    ApartSimulation() {
        key_.Dword("Work", "Offline1", 1);
        key_.Dword("Work", "DetectConflicts1", 2);
        for (int profile = 0; profile < kProfiles; ++profile) {
            own_.AddFile(NameOf(profile), test::kSuffix, "[All]\r\nlast=nobody\r\n");
        }
    }

    static std::string NameOf(int profile) { return "p" + std::to_string(profile) + ".kra"; }

    // Each user has a name of the server's only editor in a spelling of its own, and so a place of
    // its own for what is kept.
    static std::string UserName(int user) {
        return "cn=editor," + std::string(static_cast<std::size_t>(user), ' ') +
               "dc=farrow,dc=test";
    }
    void LogOn(int user) { Define(own_.Port(), test::kSuffix, UserName(user)); }

    void Run(unsigned seed, int rounds) {
        seed_ = seed;
        random_.seed(seed);
        acknowledged_.clear();
        apart_ = killed_ = 0;
        for (int round = 0; round < rounds; ++round) {
            if (Below(10) == 0) SetAway(!isAway_);
            Edit(Below(kUsers), Below(kProfiles), round);
        }
        SetAway(false);
        // Everyone comes back once more.
        for (int user = 0; user < kUsers; ++user) {
            LogOn(user);
            Load(NameOf(0));
        }
    }

    // Checks that every acknowledged value is in its entry, waits, or was recovered.
    void ExpectNothingLost() {
        std::string all;
        CDepotPath location = own_.Location();
        CLDAPItems directory(&location);
        const ConnectionScope connection(directory, nullptr);
        for (int profile = 0; profile < kProfiles; ++profile) {
            FileBuffer buffer;
            ASSERT_TRUE(
                directory.Entries().Read("cn=" + NameOf(profile) + "," + test::kSuffix, buffer));
            all.append(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
        }
        const std::size_t inEntries = all.size();
        for (const OfflineRecord& edit : test::WaitingEdits()) {
            all.append(edit.bytes.begin(), edit.bytes.end());
        }
        for (const std::string& path : test::RecoveredFiles()) all += test::FileBytes(path);
        int elsewhere = 0;
        for (const std::string& value : acknowledged_) {
            const std::size_t found = all.find(value);
            EXPECT_NE(std::string::npos, found) << value;
            elsewhere += found >= inEntries ? 1 : 0;
        }
        std::cout << acknowledged_.size() << " edits, " << apart_ << " of them apart, " << killed_
                  << " processes killed, " << test::RecoveredFiles().size() << " files recovered, "
                  << elsewhere << " values only there\n";
    }

    std::vector<std::string> acknowledged_;

private:
    int Below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }

    void SetAway(bool away) {
        if (away == isAway_) return;
        isAway_ = away;
        if (away) {
            own_.Stop();
        } else {
            own_.Continue();
        }
    }

    void Edit(int user, int profile, int round) {
        LogOn(user);
        const std::string name =
            "s" + std::to_string(seed_) + "u" + std::to_string(user) + "r" + std::to_string(round);
        if (Below(kKillOneIn) == 0) return EditInAProcessThatIsKilled(profile, name);
        const auto file = Load(NameOf(profile));
        // Never read while the server was there.
        if (file->FetchCode() != 0 || file->localPath.empty()) return;
        // A program that gives up has promised nothing.
        if (Below(20) == 0) return;
        file->WriteString("All", "last", name);
        file->WriteString("User", name, "edited");
        if (Below(20) == 0) SetAway(!isAway_);
        if (file->Release()) apart_ += isAway_ ? 1 : 0;
        // What was refused is recovered, and as safe.
        acknowledged_.push_back(name + "=edited");
    }

    // A program that is killed has promised what it was told to be stored.
    void EditInAProcessThatIsKilled(int profile, const std::string& name) {
        const auto kind =
            static_cast<std::size_t>(Below(static_cast<int>(std::size(test::kKillingKinds))));
        const test::KilledEnd end =
            test::UseUntilKilled({.kind = test::kKillingKinds[kind],
                                  .number = 1 + Below(kCalls),
                                  .file = NameOf(profile),
                                  .values = {{"All", "last", name}, {"User", name, "edited"}}});
        killed_ += end.WasKilled() ? 1 : 0;
        if (end.IsAcknowledged()) acknowledged_.push_back(name + "=edited");
    }

    test::CleanOfflineFiles cleanKept_;
    DirectoryServer own_;
    std::mt19937 random_;
    unsigned seed_ = 0;
    bool isAway_ = false;
    int apart_ = 0;
    int killed_ = 0;
};

TEST_F(ApartSimulation, EveryEditIsInItsEntryWaitsOrWasRecovered) {
    const unsigned first = static_cast<unsigned>(NumberFrom("DEPOTINTR_SEED", 1));
    const int seeds = NumberFrom("DEPOTINTR_SEEDS", 1);
    const int rounds = NumberFrom("DEPOTINTR_ROUNDS", 200);
    for (unsigned seed = first; seed < first + static_cast<unsigned>(seeds); ++seed) {
        SCOPED_TRACE(seed);
        std::cout << "seed " << seed << ": ";
        Run(seed, rounds);
        ExpectNothingLost();
        ASSERT_FALSE(acknowledged_.empty());
    }
}

}  // namespace
}  // namespace depot
