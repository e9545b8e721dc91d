#include "depotctl/location_trial.h"

#include <chrono>
#include <utility>

#include "depotctl/definition_checks.h"
#include "depotctl/encoding.h"
#include "depotctl/location_checks.h"
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

}  // namespace

LocationTrial::LocationTrial(CDepotPath& location, std::size_t number) : number_(number) {
    isUsable_ = CheckName(location);
    if (!isUsable_) return;
    if (location.IsDirectory()) {
        probe_.emplace(location);
    } else {
        folder_ = ExpandedPath(location);
    }
}

void LocationTrial::Run() {
    if (!isUsable_) return;
    if (probe_) {
        TryDirectory();
    } else {
        TryPath();
    }
}

void LocationTrial::Good(const char* step, const std::string& text) {
    findings_.push_back(ctl::Good(step, text));
}

// Returns whether there is no problem.
bool LocationTrial::Pass(const char* step, const std::optional<Problem>& problem) {
    if (!problem) return true;
    const State state = problem->isUnreachable ? State::kUnreachable : State::kProblem;
    findings_.push_back({state, step, problem->text, problem->advice});
    return false;
}

// Macros, and whether what they make is a folder or a base.
bool LocationTrial::CheckName(CDepotPath& location) {
    const std::string raw = Utf8FromAnsi(location.path);
    const std::string narrow = ExpandedPath(location);
    const std::string expanded = Utf8FromAnsi(narrow);
    Findings found;
    if (!location.IsDirectory()) {
        found = CheckFolder("macros", {raw, expanded, narrow.size()});
    } else {
        found = CheckMacros("macros", expanded);
        if (found.empty()) found = CheckBase("macros", expanded);
    }
    // What is wrong with the text as it stands was reported for its definition.
    const bool isReported = raw == expanded && !HasMacros(raw);
    if (!isReported) findings_ = found;
    const bool usable = !HasProblems(found);
    if (isReported && !usable) {
        findings_.push_back(Remark("macros", "the path is wrong, as told above; it is not tried"));
    }
    if (usable && found.empty()) {
        Good("macros", raw == expanded ? "nothing to expand" : expanded);
    }
    return usable;
}

void LocationTrial::TryPath() {
    if (!Pass("folder", TryFolder(folder_))) return;
    // A file where a folder is named.
    if (!IsLocalFolder(folder_)) {
        findings_.push_back(Wrong("folder", "it is a file", "correct Path"));
        return;
    }
    Good("folder", "it is there");
    ReportRights(TryWritingFolder(folder_), false);
}

void LocationTrial::TryDirectory() {
    if (!Pass("server", probe_->Reach())) return;
    const CDepotPath& location = probe_->Location();
    Good("server", Utf8FromAnsi(location.host) + ":" + std::to_string(location.port) + " answers");
    names_ = KnownCredentials(*probe_);
    const std::optional<Problem> problem = LogOnUnasked(*probe_, names_);
    if (problem && MayAsk(*probe_, *problem)) {
        unanswered_ = problem;
        return;
    }
    if (Pass("log-on", problem)) TryEntries();
}

void LocationTrial::Ask() {
    if (!unanswered_) return;
    const Problem failure = *std::exchange(unanswered_, std::nullopt);
    if (Pass("log-on", LogOnAsking(*probe_, names_, failure))) TryEntries();
}

// What is seen by a user who has logged on.
void LocationTrial::TryEntries() {
    Good("log-on", LogOnText(probe_->Location(), names_));
    ReportRoundTrip();
    if (!Pass("base", probe_->FindBase())) return;
    Good("base", Utf8FromAnsi(probe_->BaseDN()));
    ReportSchema();
    const std::optional<Problem> writing = probe_->TryWriting();
    // Whoever may write and not read would store over what there is.
    if (const auto reading = probe_->TryReading(!writing)) {
        findings_.push_back(
            Wrong("rights", (writing ? "" : "writing only: ") + reading->text, reading->advice));
    } else {
        ReportRights(writing, true);
    }
    ReportLimits();
    ReportConflicts();
}

// Without a kept connection each call of an application waits for three round trips at least.
void LocationTrial::ReportRoundTrip() {
    const std::chrono::microseconds time = probe_->RoundTrip();
    const std::uint32_t kept = probe_->Location().keepConnection;
    if (kept > 0) {
        Good("round trip",
             Milliseconds(time) + ", with connections kept for " + std::to_string(kept) + " s");
    } else if (time <= kLongRoundTrip) {
        Good("round trip", Milliseconds(time));
    } else {
        const std::string value = Numbered("KeepConnection", static_cast<int>(number_));
        findings_.push_back(Remark("round trip",
                                   Milliseconds(time) + ", and each call connects anew",
                                   "set " + value + " to " + kRecommendedSeconds +
                                       ", which keeps a connection for a minute"));
    }
}

void LocationTrial::ReportSchema() {
    const auto missing = probe_->MissingFromSchema();
    if (!missing) {
        findings_.push_back(Remark("schema", "the server does not tell its schema"));
    } else if (missing->empty()) {
        Good("schema", "all classes and attributes are there");
    } else {
        findings_.push_back(Wrong("schema", "the server does not know " + Joined(*missing),
                                  "load schema/ into the server, or correct the names"));
    }
}

// A depot that users only read from is in order.
void LocationTrial::ReportRights(const std::optional<Problem>& problem, bool isDirectory) {
    if (!problem) return Good("rights", "reading and writing");
    if (isDirectory && problem->code != LDAP_INSUFFICIENT_RIGHTS) {
        Pass("rights", problem);
        return;
    }
    findings_.push_back(Remark("rights", "reading only: " + problem->text, problem->advice));
}

void LocationTrial::ReportLimits() {
    bool inPages = false;
    if (!Pass("limits", probe_->ListBase(inPages))) return;
    Good("limits", inPages ? "the base is listed in pages, as the server's size limit wants it"
                           : "the base is listed in one go");
}

// Without any there is nothing to say: most directories are one server.
void LocationTrial::ReportConflicts() {
    std::optional<Problem> problem;
    const std::vector<std::string> names = probe_->FindConflicts(problem);
    if (problem) {
        findings_.push_back(
            Remark("conflicts", "they cannot be looked for: " + problem->text, problem->advice));
    } else if (!names.empty()) {
        findings_.push_back(
            Remark("conflicts",
                   "made on two servers at once, so that replication kept both: " + Joined(names),
                   "compare each with the entry of its name, and delete or rename one of them"));
    }
}

}  // namespace depot::ctl
