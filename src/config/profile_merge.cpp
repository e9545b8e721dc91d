#include "config/profile_merge.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>

#include "config/profile_lines.h"

namespace depot {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

enum class Encoding : std::uint8_t { kNarrow, kMarkedUtf8, kUtf16 };

Encoding EncodingOf(std::string_view bytes) {
    if (bytes.starts_with(kUtf16Mark)) return Encoding::kUtf16;
    return bytes.starts_with(kUtf8Mark) ? Encoding::kMarkedUtf8 : Encoding::kNarrow;
}

// Units of UTF-16 as one to three bytes each, so that every text comes back as it was: a surrogate
// is a unit like any other.
std::string FromUtf16(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        const unsigned unit = static_cast<unsigned char>(bytes[at]) |
                              static_cast<unsigned>(static_cast<unsigned char>(bytes[at + 1])) << 8;
        if (unit < 0x80) {
            text += static_cast<char>(unit);
        } else if (unit < 0x800) {
            text += static_cast<char>(0xC0 | unit >> 6);
            text += static_cast<char>(0x80 | (unit & 0x3F));
        } else {
            text += static_cast<char>(0xE0 | unit >> 12);
            text += static_cast<char>(0x80 | (unit >> 6 & 0x3F));
            text += static_cast<char>(0x80 | (unit & 0x3F));
        }
    }
    return text;
}

// REQUIRES: whole characters as FromUtf16 makes them.
std::string ToUtf16(std::string_view text) {
    std::string bytes(kUtf16Mark);
    bytes.reserve(2 * text.size() + 2);
    for (std::size_t at = 0; at < text.size();) {
        const auto byte = [&](std::size_t next) {
            return static_cast<unsigned>(static_cast<unsigned char>(text[at + next]));
        };
        unsigned unit = byte(0);
        const std::size_t length = unit < 0x80 ? 1 : unit < 0xE0 ? 2 : 3;
        if (length == 2) unit = (unit & 0x1F) << 6 | (byte(1) & 0x3F);
        if (length == 3) unit = (unit & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
        at += length;
    }
    return bytes;
}

// Surrogates as the one character that they stand for, for people to read.
std::string WithPairsJoined(std::string_view text) {
    std::string joined;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = [&](std::size_t next) {
            return static_cast<unsigned>(static_cast<unsigned char>(text[at + next]));
        };
        const bool isPair = text.size() - at >= 6 && byte(0) == 0xED && byte(1) >= 0xA0 &&
                            byte(1) < 0xB0 && byte(3) == 0xED && byte(4) >= 0xB0;
        if (!isPair) {
            joined += text[at];
            continue;
        }
        const unsigned high = (byte(1) & 0x0F) << 6 | (byte(2) & 0x3F);
        const unsigned low = (byte(4) & 0x0F) << 6 | (byte(5) & 0x3F);
        const unsigned code = 0x10000 + (high << 10 | low);
        joined += static_cast<char>(0xF0 | code >> 18);
        joined += static_cast<char>(0x80 | (code >> 12 & 0x3F));
        joined += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        joined += static_cast<char>(0x80 | (code & 0x3F));
        at += 5;
    }
    return joined;
}

// One version and where in it things are.
struct Version {
    std::vector<ProfileLine> lines;
    std::unordered_map<std::uint32_t, std::size_t> places;  // of headers and values by their ids
    std::unordered_map<std::uint32_t, int> others;          // how often a section has a line

    explicit Version(std::vector<ProfileLine> read) : lines(std::move(read)) {
        places.reserve(lines.size());
        for (std::size_t index = 0; index < lines.size(); ++index) {
            if (IsPlaced(lines[index])) places.emplace(lines[index].id, index);
            if (lines[index].kind == LineKind::kOther) ++others[lines[index].id];
        }
    }

    static bool IsPlaced(const ProfileLine& line) {
        return line.kind == LineKind::kHeader || line.kind == LineKind::kValue;
    }
    bool Has(std::uint32_t id) const { return places.contains(id); }
    const ProfileLine* Find(std::uint32_t id) const {
        const auto found = places.find(id);
        return found == places.end() ? nullptr : &lines[found->second];
    }
    int OthersOf(std::uint32_t id) const {
        const auto found = others.find(id);
        return found == others.end() ? 0 : found->second;
    }
};

