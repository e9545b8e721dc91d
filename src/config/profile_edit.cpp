#include "config/profile_edit.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

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

constexpr std::string_view kUtf16Mark = "\xFF\xFE";

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
    std::optional<Bytes> before;
    if (!hasRoom) before = ReadLocalFile(file);
    const DWORD error = Write(edit, file);
    if (error == kProfileTextTooLong) return {.isTooLong = true};
    if (error == ERROR_SUCCESS && hasRoom) return {};
    try {
        return Verify(before, edit, file, error);
    } catch (const std::bad_alloc&) {
        // Whatever the file holds now, its former bytes are the ones to keep.
        return {.error = ERROR_NOT_ENOUGH_MEMORY, .lost = std::move(before)};
    }
}

}  // namespace depot
