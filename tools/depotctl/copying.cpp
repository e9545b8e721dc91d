#include "depotctl/copying.h"

#include "depotctl/failure.h"
#include "depotctl/tree_update.h"
#include "depotctl/utf8_text.h"

namespace depot::ctl {
namespace {

struct PlannedCopy {
    const Place& from;
    ItemKind kind;
    const Target& to;
};

// Copies one file or tree, or only shows what that would take.
std::uint32_t CopyOne(const Program& program, const PlannedCopy& copy,
                      const TransferOptions& options, Steps& steps) {
    const auto& [from, kind, to] = copy;
    if (options.update || steps.AreShown()) {
        RequireApart(from, to.place);
        const DifferentBy by = options.update ? DifferentBy::kDate : DifferentBy::kName;
        const TreeDifference difference({from, kind}, {to.place, to.there}, by);
        if (!options.update && !options.force) RequireNothingReplaced(difference);
        steps.Note(CopySteps(difference));
        if (!steps.AreTaken()) return 0;
        if (options.update) return CopyDifferent(program, difference);
    }
    return Transfer(program, from, to.place, {kind, options.Existing()});
}

}  // namespace

void RunCopy(Program& program, const TransferOptions& options, const CopyCommand& command) {
    Places places(program);
    const Selection from = places.Select(options.from);
    const std::vector<ItemKind> kinds = places.RequireAll(from);
    const std::vector<Target> targets = TargetsOf(places, from, options.to);
    for (std::size_t at = 0; at < targets.size(); ++at) {
        command.check(from.items[at].place, kinds[at], targets[at].place);
        RequireFree(targets[at], kinds[at], options.force || options.update);
    }
    Steps steps(program, options.steps);
    TransferAnswer answer(from, command.verb);
    for (std::size_t at = 0; at < targets.size(); ++at) {
        answer.Add(
            targets[at].place,
            CopyOne(program, {from.items[at].place, kinds[at], targets[at]}, options, steps));
    }
    answer.Give(steps);
}

void TransferAnswer::Add(const Place& to, std::uint32_t files) {
    places_.push_back(to.Utf8());
    folder_ = FolderOf(to).Utf8();
    files_ += files;
}

void TransferAnswer::Give(const Steps& steps) const {
    const std::string& where = isPattern_ ? folder_ : places_.front();
    steps.Answer({{verb_, isPattern_ ? Json(places_) : Json(places_.front())}, {"files", files_}},
                 std::string(verb_) + " " + Counted(files_, "file") + " to " + where);
}

}  // namespace depot::ctl
