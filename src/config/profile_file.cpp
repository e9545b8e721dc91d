#include "config/profile_file.h"

#include <algorithm>
#include <string_view>

#include "config/file_types.h"
#include "config/profile_value.h"
#include "platform/file_in_use.h"
#include "platform/handles.h"
#include "platform/text.h"
#include "platform/wide_text.h"

namespace depot {
namespace {

constexpr DWORD kReadBlockBytes = 519;
// Values are short; a longer one costs a second read.
constexpr std::uint32_t kFirstReadSize = 1024;

// The system counts the bytes of each text in 16 bits, two a character; what is longer would make
// it read outside of the text.
constexpr std::size_t kLongestProfileText = 32766;

constexpr std::uint32_t kLongestCharacter = 4;

bool Fits(std::string_view text) {
    return text.size() <= kLongestProfileText;
}

// A missing name is the system's business.
bool Fits(const char* text) {
    return text == nullptr || Fits(std::string_view(text));
}

// Some systems read and write a file of any name in the current folder for a path that they cannot
// hold.
bool IsReachable(const std::string& file) {
    return file.size() < MAX_PATH || WideFromAnsi(file).size() < MAX_PATH;
}

// What the system gives for a value that is not there.
std::string CutDefault(const std::string& defaultValue, std::uint32_t size) {
    return size == 0 ? std::string() : std::string(CutToBytes(defaultValue, size - 1));
}

// Reads the session's terminal type out of the file itself.
std::uint32_t TerminalTypeOfSession(const std::string& path, INT defaultType) {
    return ReadProfileInt("PROFILE", "Session Terminal Type",
                          static_cast<std::uint32_t>(defaultType), path);
}

}  // namespace

bool FitsProfile(const char* section, const char* key, const char* stored, const char* file) {
    return Fits(section) && Fits(key) && Fits(stored) && (file == nullptr || IsReachable(file));
}

int WriteProfileValue(const char* section, const char* key, const char* value, const char* file) {
    const std::string quoted = value != nullptr ? QuoteProfileValue(value) : std::string();
    if (!FitsProfile(section, key, quoted.c_str(), file)) {
        SetLastError(kProfileTextTooLong);
        return 0;
    }
    return WritePrivateProfileStringA(section, key, value != nullptr ? quoted.c_str() : nullptr,
                                      file);
}

std::string ReadProfileString(const ProfileRead& read, const std::string& file) {
    const auto& [section, key, defaultValue, size] = read;
    if (!Fits(section) || !Fits(key) || !IsReachable(file)) return CutDefault(defaultValue, size);
    if (!Fits(defaultValue)) {
        // A value without text counts as missing here.
        std::string text = ReadProfileString({section, key, {}, size}, file);
        return text.empty() ? CutDefault(defaultValue, size) : text;
    }
    std::string text;
    for (std::uint32_t room = std::min(size, kFirstReadSize); room > 0;) {
        text.assign(room, '\0');
        const DWORD length = GetPrivateProfileStringA(
            section.c_str(), key.c_str(), defaultValue.c_str(), text.data(), room, file.c_str());
        // A character that does not fit whole may be left out whole.
        const bool cut = length + kLongestCharacter >= room;
        if (!cut || room == size) break;
        room = room > size / 4 ? size : room * 4;
    }
    return std::string(UpToNul(text));
}

std::uint32_t ReadProfileInt(const std::string& section, const std::string& key,
                             std::uint32_t defaultValue, const std::string& file) {
    if (!Fits(section) || !Fits(key) || !IsReachable(file)) return defaultValue;
    return GetPrivateProfileIntA(section.c_str(), key.c_str(), static_cast<INT>(defaultValue),
                                 file.c_str());
}

std::uint32_t GetTerminalType(const std::string& path, std::int32_t code) {
    switch (code == kUnknownFileType ? DetectFileType(path) : code) {
        case kSessionProfile:
            return TerminalTypeOfSession(path, 1);
        case kOtherSessionProfile:
            return TerminalTypeOfSession(path, 8);
        case 15:
        case 53:
            return 7;
        case 16:
            return 268;
        case 20:
            return 32;
        case 29:
            return 106;
        case 56:
        case 57:
        case 58:
            return 264;
        case 62:
        case 63:
        case 64:
            return 104;
        default:
            // Codes 17 and 61 depend on extensions that no file type has, so nothing matches them.
            return 0;
    }
}

std::string ReadWholeFile(const std::string& path) {
    UniqueHandle file;
    RetryWhileInUse(FileUse::kShared, [&] {
        file = OwnFile(CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
        return file != nullptr;
    });
    if (!file) return {};
    std::string text;
    char block[kReadBlockBytes + 1] = {};
    for (DWORD read = 0; ReadFile(file.get(), block, kReadBlockBytes, &read, nullptr) && read > 0;
         std::fill(std::begin(block), std::end(block), '\0')) {
        text.append(block);
    }
    return text;
}

}  // namespace depot
