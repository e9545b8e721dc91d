#include "support/many_files.h"

#include "platform/win32.h"
#include "support/scratch.h"
#include "support/unix_path.h"

namespace depot::test {
namespace {

constexpr DWORD kLongestWait = 60'000;

std::string FileName(int number) {
    return "f" + std::to_string(number) + ".kra";
}

// A program of the system below cannot be waited for: it tells that it is done by a file.
bool MakeBelow(const std::string& folder, const std::string& unixPath, int count) {
    std::string command = "/bin/sh -c \"cd '" + unixPath + "' && seq -f 'f%.0f.kra' 0 " +
                          std::to_string(count - 1) + " | xargs touch; touch '" + unixPath +
                          "-done'\"";
    STARTUPINFOA start = {};
    start.cb = sizeof(start);
    PROCESS_INFORMATION process = {};
    if (!CreateProcessA("Z:\\bin\\sh", command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &start, &process)) {
        return false;
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    for (DWORD waited = 0; waited < kLongestWait; waited += 10, Sleep(10)) {
        if (::DeleteFileA((folder + "-done").c_str())) break;
    }
    return Exists(folder + "\\" + FileName(count - 1));
}

}  // namespace

bool MakeManyFiles(const std::string& folder, int count) {
    const std::string unixPath = UnixPath(folder);
    if (!unixPath.empty()) return MakeBelow(folder, unixPath, count);
    for (int number = 0; number < count; ++number) {
        const HANDLE file = CreateFileA((folder + "\\" + FileName(number)).c_str(), GENERIC_WRITE,
                                        0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE) return false;
        CloseHandle(file);
    }
    return true;
}

}  // namespace depot::test