// Whether both hold the same there, nothing being the same as nothing.
bool AreSame(const ProfileLine* left, const ProfileLine* right) {
    if (left == nullptr || right == nullptr) return left == right;
    return left->value == right->value;
}

class Merge {
public:
    Merge(const Version& base, const Version& theirs, const Version& ours, MergeWinner winner)
        : base_(base),
          theirs_(theirs),
          ours_(ours),
          oursWins_(winner == MergeWinner::kOurs),
          changed_(theirs.lines.size()),
          values_(theirs.lines.size() + 1),
          sections_(theirs.lines.size() + 1) {}

    ProfileMerge Run() {
        FindSectionEnds();
        TakeAdditionsAndChanges();
        TakeDeletions();
        DropEmptiedSections();
        FindLostOthers();
        return {Written(), std::move(conflicts_), false};
    }

private:
    struct Change {
        bool isDropped = false;
        const ProfileLine* replacement = nullptr;
    };

    void FindSectionEnds() {
        for (std::size_t index = 0; index < theirs_.lines.size(); ++index) {
            const ProfileLine& line = theirs_.lines[index];
            sectionEnds_[line.section] = index + 1;
        }
    }

    void TakeAdditionsAndChanges() {
        std::size_t place = 0;  // behind which line of theirs, counted from 1
        std::uint32_t section = 0;
        bool isNew = false;  // the section, to theirs and to the base
        for (const ProfileLine& line : ours_.lines) {
            if (line.section != section) {
                TakeComments(place);
                section = line.section;
                isNew = !theirs_.Has(section) && !base_.Has(section);
                place = PlaceOfSection(section, place);
            }
            if (Version::IsPlaced(line)) {
                TakeValue(line, place);
            } else if (isNew) {
                sections_[place].push_back(&line);
            } else if (oursWins_ && IsAddedComment(line)) {
                comments_.push_back(&line);
            }
        }
        TakeComments(place);
    }

    // Whether ours added it, a line that is no value included, and theirs lacks it.
    bool IsAddedComment(const ProfileLine& line) {
        if (line.kind != LineKind::kOther) return false;
        const int known = std::max(base_.OthersOf(line.id), theirs_.OthersOf(line.id));
        return ++seen_[line.id] > known;
    }

    void TakeComments(std::size_t place) {
        for (const ProfileLine* comment : comments_) Insert(*comment, place);
        comments_.clear();
    }

    // Where a section's lines begin; one that theirs lacks follows the one before it.
    std::size_t PlaceOfSection(std::uint32_t section, std::size_t before) const {
        const auto header = theirs_.places.find(section);
        if (header != theirs_.places.end()) return header->second + 1;
        if (before == 0) return theirs_.lines.size();
        const auto end = sectionEnds_.find(theirs_.lines[before - 1].section);
        return end->second;
    }

    void TakeValue(const ProfileLine& line, std::size_t& place) {
        const ProfileLine* const base = base_.Find(line.id);
        const auto found = theirs_.places.find(line.id);
        const ProfileLine* const theirs =
            found == theirs_.places.end() ? nullptr : &theirs_.lines[found->second];
        if (theirs != nullptr && line.kind == LineKind::kValue) {
            TakeComments(found->second);
            place = found->second + 1;
        }
        if (AreSame(base, &line) || AreSame(theirs, &line)) return;
        const bool isConflict = !AreSame(base, theirs);
        if (isConflict) conflicts_.push_back(ConflictOf(ours_, line));
        if (isConflict && !oursWins_) return;
        TakeComments(place);
        if (theirs != nullptr) {
            changed_[found->second].replacement = &line;
        } else {
            Insert(line, place);
        }
    }

    void Insert(const ProfileLine& line, std::size_t place) {
        if (line.section == 0 || theirs_.Has(line.section)) {
            values_[place].push_back(&line);
            return;
        }
        // Theirs may have deleted a section meanwhile that ours has a new value in.
        const bool isFirst = inserted_.insert(line.section).second;
        if (isFirst && line.kind != LineKind::kHeader) {
            sections_[place].push_back(ours_.Find(line.section));
        }
        sections_[place].push_back(&line);
    }

