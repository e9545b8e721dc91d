#include "depotctl/profile_copy.h"

#include <algorithm>
#include <utility>

#include "config/profile_text.h"
#include "config/profile_value.h"
#include "depotctl/encoding.h"
#include "depotctl/failure.h"
#include "model/recovered_files.h"
#include "platform/file_in_use.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/replace_file.h"
#include "platform/temp_file.h"
#include "platform/wide_text.h"

namespace depot::ctl {
namespace {

// The longest value, and a list of sections or keys, that is asked for.
constexpr DWORD kLongestAnswer = 65535;
// The system counts the bytes of each text in 16 bits, two a unit.
constexpr std::size_t kLongestText = 32766;
// What no profile holds as a value.
constexpr wchar_t kAbsent[] = L"\x01\x02";
constexpr ProfileEncoding kCopyEncoding = {kUtf16, 2};
constexpr char kCopyMark[] = "\xFF\xFE";

std::string BytesOf(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

bool Holds(HANDLE file, const std::string& bytes) {
    const auto held = ReadOpenFile(file);
    return held && std::equal(held->begin(), held->end(), bytes.begin(), bytes.end(),
                              [](std::uint8_t a, char b) { return a == static_cast<BYTE>(b); });
}

UniqueHandle OpenForWriting(const std::string& path) {
    UniqueHandle file;
    RetryWhileInUse(FileUse::kShared, [&] {
        file = OwnFile(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                                   nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        return file != nullptr;
    });
    return file;
}

bool Fits(std::wstring_view text) {
    return text.size() <= kLongestText;
}

}  // namespace

ProfileCopy::ProfileCopy(const Place& place, std::string path, unsigned codePage)
    : place_(place), path_(std::move(path)) {
    const auto bytes = ReadLocalFile(path_);
    if (!bytes) Fail("read", place_, GetLastError());
    original_ = BytesOf(*bytes);
    const std::optional<ProfileEncoding> encoding = EncodingOf(original_, codePage);
    if (!encoding) Refuse(place_.Shown() + " is no text that applications read as a profile");
    encoding_ = *encoding;
    const std::optional<std::string> text =
        ProfileBytes(kCopyEncoding, ProfileText(encoding_, original_));
    const std::string copied = kCopyMark + text.value_or("");
    copy_ = MakeTempFileName();
    if (!copy_.empty() && WriteOverLocalFile(copy_, copied.data(), copied.size())) return;
    const DWORD error = GetLastError();
    DeleteFileA(copy_.c_str());
    Fail("copy", place_, error);
}

ProfileCopy::~ProfileCopy() {
    DeleteOwnFile(copy_);
}

std::vector<std::wstring> ProfileCopy::Names(const wchar_t* section) const {
    std::wstring list(kLongestAnswer, L'\0');
    const DWORD length = GetPrivateProfileStringW(section, nullptr, L"", list.data(),
                                                  kLongestAnswer, WideFromAnsi(copy_).c_str());
    std::vector<std::wstring> names;
    for (std::size_t at = 0; at < length; at += names.back().size() + 1) {
        names.emplace_back(list.c_str() + at);
    }
    return names;
}

std::string ProfileCopy::Shown(const std::wstring& text) const {
    return ShownProfileText(encoding_, text);
}

std::wstring ProfileCopy::Spelled(const std::string& wanted, const wchar_t* section) const {
    for (const std::wstring& name : Names(section)) {
        if (SameKey(Shown(name), wanted)) return name;
    }
    return WideFromUtf8(wanted);
}

std::vector<ProfileRow> ProfileCopy::Rows(const std::string& only) const {
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

std::optional<std::wstring> ProfileCopy::Value(const std::wstring& section,
                                               const std::wstring& key) const {
    if (!Fits(section) || !Fits(key)) return std::nullopt;
    std::wstring value(kLongestAnswer, L'\0');
    value.resize(GetPrivateProfileStringW(section.c_str(), key.c_str(), kAbsent, value.data(),
                                          kLongestAnswer, WideFromAnsi(copy_).c_str()));
    return value == kAbsent ? std::nullopt : std::optional(std::move(value));
}

std::optional<std::string> ProfileCopy::Find(const std::string& section,
                                             const std::string& key) const {
    const std::wstring spelled = Spelled(section, nullptr);
    const auto value = Value(spelled, Spelled(key, spelled.c_str()));
    return value ? std::optional(Shown(*value)) : std::nullopt;
}

void ProfileCopy::RequireCharacters(const std::string& text) const {
    const std::wstring wide = WideFromUtf8(text);
    if (!Fits(wide)) Fail("write", place_, ERROR_BUFFER_OVERFLOW);
    if (ProfileBytes(encoding_, wide)) return;
    Refuse("\"" + text + "\" has characters that code page " + std::to_string(encoding_.codePage) +
           ", in which " + place_.Shown() + " is written, does not have");
}

std::wstring ProfileCopy::Text() const {
    const auto bytes = ReadLocalFile(copy_);
    const std::string text = bytes ? BytesOf(*bytes) : std::string();
    if (!text.starts_with(kCopyMark)) Fail("write", place_, ERROR_WRITE_FAULT);
    return ProfileText(kCopyEncoding, text);
}

void ProfileCopy::Write(const std::string& section, const std::string& key,
                        const std::string& value) {
    const std::string quoted = QuoteProfileValue(value);
    for (const std::string& text : {section, key, quoted}) RequireCharacters(text);
    const std::wstring before = Text(), wide = WideFromUtf8(value), given = WideFromUtf8(quoted);
    const std::wstring sectionName = Spelled(section, nullptr);
    const std::wstring keyName = Spelled(key, sectionName.c_str());
    if (!WritePrivateProfileStringW(sectionName.c_str(), keyName.c_str(),
                                    value.empty() ? nullptr : given.c_str(),
                                    WideFromAnsi(copy_).c_str())) {
        const DWORD error = GetLastError();
        // There was nothing to remove.
        if (error != ERROR_FILE_NOT_FOUND || !value.empty()) Fail("write", place_, error);
    }
    // A full disk may cut the copy without a word.
    if (LacksLines(Utf8FromWide(before), Utf8FromWide(Text()), Utf8FromWide(keyName))) {
        Fail("write", place_, ERROR_DISK_FULL);
    }
    const std::optional<std::wstring> written = Value(sectionName, keyName);
    if (value.empty() ? written.has_value() : written != wide) {
        Fail("write", place_, 0, "the value would not read back as it is");
    }
}

void ProfileCopy::Store() const {
    const std::optional<std::string> text = ProfileBytes(encoding_, Text());
    if (!text) {
        Refuse(place_.Shown() + " is written in code page " + std::to_string(encoding_.codePage) +
               ", which does not have all characters of its new values");
    }
    const std::string bytes = original_.substr(0, encoding_.markBytes) + *text;
    const UniqueHandle profile = OpenForWriting(path_);
    if (!profile) Fail("write", place_, GetLastError());
    if (!Holds(profile.get(), original_)) {
        Refuse(place_.Shown() + " was changed by another program meanwhile");
    }
    if (WriteOverOpenFile(profile.get(), bytes.data(), bytes.size())) return;
    KeepAndFail(profile.get(), GetLastError());
}

void ProfileCopy::KeepAndFail(HANDLE profile, DWORD error) const {
    if (Holds(profile, original_)) Fail("write", place_, error);
    const std::string kept = KeepRecovered(NamePart(path_), original_.data(), original_.size());
    Fail("write", place_, 0,
         kept.empty() ? "it lost what it held" : "it lost what it held, which is kept in " + kept);
}

}  // namespace depot::ctl
