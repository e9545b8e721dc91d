#include "config/profile_edit.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include "config/profile_bytes.h"
#include "config/profile_file.h"
#include "config/profile_text.h"
#include "config/profile_value.h"
#include "platform/file_in_use.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/replace_file.h"
#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

using Bytes = std::vector<std::uint8_t>;

// With more room than this no write cuts a file, and what the file held need not be remembered.
constexpr ULONGLONG kAmpleRoom = ULONGLONG{16} * 1024 * 1024;
// No disk fills that fast.
constexpr ULONGLONG kPlenty = 64 * kAmpleRoom;
constexpr ULONGLONG kPlentyMilliseconds = 1000;

std::string_view TextIn(const Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kSwappedUtf16Mark = "\xFE\xFF";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// Lines can be distinguished only in narrow text.
std::string TextOf(const Bytes& bytes) {
    std::string text(bytes.begin(), bytes.end());
    if (!text.starts_with(kUtf16Mark)) return text;
    std::wstring wide((text.size() - kUtf16Mark.size()) / sizeof(wchar_t), L'\0');
    std::copy_n(text.begin() + kUtf16Mark.size(), wide.size() * sizeof(wchar_t),
                reinterpret_cast<char*>(wide.data()));
    return AnsiFromWide(wide);
}

bool IsText(std::string_view text) {
    return text.find('\0') == std::string_view::npos;
}

bool WasCut(const Bytes& before, const Bytes& after, const ProfileEdit& edit) {
    const std::string text = TextOf(before);
    return IsText(text) && LacksLines(text, TextOf(after), edit.key);
}

// Whether the value stands in the text in the one way that can be looked for.
bool HoldsValue(const Bytes& bytes, const ProfileEdit& edit) {
    const bool isOneLine = edit.value && edit.value->find_first_of("\r\n") == std::string::npos &&
                           FindAnyCharacter(edit.key, "[=\r\n") == std::string::npos;
    const std::string text = TextOf(bytes);
    return !isOneLine || !IsText(text) ||
           HasValueLine(text, edit.key, QuoteProfileValue(*edit.value));
}

bool IsUtf16(std::string_view profile) {
    return profile.starts_with(kUtf16Mark) || profile.starts_with(kSwappedUtf16Mark);
}

// Whether each unit is there whole, and none is a NUL, behind which a line is lost.
bool HasWholeUnits(std::string_view profile) {
    bool whole = profile.size() % sizeof(wchar_t) == 0;
    for (std::size_t at = 0; whole && at < profile.size(); at += sizeof(wchar_t)) {
        whole = profile[at] != 0 || profile[at + 1] != 0;
    }
    return whole;
}

// Whether the profile is as it was once all of it has been made UTF-16, and bytes again.
bool SurvivesConversion(std::string_view profile) {
    if (IsUtf16(profile)) return HasWholeUnits(profile);
    const auto isAscii = [](char c) { return (c & 0x80) == 0; };
    if (!IsText(profile)) return false;
    if (std::all_of(profile.begin(), profile.end(), isAscii)) return true;
    if (profile.starts_with(kUtf8Mark)) return Utf8FromWide(WideFromUtf8(profile)) == profile;
    return AnsiFromWide(WideFromAnsi(profile)) == profile;
}

// Returns the edit in the profile's own bytes; nothing where these do not have all characters.
std::optional<ProfileLineEdit> InBytesOf(std::string_view profile, const ProfileEdit& edit) {
    ProfileLineEdit line = {edit.section, edit.key, {}};
    if (edit.value) line.value = QuoteProfileValue(*edit.value);
    if (IsUtf16(profile)) return std::nullopt;
    if (!profile.starts_with(kUtf8Mark)) return line;
    for (std::string* const text :
         {&line.section, &line.key, line.value ? &*line.value : nullptr}) {
        if (text == nullptr) continue;
        std::optional<std::string> utf8 = ExactUtf8FromAnsi(*text);
        if (!utf8) return std::nullopt;
        *text = *std::move(utf8);
    }
    return line;
}

bool ReadsBack(const ProfileEdit& edit, const std::string& file) {
    // Of several lines the system reads the first.
    if (!edit.value || edit.value->find_first_of("\r\n") != std::string::npos) return true;
    const auto room = static_cast<std::uint32_t>(edit.value->size() + 16);
    return ReadProfileString({edit.section, edit.key, "\x01", room}, file) == *edit.value;
}

// What became of a file that could not be written over and held `before`.
EditOutcome Unwritten(DWORD error, const std::string& file, const Bytes& before) {
    if (error == ERROR_SUCCESS) error = ERROR_WRITE_FAULT;
    if (IsInUse(FileUse::kOwn, error) || ReadLocalFile(file) == before) return {.error = error};
    return {.error = error, .lost = before};
}

// Writes the changed bytes over those that the file held, unless the value cannot be read then.
EditOutcome WriteBytes(const ProfileEdit& edit, const std::string& file, const Bytes& before,
                       std::string_view after) {
    if (after == TextIn(before)) return {};
    if (!WriteOverLocalFile(file, after.data(), after.size())) {
        return Unwritten(GetLastError(), file, before);
    }
    if (ReadsBack(edit, file)) return {};
    if (!WriteOverLocalFile(file, before.data(), before.size())) {
        return Unwritten(GetLastError(), file, before);
    }
    return {.refusal = ERROR_NO_UNICODE_TRANSLATION};
}

// Writes the value into the bytes of the file, which are those given.
EditOutcome EditBytes(const ProfileEdit& edit, const std::string& file, Bytes before) {
    const std::string_view profile = TextIn(before);
    const auto line = InBytesOf(profile, edit);
    if (!line) return {.refusal = ERROR_NO_UNICODE_TRANSLATION};
    const char* const value = line->value ? line->value->c_str() : nullptr;
    if (!FitsProfile(line->section.c_str(), line->key.c_str(), value, file.c_str())) {
        return {.refusal = kProfileTextTooLong};
    }
    const bool isOfCodePage = !profile.starts_with(kUtf8Mark) || GetACP() == CP_UTF8;
    const std::string after = WithProfileLine(
        profile, *line, isOfCodePage ? LetterCase::kOfCodePage : LetterCase::kOfAscii);
    try {
        return WriteBytes(edit, file, before, after);
    } catch (const std::bad_alloc&) {
        return {.error = ERROR_NOT_ENOUGH_MEMORY, .lost = std::move(before)};
    }
}

// Returns the error of the write.
DWORD Write(const ProfileEdit& edit, const std::string& file) {
    const char* const value = edit.value ? edit.value->c_str() : nullptr;
    if (WriteProfileValue(edit.section.c_str(), edit.key.c_str(), value, file.c_str())) {
        return ERROR_SUCCESS;
    }
    const DWORD error = GetLastError();
    // There was nothing to remove.
    if (error == ERROR_FILE_NOT_FOUND && !edit.value) return ERROR_SUCCESS;
    return error != ERROR_SUCCESS ? error : DWORD{ERROR_WRITE_FAULT};
}

// Returns whether the file lost what it held: where it cannot be looked at, a write that failed
// half done is taken for one that cut it.
bool IsCut(const std::optional<Bytes>& before, const std::optional<Bytes>& after,
           const ProfileEdit& edit, DWORD error) {
    // Whoever had the file may have changed it; the system did not come to that.
    if (!before || IsInUse(FileUse::kOwn, error)) return false;
    return after ? WasCut(*before, *after, edit) : error != ERROR_SUCCESS;
}

// What became of the file by a write that returned `error`.
EditOutcome Verify(const std::optional<Bytes>& before, const ProfileEdit& edit,
                   const std::string& file, DWORD error) {
    const std::optional<Bytes> after = ReadLocalFile(file);
    const bool cut = IsCut(before, after, edit, error);
    if (error == ERROR_SUCCESS) {
        if (!cut && (!after || HoldsValue(*after, edit))) return {};
        error = ERROR_DISK_FULL;
    }
    // Where nothing is missing somebody else may have added something meanwhile.
    if (!cut || WriteOverLocalFile(file, before->data(), before->size())) return {.error = error};
    return {.error = error, .lost = before};
}

}  // namespace