    void TakeDeletions() {
        for (const ProfileLine& line : base_.lines) {
            if (!Version::IsPlaced(line) || ours_.Has(line.id)) continue;
            const auto found = theirs_.places.find(line.id);
            if (found == theirs_.places.end()) continue;
            if (line.kind == LineKind::kHeader) {
                deletedSections_.insert(line.id);
                continue;
            }
            const bool isConflict = !AreSame(&line, &theirs_.lines[found->second]);
            if (isConflict) conflicts_.push_back(ConflictOf(base_, line));
            if (!isConflict || oursWins_) changed_[found->second].isDropped = true;
        }
    }

    // A section that ours deleted stays where theirs has values of its own in it, or lines that are
    // neither values nor comments: before the first section they would make the rest no profile.
    // What else stood in it when both began is deleted with it.
    void DropEmptiedSections() {
        if (deletedSections_.empty()) return;
        std::unordered_set<std::uint32_t> kept;
        for (std::size_t index = 0; index < theirs_.lines.size(); ++index) {
            const ProfileLine& line = theirs_.lines[index];
            const bool isStray =
                line.kind == LineKind::kOther && !IsComment(line) && base_.OthersOf(line.id) == 0;
            if (isStray || (line.kind == LineKind::kValue && !changed_[index].isDropped)) {
                kept.insert(line.section);
            }
        }
        for (std::size_t index = 0; index < theirs_.lines.size(); ++index) {
            const ProfileLine& line = theirs_.lines[index];
            if (!deletedSections_.contains(line.section) || kept.contains(line.section)) continue;
            const bool isOwn = line.kind == LineKind::kOther && base_.OthersOf(line.id) == 0;
            if (!isOwn) changed_[index].isDropped = true;
        }
    }

    static bool IsComment(const ProfileLine& line) {
        const std::size_t first = line.text.find_first_not_of(" \t");
        return first != std::string_view::npos && line.text[first] == ';';
    }

    // Comments, and lines that are no values, are theirs. A section in which ours has others than
    // the base, and than theirs, is named.
    void FindLostOthers() {
        std::unordered_set<std::uint32_t> named;
        const auto look = [&](const Version& version) {
            for (const ProfileLine& line : version.lines) {
                if (line.kind != LineKind::kOther || IsWhollyOurs(line.section)) continue;
                const int ours = ours_.OthersOf(line.id);
                if (ours == base_.OthersOf(line.id) || ours == theirs_.OthersOf(line.id)) continue;
                if (!named.insert(line.section).second) continue;
                const ProfileLine* const header = version.Find(line.section);
                conflicts_.push_back({header ? std::string(header->name) : std::string(), {}});
            }
        };
        look(ours_);
        look(base_);
    }

    // Whether all that ours has in a section, or that it has none of it, is in the result.
    bool IsWhollyOurs(std::uint32_t section) const {
        if (section == 0) return false;
        const bool isNew = !base_.Has(section) && !theirs_.Has(section);
        return isNew || deletedSections_.contains(section) || !ours_.Has(section);
    }

    static MergeConflict ConflictOf(const Version& version, const ProfileLine& line) {
        const ProfileLine* const header = version.Find(line.section);
        return {header ? std::string(header->name) : std::string(),
                line.kind == LineKind::kValue ? std::string(line.name) : std::string()};
    }

    std::string LineEnd() const {
        for (const Version* version : {&theirs_, &ours_}) {
            if (version->lines.empty()) continue;
            const std::string_view end = LineEndOf(version->lines.front().text);
            if (!end.empty()) return std::string(end);
        }
        return "\r\n";
    }

    std::string Written() const {
        std::string text;
        const std::string lineEnd = LineEnd();
        const auto append = [&](std::string_view line) {
            if (!text.empty() && text.back() != '\n') text += lineEnd;
            text += line;
        };
        // What was added ends as the lines around it do, whatever ended it in ours.
        const auto appendOurs = [&](const ProfileLine& line) {
            append(line.text.substr(0, line.text.size() - LineEndOf(line.text).size()));
            text += lineEnd;
        };
        const auto appendAdded = [&](std::size_t place) {
            for (const ProfileLine* line : values_[place]) appendOurs(*line);
            for (const ProfileLine* line : sections_[place]) appendOurs(*line);
        };
        appendAdded(0);
        for (std::size_t index = 0; index < theirs_.lines.size(); ++index) {
            const Change& change = changed_[index];
            const ProfileLine& line = theirs_.lines[index];
            if (change.replacement != nullptr) {
                const std::string_view ours = change.replacement->text;
                append(ours.substr(0, ours.size() - LineEndOf(ours).size()));
                text += LineEndOf(line.text);
            } else if (!change.isDropped) {
                append(line.text);
            }
            appendAdded(index + 1);
        }
        return text;
    }

