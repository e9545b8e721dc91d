#include "platform/held_file.h"

#include "platform/private_file.h"

namespace depot {

HeldFile::HeldFile(const std::string& path)
    : file_(OwnFile(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                                OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr))) {
    if (!file_) error_ = GetLastError();
}

bool HeldFile::IsPlainFile() const {
    BY_HANDLE_FILE_INFORMATION facts = {};
    return GetFileInformationByHandle(file_.get(), &facts) != FALSE &&
           (facts.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) ==
               0;
}

bool HeldFile::IsOwnedByUser() const {
    return depot::IsOwnedByUser(file_.get());
}

std::optional<std::vector<std::uint8_t>> HeldFile::Read(std::size_t limit) const {
    LARGE_INTEGER size = {};
    if (!GetFileSizeEx(file_.get(), &size) || static_cast<std::uint64_t>(size.QuadPart) > limit) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size.QuadPart));
    OVERLAPPED start = {};
    DWORD read = 0;
    const auto wanted = static_cast<DWORD>(bytes.size());
    if (wanted > 0 &&
        (!ReadFile(file_.get(), bytes.data(), wanted, &read, &start) || read < wanted))
        return std::nullopt;
    return bytes;
}

bool HeldFile::Write(std::size_t offset, std::span<const std::uint8_t> bytes) const {
    return WriteAt(file_.get(), offset, bytes);
}

bool HeldFile::Delete() const {
    return VanishesWhenClosed(file_.get(), true);
}

bool WriteAt(HANDLE file, std::size_t offset, std::span<const std::uint8_t> bytes) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(std::uint64_t{offset} >> 32);
    DWORD written = 0;
    return WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, &place) &&
           written == bytes.size();
}

bool VanishesWhenClosed(HANDLE file, bool vanishes) {
    FILE_DISPOSITION_INFO wish = {static_cast<BOOLEAN>(vanishes)};
    return SetFileInformationByHandle(file, FileDispositionInfo, &wish, sizeof(wish)) != FALSE;
}

}  // namespace depot
