// A client in C++ that uses depotintr.hpp: sessions that end by themselves, failures as exceptions.
#include <cstdio>
#include <depotintr.hpp>

namespace {

void Run() {
    depotintr::Session session;
    session.quiet();
    for (const depotintr::Depot& depot : session.depots()) {
        if (depot.key == L"Work")
            std::printf("Depot:    %s\n", depotintr::utf8(depot.name).c_str());
    }
    session.load("<Work>\\Sessions\\office.kre");
    std::printf("Host:     %s\n", depotintr::utf8(session.value("Host", "Name")).c_str());
    std::printf("Port:     %lu\n", session.number("Host", "Port", 23));

    session.makeFolder("<Work>\\Copies", true);
    session.copy("<Work>\\Sessions\\office.kre", "<Work>\\Copies\\", true,
                 [](long done, long all, double) {
                     std::printf("Copied:   %ld of %ld\n", done, all);
                     return true;
                 });
    session.writeText(L"<Work>\\Copies\\note.txt", L"Moved in June", TEXT_UTF8);
    std::printf("Text:     %s\n",
                depotintr::utf8(session.readText("<Work>\\Copies\\note.txt")).c_str());
    for (const std::wstring& path : session.find("<Work>\\Copies")) {
        std::printf("Found:    %s\n", depotintr::utf8(path).c_str());
    }
    try {
        session.copy("<Work>\\Copies\\note.txt", "<Work>\\Copies\\office.kre");
    } catch (const depotintr::Error& error) {
        std::printf("Refused:  %ld\n", error.code());
    }
}

}  // namespace

int main() try {
    const depotintr::Apartment apartment;
    Run();
    std::printf("Session ended.\n");
    return 0;
} catch (const depotintr::Error& error) {
    std::fprintf(stderr, "%s (%ld)\n", error.what(), error.code());
    return 1;
}
