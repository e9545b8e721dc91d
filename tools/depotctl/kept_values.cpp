#include "depotctl/kept_values.h"

#include <map>
#include <utility>

#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "depotctl/profile_copy.h"
#include "depotctl/profile_encoding.h"
#include "platform/file_in_use.h"
#include "platform/replace_file.h"
#include "platform/system_code_page.h"
#include "platform/temp_file.h"
#include "platform/wide_text.h"
#include "platform/win32.h"

namespace depot::ctl {
namespace {

std::string_view TextOf(const KeptBytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A file of this object's own with the bytes of a version.
class VersionFile {
public:
    explicit VersionFile(const KeptBytes& bytes) : path_(MakeTempFileName()) {
        if (!path_.empty() && WriteOverLocalFile(path_, bytes.data(), bytes.size())) return;
        const DWORD error = GetLastError();
        DeleteOwnFile(path_);
        Refuse("cannot write a temporary file: " + SystemWords(error));
    }
    ~VersionFile() { DeleteOwnFile(path_); }
    VersionFile(const VersionFile&) = delete;
    VersionFile& operator=(const VersionFile&) = delete;

    const std::string& Path() const { return path_; }

private:
    const std::string path_;
};

bool IsProfile(const KeptBytes& bytes) {
    const auto encoding = EncodingOf(TextOf(bytes), 0);
    // No application writes a NUL into narrow text.
    return encoding &&
           (encoding->codePage == kUtf16 || TextOf(bytes).find('\0') == std::string_view::npos);
}

std::vector<ProfileRow> RowsOf(const std::optional<KeptBytes>& bytes) {
    if (!bytes) return {};
    const VersionFile file(*bytes);
    CDepot local(nullptr);
    const Place place = {&local, file.Path(), true};
    return ProfileCopy(place, file.Path(), 0).Rows({});
}

// Takes the values of the versions, one after another.
class ValueTable {
public:
    using Member = std::optional<std::string> KeptValue::*;

    void Take(const std::optional<KeptBytes>& version, Member member) {
        for (ProfileRow& row : RowsOf(version)) {
            const auto [at, isNew] = places_.emplace(NameOf(row), values_.size());
            if (isNew) values_.push_back({row.section, row.key, {}, {}, {}});
            std::optional<std::string>& value = values_[at->second].*member;
            // The first of several of a name is the one that is read.
            if (!value) value = std::move(row.value);
        }
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
class ProfileCharacters {
public:
    explicit ProfileCharacters(unsigned codePage) : before_(InstalledCodePage()) {
        InstallCodePage(DescribeSystemCodePage(codePage));
    }
    ~ProfileCharacters() { InstallCodePage(std::move(before_)); }
    ProfileCharacters(const ProfileCharacters&) = delete;
    ProfileCharacters& operator=(const ProfileCharacters&) = delete;

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

std::optional<std::vector<KeptValue>> DifferentValues(const KeptVersions& versions) {
    const bool areProfiles = IsProfile(versions.ours) &&
                             (!versions.base || IsProfile(*versions.base)) &&
                             (!versions.entry || IsProfile(*versions.entry));
    if (!areProfiles) return std::nullopt;
    ValueTable table;
    table.Take(versions.ours, &KeptValue::ours);
    table.Take(versions.entry, &KeptValue::entry);
    table.Take(versions.base, &KeptValue::base);
    return table.Different(versions.base.has_value(), versions.entry.has_value());
}

std::optional<ProfileMerge> MergeKept(const KeptVersions& versions, bool oursFirst) {
    if (!versions.base || !versions.entry) return std::nullopt;
    const unsigned codePage = CodePageOf(versions);
    std::string_view theirs = TextOf(*versions.entry), ours = TextOf(versions.ours);
    if (oursFirst) std::swap(theirs, ours);
    std::optional<ProfileMerge> merge;
    {
        const ProfileCharacters characters(codePage);
        merge = MergeProfiles({TextOf(*versions.base), theirs, ours});
    }
    if (!merge || merge->namesAreUtf8) return merge;
    for (MergeConflict& conflict : merge->conflicts) {
        conflict.section = Utf8FromWide(WideFromCodePage(codePage, conflict.section));
        conflict.key = Utf8FromWide(WideFromCodePage(codePage, conflict.key));
    }
    merge->namesAreUtf8 = true;
    return merge;
}

std::string ShownConflict(const MergeConflict& conflict) {
    return "[" + conflict.section + "] " +
           (conflict.key.empty() ? "(lines without a value)" : conflict.key);
}

}  // namespace depot::ctl
