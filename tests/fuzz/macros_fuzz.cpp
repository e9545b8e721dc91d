#include "fuzz/fuzz_input.h"
#include "macros/fake_macro_system.h"
#include "macros/macro_table.h"

using namespace depot;

namespace {

void Fill(test::FakeMacroSystem& system, test::FuzzInput& input) {
    constexpr char kWharfside[] = "Software\\Quillon\\Farrow\\13.00\\Wharfside";
    const int switches = input.Number();
    system.ntFamily = (switches & 1) != 0;
    system.hasShortForms = (switches & 2) != 0;
    system.foldersCanBeCreated = (switches & 4) != 0;
    for (std::string& slot : system.slots) slot = input.Line().substr(0, 519);
    system.company = input.Line();
    system.Store(Hive::kCurrentUser, kWharfside, "HomeDir64", input.Line().substr(0, 260));
    system.Store(Hive::kLocalMachine, kWharfside, "UserDir", input.Line().substr(0, 260));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    test::FuzzInput input(data, size);
    test::FakeMacroSystem system;
    Fill(system, input);
    const std::string text = input.Rest();
    std::string once = text;
    ExpandMacros({system}, once);
    std::string again = text;
    ExpandMacros({system}, again);
    test::Require(once == again);
    test::Require(once.size() <= std::max(kMaxExpandedBytes, text.size()));
    if (text.find_first_of("$%") == std::string::npos) test::Require(once == text);
    return 0;
}
