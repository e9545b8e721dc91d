#include "model/recovered_files.h"

#include <algorithm>

#include "platform/file_in_use.h"
#include "platform/handles.h"
#include "platform/known_folders.h"
#include "platform/local_file.h"
#include "platform/local_name.h"
#include "platform/paths.h"
#include "platform/replace_file.h"
#include "platform/text.h"
#include "platform/win32.h"
// After the Windows headers.
#include <shlobj.h>

namespace depot {
namespace {

// What a name may take of a path, so that the folder and the rest of the name still fit.
constexpr std::size_t kLongestStem = 64;
constexpr std::size_t kLongestExtension = 16;
// As many files of one name in one second are not made.
constexpr int kMaxNumbers = 10'000;

struct SplitName {
    std::string stem;
    std::string extension;
};

SplitName SplitForRecovery(const std::string& name) {
    if (!IsSafeLocalName(name)) return {"file", {}};
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0 || name.size() - dot > kLongestExtension) {
        return {std::string(CutToBytes(name, kLongestStem)), {}};
    }
    return {std::string(CutToBytes(name, std::min(dot, kLongestStem))), name.substr(dot)};
}

std::string LocalTimeText() {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    char text[64] = {};
    wsprintfA(text, "%04u-%02u-%02u %02u-%02u-%02u", now.wYear, now.wMonth, now.wDay, now.wHour,
              now.wMinute, now.wSecond);
    return text;
}

// Creates the first file of the numbered names that does not exist; null when none can be created.
UniqueHandle CreateNumbered(const std::string& head, const std::string& tail, std::string& path) {
    for (int number = 1; number <= kMaxNumbers; ++number) {
        path = Concatenate({head, " (", NumberText(static_cast<unsigned>(number)), ")", tail});
        const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file != INVALID_HANDLE_VALUE) return UniqueHandle(file);
        if (GetLastError() != ERROR_FILE_EXISTS) break;
    }
    return nullptr;
}

bool WriteAll(const UniqueHandle& file, const void* bytes, std::size_t length) {
    DWORD written = 0;
    return length == 0 ||
           (WriteFile(file.get(), bytes, static_cast<DWORD>(length), &written, nullptr) != FALSE &&
            written == length);
}

}  // namespace

std::string KeepRecovered(const std::string& name, const void* bytes, std::size_t length) {
    return KeepRecoveredIn(RecoveredFolder(), name, bytes, length);
}

std::string RecoveredFolder() {
    const std::string base = GetSpecialFolderPath(CSIDL_LOCAL_APPDATA);
    return base.empty() ? base : JoinPath(base, kRecoveredFolder);
}

std::string KeepRecoveredIn(const std::string& folder, const std::string& name, const void* bytes,
                            std::size_t length) {
    if (folder.empty()) return {};
    EnsureLocalFolder(folder);
    const SplitName split = SplitForRecovery(name);
    std::string path;
    const std::string head = Concatenate({JoinPath(folder, split.stem), " ", LocalTimeText()});
    UniqueHandle file = CreateNumbered(head, split.extension, path);
    if (!file) return {};
    const bool complete = WriteAll(file, bytes, length) && FlushFileBuffers(file.get());
    file.reset();
    if (complete) return path;
    DeleteOwnFile(path);
    return {};
}

std::string KeepRecoveredProfile(const std::string& folder, const std::string& name,
                                 const std::vector<std::uint8_t>& bytes,
                                 const std::vector<ProfileEdit>& edits) {
    std::string path = KeepRecoveredIn(folder, name, bytes.data(), bytes.size());
    if (path.empty() || edits.empty()) return path;
    AmpleRoom room;
    for (const ProfileEdit& edit : edits) EditProfile(edit, path, room);
    FlushLocalFile(path);
    return path;
}

}  // namespace depot
