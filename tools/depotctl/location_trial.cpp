#include "depotctl/location_trial.h"

#include "depotctl/access.h"
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

class Stages {
public:
    Stages(CDepotPath& location, Trial trial) : location_(location), trial_(trial) {}

    Findings Run() {
        const bool isDirectory = IsDirectory(location_);
        const bool goesOn = CheckName() && trial_ == Trial::kOnline;
        if (goesOn && isDirectory) TryDirectory();
        if (goesOn && !isDirectory) TryPath();
        return std::move(findings_);
    }

private:
    void Good(const char* step, const std::string& text) {
        findings_.push_back(ctl::Good(step, text));
    }
    // Returns whether there is no problem.
    bool Pass(const char* step, const std::optional<Problem>& problem) {
        if (!problem) return true;
        const State state = problem->isUnreachable ? State::kUnreachable : State::kProblem;
        findings_.push_back({state, step, problem->text, problem->advice});
        return false;
    }

    // Macros, and whether what they make is a folder or a base.
    bool CheckName() {
        const std::string raw = Utf8FromAnsi(location_.path);
        const std::string narrow = ExpandedPath(location_);
        const std::string expanded = Utf8FromAnsi(narrow);
        Findings found;
        if (!IsDirectory(location_)) {
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
            findings_.push_back(
                Remark("macros", "the path is wrong, as told above; it is not tried"));
        }
        if (usable && found.empty()) {
            Good("macros", raw == expanded ? "nothing to expand" : expanded);
        }
        return usable;
    }

    void TryPath() {
        const std::string folder = ExpandedPath(location_);
        if (!Pass("folder", TryFolder(folder))) return;
        // A file where a folder is named.
        if (!IsLocalFolder(folder)) {
            findings_.push_back(Wrong("folder", "it is a file", "correct Path"));
            return;
        }
        Good("folder", "it is there");
        ReportRights(TryWritingFolder(folder), false);
    }

    void TryDirectory() {
        DirectoryProbe probe(location_);
        if (!Pass("server", probe.Reach())) return;
        Good("server",
             Utf8FromAnsi(location_.host) + ":" + std::to_string(location_.port) + " answers");
        LogOnNames names = KnownCredentials(location_, probe.Names());
        if (!Pass("log-on", LogOnAsking(probe, location_, names))) return;
        Good("log-on", LogOnText(location_, names));
        if (!Pass("base", probe.FindBase())) return;
        Good("base", Utf8FromAnsi(probe.BaseDN()));
        ReportSchema(probe);
        ReportRights(TryWriting(location_, names), true);
        ReportLimits(probe);
    }

    void ReportSchema(DirectoryProbe& probe) {
        const auto missing = probe.MissingFromSchema();
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
    void ReportRights(const std::optional<Problem>& problem, bool isDirectory) {
        if (!problem) return Good("rights", "reading and writing");
        if (isDirectory && problem->code != LDAP_INSUFFICIENT_RIGHTS) {
            Pass("rights", problem);
            return;
        }
        findings_.push_back(Remark("rights", "reading only: " + problem->text, problem->advice));
    }

    void ReportLimits(DirectoryProbe& probe) {
        bool inPages = false;
        if (!Pass("limits", probe.ListBase(inPages))) return;
        Good("limits", inPages ? "the base is listed in pages, as the server's size limit wants it"
                               : "the base is listed in one go");
    }

    CDepotPath& location_;
    const Trial trial_;
    Findings findings_;
};

}  // namespace

Findings TryStepByStep(CDepotPath& location, Trial trial) {
    return Stages(location, trial).Run();
}

}  // namespace depot::ctl
