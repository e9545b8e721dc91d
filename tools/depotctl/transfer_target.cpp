#include "depotctl/transfer_target.h"

#include "depotctl/failure.h"
#include "depotctl/utf8_text.h"
#include "platform/paths.h"

namespace depot::ctl {
namespace {

bool NamesFolder(const std::string& utf8Path) {
    return EndsInAscii(utf8Path, '\\') || EndsInAscii(utf8Path, '/') || EndsInAscii(utf8Path, '>');
}

std::string SourceName(const Place& from) {
    if (IsRoot(from)) Refuse(from.Shown() + " has no name of its own; name the target in full");
    return NamePart(from.path);
}

}  // namespace

Place TargetOf(Places& places, const Place& from, const std::string& to) {
    const Place named = places.Resolve(to);
    if (places.KindOf(named) == ItemKind::kFolder) return Child(named, SourceName(from));
    if (NamesFolder(to)) Refuse("the folder " + named.Shown() + " is not there");
    const Place parent = ParentOf(named);
    if (places.KindOf(parent) != ItemKind::kFolder) {
        Refuse("the folder " + parent.Shown() + " is not there");
    }
    return named;
}

void RequireFree(const Places& places, ItemKind kind, const Place& to, bool force) {
    const ItemKind there = places.KindOf(to);
    if (there == ItemKind::kMissing) return;
    if (there != kind) {
        Refuse(to.Shown() + " is there already, as a " +
               (there == ItemKind::kFolder ? "folder" : "file"));
    }
    if (kind == ItemKind::kFile && !force) {
        Refuse(to.Shown() + " is there already; --force replaces it");
    }
}

void AnswerTransfer(const Program& program, const char* verb, const Place& to,
                    const TransferResult& result) {
    const std::string files = Counted(result.files, "file");
    program.renderer.Answer({{verb, to.Utf8()}, {"files", result.files}},
                            std::string(verb) + " " + files + " to " + to.Utf8());
}

}  // namespace depot::ctl