bool AmpleRoom::IsThere(const std::string& file) {
    const ULONGLONG now = GetTickCount64();
    if (now < plentyUntil_) return true;
    ULARGE_INTEGER room = {};
    if (!GetDiskFreeSpaceExA(FolderPrefix(file).c_str(), &room, nullptr, nullptr)) return false;
    if (room.QuadPart >= kPlenty) plentyUntil_ = now + kPlentyMilliseconds;
    return room.QuadPart >= kAmpleRoom;
}

EditOutcome EditProfile(const ProfileEdit& edit, const std::string& file, AmpleRoom& room) {
    const bool hasRoom = room.IsThere(file);
    std::optional<Bytes> before = ReadLocalFile(file);
    const DWORD unread = before ? ERROR_SUCCESS : GetLastError();
    // What its bytes are must be known before the system may write them.
    if (IsInUse(FileUse::kOwn, unread)) return {.error = unread};
    if (before && !SurvivesConversion(TextIn(*before))) {
        return EditBytes(edit, file, *std::move(before));
    }
    // Only where a write may cut the file its former bytes are needed.
    if (hasRoom) before.reset();
    const DWORD error = Write(edit, file);
    if (error == kProfileTextTooLong) return {.refusal = error};
    if (error == ERROR_SUCCESS && hasRoom) return {};
    try {
        return Verify(before, edit, file, error);
    } catch (const std::bad_alloc&) {
        // Whatever the file holds now, its former bytes are the ones to keep.
        return {.error = ERROR_NOT_ENOUGH_MEMORY, .lost = std::move(before)};
    }
}

}  // namespace depot
