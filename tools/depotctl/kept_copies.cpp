#include "depotctl/kept_copies.h"

#include <algorithm>
#include <iterator>

#include "depotctl/directory_words.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/utf8_text.h"
#include "directory/ldap_result.h"

namespace depot::ctl {
namespace {

bool IsNamed(const KeptCopy& copy, const std::string& name) {
    return IsSameName(copy.name, name) ||
           (!copy.isWaiting && IsSameName(Utf8FromAnsi(copy.path), name));
}

KeptCopy Named(const std::vector<KeptCopy>& copies, const std::string& name) {
    const auto isNamed = [&](const KeptCopy& copy) { return IsNamed(copy, name); };
    const auto found = std::find_if(copies.begin(), copies.end(), isNamed);
    if (found == copies.end()) {
        Refuse("nothing is kept under the name \"" + name +
               "\"; \"depotctl recovered\" lists what there is");
    }
    if (std::find_if(std::next(found), copies.end(), isNamed) != copies.end()) {
        Refuse("more than one kept copy has the name \"" + name + "\"");
    }
    return *found;
}

}  // namespace

std::string Shown(const KeptCopy& copy) {
    return "\"" + copy.name + "\"";
}

std::string WhyKept(const KeptCopy& copy) {
    if (copy.isWaiting) return copy.hasDamagedRecord ? "damaged" : "waits for its server";
    if (copy.hasDamagedRecord) return "its record is damaged";
    if (!copy.origin) return {};
    const OriginRecord& origin = *copy.origin;
    if (origin.code == kContentsChanged) return "someone else had stored another version";
    if (!origin.reason.empty()) return OneLine(origin.reason);
    return origin.code != 0 ? WordsFor(origin.code).text : std::string();
}

std::vector<KeptCopy> AllKeptCopies(const Program& program) {
    KeptCopies kept = FindKeptCopies();
    if (kept.unsafeNames > 0) program.ReportLeftOut(kept.unsafeNames);
    return std::move(kept.copies);
}

std::vector<KeptCopy> RequireKeptCopies(const Program& program,
                                        const std::vector<std::string>& names) {
    const std::vector<KeptCopy> copies = AllKeptCopies(program);
    std::vector<KeptCopy> wanted;
    for (const std::string& name : names) {
        KeptCopy copy = Named(copies, name);
        const bool isNew = std::none_of(wanted.begin(), wanted.end(), [&](const KeptCopy& other) {
            return other.path == copy.path;
        });
        if (isNew) wanted.push_back(std::move(copy));
    }
    return wanted;
}

KeptCopy RequireKeptCopy(const Program& program, const std::string& name) {
    return RequireKeptCopies(program, {name}).front();
}

KeptBytes BytesOf(const KeptCopy& copy) {
    KeptBytes bytes;
    const Result read = ReadKept(copy, bytes);
    if (!read) Refuse("cannot read " + Shown(copy) + ": " + SystemWords(read.Why().code));
    return bytes;
}

std::string WhyNotDeleted(const KeptCopy& copy, const Error& why) {
    if (why.reason == Reason::kChanged) return Shown(copy) + " was changed meanwhile and stays";
    return "cannot delete " + Shown(copy) + ": " +
           (why.code == kBeingStored ? "it is just being stored" : SystemWords(why.code));
}

}  // namespace depot::ctl
