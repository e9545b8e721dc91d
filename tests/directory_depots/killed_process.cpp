#include "directory_depots/killed_process.h"

#include "directory_depots/depot_fixture.h"
#include "support/child_process.h"

namespace depot::test {
namespace {

constexpr char kRole[] = "use-until-killed";
constexpr char kDepots[] = "Software\\DepotTests\\Directory";
constexpr int kRefused = 97;
constexpr int kAcknowledged = 1000;

int Use(const Arguments& arguments) {
    const FaultLayer layer(GetModuleHandleA(nullptr));
    CDepots depots(kDepots);
    FaultLayer::EndProcess(static_cast<FaultKind>(std::stoi(arguments[0])),
                           std::stoi(arguments[1]));
    bool isDone = true;
    {
        DepotFileContext file("<Work>\\" + arguments[2], depots);
        for (std::size_t at = 3; at + 2 < arguments.size(); at += 3) {
            file.WriteString(arguments[at], arguments[at + 1], arguments[at + 2]);
        }
        isDone = file.FetchCode() == 0 && !file.localPath.empty() && file.Release();
    }
    return isDone ? kAcknowledged + FaultLayer::Stop() : kRefused;
}
const RoleRegistration useRole(kRole, &Use);

}  // namespace

bool KilledEnd::WasKilled() const {
    return exitCode == static_cast<int>(FaultLayer::kEnded);
}

bool KilledEnd::IsAcknowledged() const {
    return exitCode >= kAcknowledged;
}

int KilledEnd::Calls() const {
    return exitCode - kAcknowledged;
}

KilledEnd UseUntilKilled(const KilledUse& use) {
    Arguments arguments = {std::to_string(static_cast<int>(use.kind)), std::to_string(use.number),
                           use.file};
    for (const ProfileValue& each : use.values) {
        arguments.insert(arguments.end(), {each.section, each.key, each.value});
    }
    return {ChildProcess(kRole, arguments).ExitCode()};
}

}  // namespace depot::test
