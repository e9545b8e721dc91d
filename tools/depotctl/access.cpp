#include "depotctl/access.h"

#include <chrono>
#include <functional>
#include <vector>

#include "depotctl/definition.h"
#include "depotctl/directory_words.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/terminal.h"
#include "platform/first_answer.h"
#include "platform/local_file.h"
#include "store/folder_store.h"

namespace depot::ctl {
namespace {

constexpr int kAttempts = 3;

// How long a location that does not answer holds up the next one.
constexpr std::chrono::seconds kPatience(2);

Problem NoCredentials(const CDepotPath& location) {
    const bool hasTarget = !location.credentialTarget.empty();
    return {"the server " + Utf8FromAnsi(location.host) +
                " wants a user name and a password, and none are stored" +
                (hasTarget ? " for it as \"" + Utf8FromAnsi(location.credentialTarget) + "\"" : ""),
            std::string("run the command at a terminal, or store them ") +
                (hasTarget ? "by \"depotctl depots set\" with --username and --store-password"
                           : "as Username and Password"),
            LDAP_INAPPROPRIATE_AUTH, false};
}

// Asks at the terminal; returns whether the user answered.
bool AskUser(const CDepotPath& location, LogOnNames& names) {
    if (!CanAsk()) return false;
    const std::string place = "Log on to " + Utf8FromAnsi(location.host) + "\n";
    const std::string known = Utf8FromAnsi(names.userName);
    const auto user =
        AskVisible(place + (known.empty() ? "User name: " : "User name [" + known + "]: "));
    if (!user) return false;
    const auto password = AskHidden("Password: ");
    if (!password) return false;
    if (!user->empty()) names.userName = ToAnsi(*user);
    names.password = ToAnsi(password->Plain());
    return true;
}

[[noreturn]] void FailToOpen(const CDepot& depot, const Problem& problem) {
    const std::string name = depot.name.empty() ? depot.displayName : depot.name;
    std::string text = "depot " + Utf8FromAnsi(name) + ": " + problem.text;
    const std::string help = HelpFor(problem.code, problem.advice);
    if (!help.empty()) text += "; " + help;
    throw CommandFailure(problem.isUnreachable ? ExitCode::kUnreachable : ExitCode::kRefused, text);
}

// The locations of one depot, of which one is opened.
class Opening {
public:
    explicit Opening(CDepot& depot) : depot_(depot) {
        for (std::size_t index = 0; index < Locations().Count(); ++index) {
            attempts_.push_back(MakeAttempt(*Locations().At(index)));
        }
    }

    void Run() {
        if (attempts_.empty()) return;
        std::optional<std::size_t> found = FirstOpened();
        if (const auto asked = FirstOpenedAsking(found.value_or(attempts_.size()))) found = asked;
        if (found) return Use(*found);
        const std::size_t last = attempts_.size() - 1;
        const std::optional<Problem> problem = attempts_[last]->WhyNot();
        if (problem && !attempts_[last]->IsUsedWith(*problem)) FailToOpen(depot_, *problem);
        LeaveOnly(last);
    }

private:
    CDepotPaths& Locations() const { return *depot_.paths; }

    // Dead servers are not waited for one after another.
    std::optional<std::size_t> FirstOpened() {
        const std::size_t count = attempts_.size();
        std::size_t first = 0;
        for (; first < count && (first + 1 == count || !attempts_[first]->MayWait()); ++first) {
            if (attempts_[first]->Open()) return first;
        }
        if (first == count) return std::nullopt;
        std::vector<std::function<Answer()>> work;
        for (std::size_t index = first; index < count; ++index) {
            work.emplace_back([attempt = attempts_[index]] {
                return attempt->Open() ? Answer::kGood : Answer::kNone;
            });
        }
        const auto found = FirstAnswer(std::move(work), kPatience);
        return found ? std::optional(first + *found) : std::nullopt;
    }

    // Asks for the credentials of a location before this one.
    std::optional<std::size_t> FirstOpenedAsking(std::size_t end) {
        for (std::size_t index = 0; index < end; ++index) {
            if (attempts_[index]->OpenAsking()) return index;
        }
        return std::nullopt;
    }

    void Use(std::size_t index) {
        LeaveOnly(index);
        attempts_[index]->Give(depot_, *Locations().At(0));
    }

    // What was found is not looked for again.
    void LeaveOnly(std::size_t index) { Locations().RemoveAllBut(Locations().At(index)); }

