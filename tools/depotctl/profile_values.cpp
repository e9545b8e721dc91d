#include "depotctl/profile_values.h"

#include "depotctl/failure.h"
#include "platform/file_in_use.h"
#include "platform/not_copied.h"
#include "platform/replace_file.h"
#include "platform/temp_file.h"
#include "platform/wide_text.h"

namespace depot::ctl {
namespace {

// A file of this object's own that holds the bytes of another one.
class FetchedFile : NotCopied {
public:
    explicit FetchedFile(const Place& place) : path_(MakeTempFileName()) {
        const OpenedPlace at(place, "read");
        FileBuffer file;
        const Result read = at.store.ReadFile(at.path, SourceFate::kStays, file);
        if (!read) {
            DeleteOwnFile(path_);
            Fail("read", place, read.Why());
        }
        if (!path_.empty() && WriteOverLocalFile(path_, file.bytes.get(), file.length)) return;
        const DWORD error = GetLastError();
        DeleteOwnFile(path_);
        Fail("copy", place, error);
    }
    ~FetchedFile() { DeleteOwnFile(path_); }

    const std::string& Path() const { return path_; }

private:
    const std::string path_;
};

// One spelling of all that the profile functions take for one section or key.
std::wstring Folded(const std::string& name) {
    std::wstring folded = WideFromUtf8(name);
    CharLowerBuffW(folded.data(), static_cast<DWORD>(folded.size()));
    return folded;
}

using ValueName = std::pair<std::wstring, std::wstring>;

ValueName NameOf(const ProfileRow& row) {
    return {Folded(row.section), Folded(row.key)};
}

// The first of several of a name is the one that is read.
std::map<ValueName, const ProfileRow*> ByName(const std::vector<ProfileRow>& rows) {
    std::map<ValueName, const ProfileRow*> byName;
    for (const ProfileRow& row : rows) byName.emplace(NameOf(row), &row);
    return byName;
}

}  // namespace

std::vector<ProfileRow> ValuesOf(const Place& place) {
    const FetchedFile file(place);
    return ProfileCopy(place, file.Path(), 0).Rows({});
}

std::vector<ValueDifference> CompareValues(const std::vector<ProfileRow>& first,
                                           const std::vector<ProfileRow>& second) {
    std::vector<ValueDifference> differences;
    const auto inFirst = ByName(first), inSecond = ByName(second);
    for (const ProfileRow& row : first) {
        const ValueName name = NameOf(row);
        if (inFirst.at(name) != &row) continue;
        const auto other = inSecond.find(name);
        if (other == inSecond.end()) {
            differences.push_back({row.section, row.key, row.value, {}});
        } else if (other->second->value != row.value) {
            differences.push_back({row.section, row.key, row.value, other->second->value});
        }
    }
    for (const ProfileRow& row : second) {
        const ValueName name = NameOf(row);
        if (inSecond.at(name) != &row || inFirst.count(name) > 0) continue;
        differences.push_back({row.section, row.key, {}, row.value});
    }
    return differences;
}

}  // namespace depot::ctl
