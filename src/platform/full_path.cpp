#include "platform/full_path.h"

#include "platform/win32.h"

namespace depot {

std::string FullPath(const std::string& path) {
    const DWORD room = GetFullPathNameA(path.c_str(), 0, nullptr, nullptr);
    std::string full(room, '\0');
    const DWORD length = GetFullPathNameA(path.c_str(), room, full.data(), nullptr);
    if (length == 0 || length >= room) return path;
    full.resize(length);
    return full;
}

}  // namespace depot