    CDepot& depot_;
    // Those that are not waited for any more end by themselves.
    std::vector<std::shared_ptr<LocationAttempt>> attempts_;
};

// Returns whether the depot's location was found already, to see which depot a path belongs to.
bool IsOpen(CDepot& depot) {
    CDepotPath* const chosen = depot.paths->ChosenLocation();
    return chosen != nullptr && MakeAttempt(*chosen)->IsOpenIn(depot);
}

}  // namespace

LogOnNames KnownCredentials(const DirectoryProbe& probe) {
    const CDepotPath& location = probe.Location();
    if (!location.NeedsUserName()) return {location.username, location.password};
    const Credentials paired = probe.Directory().Connection().Shared().Paired();
    return {paired.userName, paired.password};
}

std::optional<Problem> LogOnUnasked(DirectoryProbe& probe, const LogOnNames& names) {
    if (probe.Location().NeedsUserName() && (names.userName.empty() || names.password.empty())) {
        return NoCredentials(probe.Location());
    }
    return probe.LogOn(names.userName, names.password);
}

bool MayAsk(const DirectoryProbe& probe, const Problem& problem) {
    return probe.Location().NeedsUserName() && IsAboutCredentials(problem) && CanAsk();
}

std::optional<Problem> LogOnAsking(DirectoryProbe& probe, LogOnNames& names, Problem failure) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (!MayAsk(probe, failure) || !AskUser(probe.Location(), names)) return failure;
        const std::optional<Problem> problem = probe.LogOn(names.userName, names.password);
        if (!problem) return std::nullopt;
        failure = *problem;
    }
    return failure;
}

std::optional<Problem> TryFolder(const std::string& folder) {
    if (PathExists(folder)) return std::nullopt;
    const bool remote = folder.starts_with("\\\\");
    return Problem{"the folder \"" + Utf8FromAnsi(folder) + "\" is not there",
                   remote ? "check the server, the share and the network"
                          : "create the folder, or correct Path",
                   0, remote};
}

std::optional<Problem> TryWritingFolder(const std::string& folder) {
    if (FolderStore::Instance().TestWritable(folder)) return std::nullopt;
    return Problem{"the folder cannot be written", "grant the user the right to write there", 0,
                   false};
}

namespace {

class FolderAttempt final : public LocationAttempt {
public:
    explicit FolderAttempt(CDepotPath& location) : folder_(ExpandedPath(location)) {}

    bool MayWait() const override { return folder_.starts_with("\\\\"); }
    bool IsUsedWith(const Problem& problem) const override { return !problem.isUnreachable; }
    bool IsOpenIn(CDepot& /*depot*/) const override { return PathExists(folder_); }

private:
    std::optional<Problem> Look() override { return TryFolder(folder_); }
    std::optional<Problem> TryWriting() override { return TryWritingFolder(folder_); }

    const std::string folder_;
};

class DirectoryAttempt final : public LocationAttempt {
public:
    explicit DirectoryAttempt(CDepotPath& location) : probe_(location) {}

    bool MayWait() const override { return true; }
    bool IsOpenIn(CDepot& depot) const override {
        return depot.DirectoryConnection()->IsConnected();
    }

    void Give(CDepot& depot, CDepotPath& location) override {
        location.username = probe_.Location().username;
        location.password = probe_.Location().password;
        LdapConnection& connection = depot.DirectoryConnection()->Connection();
        connection.Adopt(probe_.Directory().Connection());
        // The connection stays open for the operations of this run.
        connection.Release();
    }

private:
    std::optional<Problem> Look() override {
        if (auto problem = LogOnUnasked(probe_, KnownCredentials(probe_))) {
            // Before anyone is asked for credentials there should be a server that wants them.
            if (!probe_.HasTried()) {
                if (auto unreachable = probe_.Reach()) return unreachable;
            }
            return problem;
        }
        return probe_.FindBase();
    }

    std::optional<Problem> LookAsking(const Problem& failure) override {
        if (!MayAsk(probe_, failure)) return failure;
        LogOnNames names = KnownCredentials(probe_);
        std::optional<Problem> problem = LogOnAsking(probe_, names, failure);
        return problem ? problem : probe_.FindBase();
    }

    std::optional<Problem> TryWriting() override { return probe_.TryWriting(); }

    DirectoryProbe probe_;
};

}  // namespace

std::unique_ptr<LocationAttempt> MakeAttempt(CDepotPath& location) {
    return MakeByType<LocationAttempt, FolderAttempt, DirectoryAttempt>(location, location);
}

bool LocationAttempt::Keep(std::optional<Problem> problem) {
    const std::lock_guard guard(lock_);
    problem_ = std::move(problem);
    return !problem_;
}

bool LocationAttempt::Open() {
    return Keep(Look());
}

std::optional<Problem> LocationAttempt::WhyNot() const {
    const std::lock_guard guard(lock_);
    return problem_;
}

bool LocationAttempt::OpenAsking() {
    const std::optional<Problem> failure = WhyNot();
    return failure && Keep(LookAsking(*failure));
}

LocationState LocationAttempt::Try() {
    LocationState state;
    state.problem = Look();
    if (!state.problem) state.writingProblem = TryWriting();
    return state;
}

void OpenDepot(CDepot& depot) {
    if (!IsOpen(depot)) Opening(depot).Run();
}

}  // namespace depot::ctl
