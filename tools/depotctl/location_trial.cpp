#include "depotctl/location_trial.h"

#include <chrono>
#include <utility>

#include "depotctl/definition_checks.h"
#include "depotctl/encoding.h"
#include "platform/local_file.h"

namespace depot::ctl {
namespace {

std::string Joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

std::string LogOnText(const CDepotPath& location, const LogOnNames& names) {
    const std::string secured = location.security == 0   ? "not secured, "
                                : location.security == 2 ? "secured from the start, "
                                                         : "secured with StartTLS, ";
    switch (location.authentication) {
        case kAnonymousAuthentication:
            return secured + "anonymous";
        case kNegotiateAuthentication:
            return secured + "as the user of Windows";
        default:
            return secured + "as " + Utf8FromAnsi(names.userName);
    }
}

// A round trip for which a connection is worth keeping, and for how many seconds.
constexpr std::chrono::milliseconds kLongRoundTrip(5);
constexpr char kRecommendedSeconds[] = "60";

std::string Milliseconds(std::chrono::microseconds time) {
    const auto whole = std::chrono::round<std::chrono::milliseconds>(time).count();
    return whole == 0 ? "less than 1 ms" : std::to_string(whole) + " ms";
}

class FolderTrial final : public LocationTrial {
public:
    FolderTrial(CDepotPath& location, std::size_t /*number*/) : folder_(ExpandedPath(location)) {
        CheckName(location);
    }

private:
    Findings CheckPath(const FolderPath& path) const override {
        return CheckFolder("macros", path);
    }

    void Try() override {
        if (!Pass("folder", TryFolder(folder_))) return;
        // A file where a folder is named.
        if (!IsLocalFolder(folder_)) {
            Add(Wrong("folder", "it is a file", "correct Path"));
            return;
        }
        Good("folder", "it is there");
        const std::optional<Problem> writing = TryWritingFolder(folder_);
        if (!writing) return Good("rights", "reading and writing");
        ReportReadingOnly(*writing);
    }

    const std::string folder_;
};

class DirectoryTrial final : public LocationTrial {
public:
    DirectoryTrial(CDepotPath& location, std::size_t number) : number_(number), probe_(location) {
        CheckName(location);
    }

    void Ask() override {
        if (!unanswered_) return;
        const Problem failure = *std::exchange(unanswered_, std::nullopt);
        if (Pass("log-on", LogOnAsking(probe_, names_, failure))) TryEntries();
    }

private:
    Findings CheckPath(const FolderPath& path) const override {
        Findings found = CheckMacros("macros", path.expanded);
        if (found.empty()) found = CheckBase("macros", path.expanded);
        return found;
    }

    void Try() override {
        if (!Pass("server", probe_.Reach())) return;
        const CDepotPath& location = probe_.Location();
        Good("server",
             Utf8FromAnsi(location.host) + ":" + std::to_string(location.port) + " answers");
        names_ = KnownCredentials(probe_);
        const std::optional<Problem> problem = LogOnUnasked(probe_, names_);
        if (problem && MayAsk(probe_, *problem)) {
            unanswered_ = problem;
            return;
        }
        if (Pass("log-on", problem)) TryEntries();
    }

    // What is seen by a user who has logged on.
    void TryEntries() {
        Good("log-on", LogOnText(probe_.Location(), names_));
        ReportRoundTrip();
        if (!Pass("base", probe_.FindBase())) return;
        Good("base", Utf8FromAnsi(probe_.BaseDN()));
        ReportSchema();
        const std::optional<Problem> writing = probe_.TryWriting();
        // Whoever may write and not read would store over what there is.
        if (const auto reading = probe_.TryReading(!writing)) {
            Add(Wrong("rights", (writing ? "" : "writing only: ") + reading->text,
                      reading->advice));
        } else {
            ReportRights(writing);
        }
        ReportLimits();
        ReportConflicts();
    }

