// Several processes at once on one depot: every file stays whole.
#include "soak/hammer.h"
#include "support/child_process.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr int kProcesses = 4;
constexpr int kRounds = 25;

// Uses both depots as this process's own client does. Returns 0 when every call went well.
int Hammer(const Arguments& arguments) {
    const Apartment apartment;
    const Com<IDepotIntrApi> api = CreateApi();
    if (!api) return 2;
    const std::string own = arguments.at(0) + ".kra";
    for (int round = 0; round < kRounds; ++round) {
        for (const std::string& complaint :
             {RunSession(*api, "<Work>\\" + own, round), RunSession(*api, "<Corp>\\" + own, round),
              RunSharedSession(*api, "<Corp>\\shared.kra", round),
              RunListing(*api, "<Work>\\", kProcesses),
              RunListing(*api, "<Corp>\\", kProcesses + 1)}) {
            if (complaint.empty()) continue;
            std::fprintf(stderr, "%s\n", complaint.c_str());
            return 1;
        }
    }
    return 0;
}
const RoleRegistration hammerRole("hammer", &Hammer);

class ProcessesTest : public ComponentTest {
protected:
    std::string Entry(const std::string& name) {
        FileBuffer buffer;
        EXPECT_THAT(corp_.items.ReadFileContents("cn=" + name + "," + corp_.base, buffer),
                    IsDone());
        return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
    }
    // The filling is all there, and each of the ten values once.
    static void ExpectWhole(const std::string& bytes) {
        EXPECT_NE(std::string::npos, bytes.find(Filling())) << bytes;
        std::size_t values = 0;
        for (std::size_t at = bytes.find("=value "); at != std::string::npos;
             at = bytes.find("=value ", at + 1)) {
            ++values;
        }
        EXPECT_EQ(10u, values) << bytes;
    }

    const std::string work_ = DefineDepot("Work");
    CorpDepot corp_{depots_};
    const CleanWorkingFiles clean_;
};

TEST_F(ProcessesTest, FilesOfBothStoresStayWholeUnderFourProcesses) {
    corp_.Add("shared.kra", Filling());
    for (int number = 0; number < kProcesses; ++number) {
        const std::string name = "p" + std::to_string(number) + ".kra";
        folder_.MakeFile("Work\\" + name, Filling());
        corp_.Add(name, Filling());
    }
    std::vector<std::unique_ptr<ChildProcess>> processes;
    for (int number = 0; number < kProcesses; ++number) {
        processes.push_back(
            std::make_unique<ChildProcess>("hammer", Arguments{"p" + std::to_string(number)}));
    }
    for (const auto& process : processes) EXPECT_EQ(0, process->ExitCode(120000));
    for (int number = 0; number < kProcesses; ++number) {
        const std::string name = "p" + std::to_string(number) + ".kra";
        ExpectWhole(FileBytes(work_ + "\\" + name));
        ExpectWhole(Entry(name));
    }
    ExpectWhole(Entry("shared.kra"));
    EXPECT_TRUE(WorkingCopies().empty());
    EXPECT_TRUE(RecoveredFiles().empty());
}

}  // namespace
}  // namespace depot::test
