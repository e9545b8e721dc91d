#include "depotctl/profile_copy.h"

#include <algorithm>
#include <utility>

#include "config/profile_text.h"
#include "config/profile_value.h"
#include "depotctl/failure.h"
#include "model/recovered_files.h"
#include "platform/file_in_use.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/replace_file.h"
#include "platform/wide_text.h"

namespace depot::ctl {
namespace {

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

std::string BytesOfProfile(const Place& place, const std::string& path) {
    const auto bytes = ReadLocalFile(path);
    if (!bytes) Fail("read", place, GetLastError());
    return BytesOf(*bytes);
}

ProfileEncoding RequireEncoding(const Place& place, const std::string& bytes, unsigned codePage) {
    const std::optional<ProfileEncoding> encoding = EncodingOf(bytes, codePage);
    if (!encoding) Refuse(place.Shown() + " is no text that applications read as a profile");
    return *encoding;
}

}  // namespace

ProfileCopy::ProfileCopy(const Place& place, std::string path, unsigned codePage)
    : place_(place),
      path_(std::move(path)),
      original_(BytesOfProfile(place_, path_)),
      encoding_(RequireEncoding(place_, original_, codePage)),
      copy_(encoding_, original_) {
    if (copy_.Failure() != 0) Fail("copy", place_, copy_.Failure());
}

std::optional<std::string> ProfileCopy::Find(const std::string& section,
                                             const std::string& key) const {
    const std::wstring spelled = copy_.Spelled(section, nullptr);
    const auto value = copy_.Value(spelled, copy_.Spelled(key, spelled.c_str()));
    return value ? std::optional(copy_.Shown(*value)) : std::nullopt;
}

void ProfileCopy::RequireCharacters(const std::string& text) const {
    const std::wstring wide = WideFromUtf8(text);
    if (!FitsProfiles(wide)) Fail("write", place_, ERROR_BUFFER_OVERFLOW);
    if (ProfileBytes(encoding_, wide)) return;
    Refuse("\"" + text + "\" has characters that code page " + std::to_string(encoding_.codePage) +
           ", in which " + place_.Shown() + " is written, does not have");
}

std::wstring ProfileCopy::Text() const {
    auto text = copy_.Text();
    if (!text) Fail("write", place_, ERROR_WRITE_FAULT);
    return *std::move(text);
}

void ProfileCopy::Write(const std::string& section, const std::string& key,
                        const std::string& value) {
    const std::string quoted = QuoteProfileValue(value);
    for (const std::string& text : {section, key, quoted}) RequireCharacters(text);
    const std::wstring before = Text(), wide = WideFromUtf8(value), given = WideFromUtf8(quoted);
    const std::wstring sectionName = copy_.Spelled(section, nullptr);
    const std::wstring keyName = copy_.Spelled(key, sectionName.c_str());
    if (!WritePrivateProfileStringW(sectionName.c_str(), keyName.c_str(),
                                    value.empty() ? nullptr : given.c_str(),
                                    WideFromAnsi(copy_.Path()).c_str())) {
        const DWORD error = GetLastError();
        // There was nothing to remove.
        if (error != ERROR_FILE_NOT_FOUND || !value.empty()) Fail("write", place_, error);
    }
    // A full disk may cut the copy without a word.
    if (LacksLines(Utf8FromWide(before), Utf8FromWide(Text()), Utf8FromWide(keyName))) {
        Fail("write", place_, ERROR_DISK_FULL);
    }
    const std::optional<std::wstring> written = copy_.Value(sectionName, keyName);
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
