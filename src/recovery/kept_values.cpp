#include "recovery/kept_values.h"

#include <map>
#include <utility>

#include "config/profile_encoding.h"
#include "config/profile_reader.h"
#include "platform/not_copied.h"
#include "platform/system_code_page.h"
#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot {
namespace {

std::string_view TextOf(const KeptBytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool IsProfile(const KeptBytes& bytes) {
    const auto encoding = EncodingOf(TextOf(bytes), 0);
    // No application writes a NUL into narrow text.
    return encoding &&
           (encoding->codePage == kUtf16 || TextOf(bytes).find('\0') == std::string_view::npos);
}

// Takes the values of the versions, one after another.
class ValueTable {
public:
    using Member = std::optional<std::string> KeptValue::*;

    // Takes those of a profile; nothing has none.
    Result Take(const std::optional<KeptBytes>& version, Member member) {
        if (!version) return {};
        const std::string_view text = TextOf(*version);
        const ProfileReader reader(EncodingOf(text, 0).value(), text);
        if (reader.Failure() != 0) {
            return Error(Reason::kRefused, CodeKind::kSystem, reader.Failure());
        }
        for (ProfileRow& row : reader.Rows({})) {
            const auto [at, isNew] = places_.emplace(NameOf(row), values_.size());
            if (isNew) values_.push_back({row.section, row.key, {}, {}, {}});
            std::optional<std::string>& value = values_[at->second].*member;
            // The first of several of a name is the one that is read.
            if (!value) value = std::move(row.value);
        }
        return {};
    }

    std::vector<KeptValue> Different(bool hasBase, bool hasEntry) {
        std::erase_if(values_, [&](const KeptValue& value) {
            return (!hasBase || value.base == value.ours) &&
                   (!hasEntry || value.entry == value.ours);
        });
        return std::move(values_);
    }

private:
    using Name = std::pair<std::wstring, std::wstring>;

    static std::wstring Folded(const std::string& name) {
        std::wstring folded = WideFromUtf8(name);
        CharLowerBuffW(folded.data(), static_cast<DWORD>(folded.size()));
        return folded;
    }
    static Name NameOf(const ProfileRow& row) { return {Folded(row.section), Folded(row.key)}; }

    std::map<Name, std::size_t> places_;
    std::vector<KeptValue> values_;
};

// Narrow texts have the characters of profiles as long as this object lives.
class ProfileCharacters : NotCopied {
public:
    explicit ProfileCharacters(unsigned codePage) : before_(InstalledCodePage()) {
        InstallCodePage(DescribeSystemCodePage(codePage));
    }
    ~ProfileCharacters() { InstallCodePage(std::move(before_)); }

private:
    CodePage before_;
};

// The one code page of narrow versions: that of the machine, unless all of them are UTF-8.
unsigned CodePageOf(const KeptVersions& versions) {
    for (const KeptBytes* const bytes : {&*versions.base, &*versions.entry, &versions.ours}) {
        const auto encoding = EncodingOf(TextOf(*bytes), 0);
        if (encoding && encoding->codePage != CP_UTF8 && encoding->codePage != kUtf16) {
            return encoding->codePage;
        }
    }
    return CP_UTF8;
}

}  // namespace

Result DifferentValues(const KeptVersions& versions,
                       std::optional<std::vector<KeptValue>>& values) {
    values.reset();
    const bool areProfiles = IsProfile(versions.ours) &&
                             (!versions.base || IsProfile(*versions.base)) &&
                             (!versions.entry || IsProfile(*versions.entry));
    if (!areProfiles) return {};
    ValueTable table;
    Result taken = table.Take(versions.ours, &KeptValue::ours);
    if (taken) taken = table.Take(versions.entry, &KeptValue::entry);
    if (taken) taken = table.Take(versions.base, &KeptValue::base);
    if (!taken) return taken;
    values = table.Different(versions.base.has_value(), versions.entry.has_value());
    return {};
}

std::optional<ProfileMerge> MergeKept(const KeptVersions& versions, MergeWinner winner,
                                      MergeCharacters characters) {
    if (!versions.base || !versions.entry) return std::nullopt;
    const bool isOwn = characters == MergeCharacters::kOfProcess;
    const unsigned codePage = isOwn ? GetACP() : CodePageOf(versions);
    std::optional<ProfileMerge> merge;
    {
        std::optional<ProfileCharacters> installed;
        if (!isOwn) installed.emplace(codePage);
        merge = MergeProfiles(
            {TextOf(*versions.base), TextOf(*versions.entry), TextOf(versions.ours)}, winner);
    }
    if (!merge || merge->namesAreUtf8) return merge;
    for (MergeConflict& conflict : merge->conflicts) {
        conflict.section = Utf8FromWide(WideFromCodePage(codePage, conflict.section));
        conflict.key = Utf8FromWide(WideFromCodePage(codePage, conflict.key));
    }
    merge->namesAreUtf8 = true;
    return merge;
}

}  // namespace depot
