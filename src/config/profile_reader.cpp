#include "config/profile_reader.h"

#include "platform/file_in_use.h"
#include "platform/local_file.h"
#include "platform/replace_file.h"
#include "platform/temp_file.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

// The longest value, and a list of sections or keys, that is asked for.
constexpr DWORD kLongestAnswer = 65535;
// The system counts the bytes of each text in 16 bits, two a unit.
constexpr std::size_t kLongestText = 32766;
// What no profile holds as a value.
constexpr wchar_t kAbsent[] = L"\x01\x02";
constexpr ProfileEncoding kCopyEncoding = {kUtf16, 2};
constexpr char kCopyMark[] = "\xFF\xFE";

bool IsSameText(const std::string& left, const std::string& right) {
    return CompareStringOrdinal(WideFromUtf8(left).c_str(), -1, WideFromUtf8(right).c_str(), -1,
                                TRUE) == CSTR_EQUAL;
}

}  // namespace

bool FitsProfiles(std::wstring_view text) {
    return text.size() <= kLongestText;
}

ProfileReader::ProfileReader(const ProfileEncoding& encoding, std::string_view bytes)
    : encoding_(encoding), path_(MakeTempFileName()) {
    if (path_.empty()) {
        failure_ = GetLastError();
        return;
    }
    const std::optional<std::string> text =
        ProfileBytes(kCopyEncoding, ProfileText(encoding_, bytes));
    const std::string copied = kCopyMark + text.value_or("");
    if (!WriteOverLocalFile(path_, copied.data(), copied.size())) failure_ = GetLastError();
}

ProfileReader::~ProfileReader() {
    DeleteOwnFile(path_);
}

std::vector<std::wstring> ProfileReader::Names(const wchar_t* section) const {
    std::wstring list(kLongestAnswer, L'\0');
    const DWORD length = GetPrivateProfileStringW(section, nullptr, L"", list.data(),
                                                  kLongestAnswer, WideFromAnsi(path_).c_str());
    std::vector<std::wstring> names;
    for (std::size_t at = 0; at < length; at += names.back().size() + 1) {
        names.emplace_back(list.c_str() + at);
    }
    return names;
}

std::string ProfileReader::Shown(const std::wstring& text) const {
    return ShownProfileText(encoding_, text);
}

std::wstring ProfileReader::Spelled(const std::string& wanted, const wchar_t* section) const {
    for (const std::wstring& name : Names(section)) {
        if (IsSameText(Shown(name), wanted)) return name;
    }
    return WideFromUtf8(wanted);
}

std::vector<ProfileRow> ProfileReader::Rows(const std::string& only) const {
    const std::vector<std::wstring> sections =
        only.empty() ? Names(nullptr) : std::vector{Spelled(only, nullptr)};
    std::vector<ProfileRow> rows;
    for (const std::wstring& section : sections) {
        for (const std::wstring& key : Names(section.c_str())) {
            rows.push_back({only.empty() ? Shown(section) : only, Shown(key),
                            Shown(Value(section, key).value_or(L""))});
        }
    }
    return rows;
}

std::optional<std::wstring> ProfileReader::Value(const std::wstring& section,
                                                 const std::wstring& key) const {
    if (!FitsProfiles(section) || !FitsProfiles(key)) return std::nullopt;
    std::wstring value(kLongestAnswer, L'\0');
    value.resize(GetPrivateProfileStringW(section.c_str(), key.c_str(), kAbsent, value.data(),
                                          kLongestAnswer, WideFromAnsi(path_).c_str()));
    return value == kAbsent ? std::nullopt : std::optional(std::move(value));
}

std::optional<std::wstring> ProfileReader::Text() const {
    const auto bytes = ReadLocalFile(path_);
    const std::string text = bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
    if (!text.starts_with(kCopyMark)) return std::nullopt;
    return ProfileText(kCopyEncoding, text);
}

}  // namespace depot
