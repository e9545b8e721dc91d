// load_probe DLL REPORT: loads the component into a process of its own, as any client does, and
// writes what could be seen from outside into a file, one line each:
//
//   loaded <name>       a resource library that is in the process afterwards
//   kept <name>         a resource library that is still there when the component is gone
//   box <text>          each message box that came up meanwhile
#include <fstream>
#include <string>

#include "config/languages.h"
#include "platform/win32.h"
#include "support/box_log.h"

namespace {

// A library in use cannot be opened for writing.
bool IsInUse(const std::string& path) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(file);
    return false;
}

// Looks beside the component.
class Libraries {
public:
    Libraries(std::ofstream& report, const std::string& component)
        : report_(report), folder_(component.substr(0, component.rfind('\\') + 1)) {}

    void Report(const char* label) {
        ReportOne(label, "depotintr.nls");
        for (const depot::Language& language : depot::kLanguages) {
            ReportOne(label, "depotintr." + std::string(language.code) + ".nls");
        }
    }

private:
    void ReportOne(const char* label, const std::string& name) {
        if (IsInUse(folder_ + name)) report_ << label << ' ' << name << '\n';
    }

    std::ofstream& report_;
    const std::string folder_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    std::ofstream report(argv[2], std::ios::binary);
    const depot::test::BoxLog boxes;
    Libraries libraries(report, argv[1]);
    const HMODULE component = LoadLibraryA(argv[1]);
    if (component == nullptr) return 3;
    libraries.Report("loaded");
    FreeLibrary(component);
    libraries.Report("kept");
    // The process ends with the component loaded, as most clients do.
    if (LoadLibraryA(argv[1]) == nullptr) return 4;
    for (const std::string& text : boxes.Texts()) report << "box " << text << '\n';
    return 0;
}
