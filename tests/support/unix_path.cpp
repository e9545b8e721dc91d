#include "support/unix_path.h"

#include <algorithm>

#include "platform/compiler.h"
#include "platform/win32.h"

namespace depot::test {

std::string UnixPath(const std::string& path) {
    using GetUnixName = char*(CDECL*)(LPCWSTR);
    const auto getUnixName = FunctionCast<GetUnixName>(
        GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name"));
    if (getUnixName == nullptr) return {};
    const std::wstring wide(path.begin(), path.end());
    char* const found = getUnixName(wide.c_str());
    const std::string name = found ? found : "";
    HeapFree(GetProcessHeap(), 0, found);
    return name;
}

std::string NetworkPath(const std::string& path) {
    std::string name = UnixPath(path);
    if (name.empty()) return "\\\\localhost\\" + path.substr(0, 1) + "$" + path.substr(2);
    // Wine reaches the drive through a link that is named like it.
    const std::string link = "/dosdevices/c:/";
    const std::size_t begin = name.find(link);
    if (begin != std::string::npos) name.replace(begin, link.size(), "/drive_c/");
    std::replace(name.begin(), name.end(), '/', '\\');
    return "\\\\?\\unix" + name;
}

}  // namespace depot::test