    // Without a kept connection each call of an application waits for three round trips at least.
    void ReportRoundTrip() {
        const std::chrono::microseconds time = probe_.RoundTrip();
        const std::uint32_t kept = probe_.Location().keepConnection;
        if (kept > 0) {
            Good("round trip",
                 Milliseconds(time) + ", with connections kept for " + std::to_string(kept) + " s");
        } else if (time <= kLongRoundTrip) {
            Good("round trip", Milliseconds(time));
        } else {
            const std::string value = Numbered("KeepConnection", static_cast<int>(number_));
            Add(Remark("round trip", Milliseconds(time) + ", and each call connects anew",
                       "set " + value + " to " + kRecommendedSeconds +
                           ", which keeps a connection for a minute"));
        }
    }

    void ReportSchema() {
        const auto gaps = probe_.GapsOfSchema();
        if (!gaps) return Add(Remark("schema", "the server does not tell its schema"));
        if (gaps->missing.empty() && gaps->unfit.empty()) {
            return Good("schema", "all classes and attributes are there");
        }
        if (!gaps->missing.empty()) {
            Add(Wrong("schema", "the server does not know " + Joined(gaps->missing),
                      "load schema/ into the server, or correct the names"));
        }
        if (!gaps->unfit.empty()) {
            Add(Wrong("schema", Joined(gaps->unfit) + ", so that no entry of this kind can be made",
                      "name another class, or the attribute that names entries of this one"));
        }
    }

    void ReportRights(const std::optional<Problem>& problem) {
        if (!problem) return Good("rights", "reading and writing");
        if (problem->code == LDAP_INSUFFICIENT_RIGHTS) return ReportReadingOnly(*problem);
        Pass("rights", problem);
    }

    void ReportLimits() {
        bool inPages = false;
        if (!Pass("limits", probe_.ListBase(inPages))) return;
        Good("limits", inPages ? "the base is listed in pages, as the server's size limit wants it"
                               : "the base is listed in one go");
    }

    // Without any there is nothing to say: most directories are one server.
    void ReportConflicts() {
        std::optional<Problem> problem;
        const std::vector<std::string> names = probe_.FindConflicts(problem);
        if (problem) {
            Add(Remark("conflicts", "they cannot be looked for: " + problem->text,
                       problem->advice));
        } else if (!names.empty()) {
            Add(Remark(
                "conflicts",
                "made on two servers at once, so that replication kept both: " + Joined(names),
                "compare each with the entry of its name, and delete or rename one of them"));
        }
    }

    const std::size_t number_;
    DirectoryProbe probe_;
    LogOnNames names_;
    std::optional<Problem> unanswered_;  // what the user may be asked for
};

}  // namespace

void LocationTrial::Good(const char* step, const std::string& text) {
    Add(ctl::Good(step, text));
}

bool LocationTrial::Pass(const char* step, const std::optional<Problem>& problem) {
    if (!problem) return true;
    const State state = problem->isUnreachable ? State::kUnreachable : State::kProblem;
    Add({state, step, problem->text, problem->advice});
    return false;
}

// A depot that users only read from is in order.
void LocationTrial::ReportReadingOnly(const Problem& problem) {
    Add(Remark("rights", "reading only: " + problem.text, problem.advice));
}

void LocationTrial::CheckName(CDepotPath& location) {
    const std::string raw = Utf8FromAnsi(location.path);
    const std::string narrow = ExpandedPath(location);
    const std::string expanded = Utf8FromAnsi(narrow);
    const Findings found = CheckPath({raw, expanded, narrow.size()});
    // What is wrong with the text as it stands was reported for its definition.
    const bool isReported = raw == expanded && !HasMacros(raw);
    if (!isReported) findings_ = found;
    isUsable_ = !HasProblems(found);
    if (isReported && !isUsable_) {
        Add(Remark("macros", "the path is wrong, as told above; it is not tried"));
    }
    if (isUsable_ && found.empty()) {
        Good("macros", raw == expanded ? "nothing to expand" : expanded);
    }
}

std::unique_ptr<LocationTrial> MakeTrial(CDepotPath& location, std::size_t number) {
    return MakeByType<LocationTrial, FolderTrial, DirectoryTrial>(location, location, number);
}

}  // namespace depot::ctl