    const Version& base_;
    const Version& theirs_;
    const Version& ours_;
    const bool oursWins_;
    std::vector<const ProfileLine*> comments_;     // of ours, on their way to the next value
    std::unordered_map<std::uint32_t, int> seen_;  // how often ours had a line up to here
    std::vector<Change> changed_;                  // of each line of theirs
    // What the lines of theirs are followed by, counted from the first one's front: values of the
    // section that they are in, and then other sections.
    std::vector<std::vector<const ProfileLine*>> values_, sections_;
    std::unordered_map<std::uint32_t, std::size_t> sectionEnds_;  // behind their last lines
    std::unordered_set<std::uint32_t> inserted_;                  // headers
    std::unordered_set<std::uint32_t> deletedSections_;           // by ours
    std::vector<MergeConflict> conflicts_;
};

struct Texts {
    std::string base, theirs, ours;
};

std::optional<ProfileMerge> MergeTexts(const ProfileVersions& versions, MergeWinner winner,
                                       LetterCase letters) {
    NameTable names;
    auto base = ReadProfileLines(versions.base, letters, names);
    if (!base) return std::nullopt;
    auto theirs = ReadProfileLines(versions.theirs, letters, names);
    if (!theirs) return std::nullopt;
    auto ours = ReadProfileLines(versions.ours, letters, names);
    if (!ours) return std::nullopt;
    return Merge(Version(std::move(*base)), Version(std::move(*theirs)), Version(std::move(*ours)),
                 winner)
        .Run();
}

std::optional<ProfileMerge> MergeUtf16(const ProfileVersions& versions, MergeWinner winner) {
    for (const std::string_view bytes : {versions.base, versions.theirs, versions.ours}) {
        if (bytes.size() % 2 != 0) return std::nullopt;
    }
    const auto text = [](std::string_view bytes) {
        return FromUtf16(bytes.substr(kUtf16Mark.size()));
    };
    const Texts texts = {text(versions.base), text(versions.theirs), text(versions.ours)};
    auto merged = MergeTexts({texts.base, texts.theirs, texts.ours}, winner, LetterCase::kOfAscii);
    if (!merged) return merged;
    merged->bytes = ToUtf16(merged->bytes);
    merged->namesAreUtf8 = true;
    for (MergeConflict& conflict : merged->conflicts) {
        conflict = {WithPairsJoined(conflict.section), WithPairsJoined(conflict.key)};
    }
    return merged;
}

std::optional<ProfileMerge> MergeMarkedUtf8(const ProfileVersions& versions, MergeWinner winner) {
    const std::size_t mark = kUtf8Mark.size();
    auto merged = MergeTexts(
        {versions.base.substr(mark), versions.theirs.substr(mark), versions.ours.substr(mark)},
        winner, LetterCase::kOfAscii);
    if (!merged) return merged;
    merged->bytes.insert(0, kUtf8Mark);
    merged->namesAreUtf8 = true;
    return merged;
}

}  // namespace

std::optional<ProfileMerge> MergeProfiles(const ProfileVersions& versions, MergeWinner winner) {
    const bool oursIsAll = versions.theirs == versions.base;
    if (oursIsAll) return ProfileMerge{std::string(versions.ours), {}, false};
    if (versions.ours == versions.base || versions.ours == versions.theirs) {
        return ProfileMerge{std::string(versions.theirs), {}, false};
    }
    const Encoding encoding = EncodingOf(versions.base);
    if (EncodingOf(versions.theirs) != encoding || EncodingOf(versions.ours) != encoding) {
        return std::nullopt;
    }
    if (encoding == Encoding::kUtf16) return MergeUtf16(versions, winner);
    if (encoding == Encoding::kMarkedUtf8) return MergeMarkedUtf8(versions, winner);
    return MergeTexts(versions, winner, LetterCase::kOfCodePage);
}

}  // namespace depot
