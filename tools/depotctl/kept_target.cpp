#include "depotctl/kept_target.h"

#include "depotctl/failure.h"

namespace depot::ctl {

std::optional<KeptBytes> PlacedTarget::Read() const {
    TargetContents contents = target_->Read();
    if (!contents.result) FailToRead(contents.failed, contents.result.Why());
    return std::move(contents.bytes);
}

void PlacedTarget::Write(const KeptBytes& bytes, const std::optional<KeptBytes>& present) const {
    const Result written = target_->Write(bytes, present);
    if (!written) FailToWrite(written.Why());
}

void PlacedTarget::FailToRead(TargetContents::Step step, const Error& why) const {
    if (why.reason == Reason::kInvalid) Refuse(place_.Shown() + " is a folder");
    switch (step) {
        case TargetContents::Step::kReach:
            Fail("reach", place_, why);
        case TargetContents::Step::kLook:
            Fail("look at", place_, why);
        case TargetContents::Step::kRead:
            break;
    }
    Fail("read", place_, why);
}

void PlacedTarget::FailToWrite(const Error& why) const {
    if (why.reason != Reason::kChanged) Fail("store into", place_, why);
    Fail("store into", place_,
         Error{Reason::kChanged, CodeKind::kSystem, 0, "it was changed just now"});
}

}  // namespace depot::ctl
