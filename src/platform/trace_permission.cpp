#include "platform/trace_permission.h"

#include "platform/object_trust.h"

namespace depot {

bool MayFollowTheEnvironment(const ProcessRights& rights) {
    return rights.isKnown && !rights.isElevated && rights.level < kHighLevel;
}

bool IsPlainFile(const OpenedTarget& target) {
    return target.isOnDisk && !target.isLink && target.names == 1;
}

}  // namespace depot
