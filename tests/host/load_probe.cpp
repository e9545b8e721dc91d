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

void ReportLibrary(std::ofstream& report, const char* label, const std::string& name) {
    if (GetModuleHandleA(name.c_str()) != nullptr) report << label << ' ' << name << '\n';
}

void ReportLibraries(std::ofstream& report, const char* label) {
    ReportLibrary(report, label, "depotintr.nls");
    for (const depot::Language& language : depot::kLanguages) {
        ReportLibrary(report, label, "depotintr." + std::string(language.code) + ".nls");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    std::ofstream report(argv[2], std::ios::binary);
    const depot::test::BoxLog boxes;
    const HMODULE component = LoadLibraryA(argv[1]);
    if (component == nullptr) return 3;
    ReportLibraries(report, "loaded");
    FreeLibrary(component);
    ReportLibraries(report, "kept");
    // The process ends with the component loaded, as most clients do.
    if (LoadLibraryA(argv[1]) == nullptr) return 4;
    for (const std::string& text : boxes.Texts()) report << "box " << text << '\n';
    return 0;
}
