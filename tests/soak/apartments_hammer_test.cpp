// Eight apartments at once, each with sessions of its own.
#include <mutex>
#include <thread>
#include <vector>

#include "soak/hammer.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr int kApartments = 8;
constexpr int kRounds = 20;

// The folder depot's place follows from the user's folder, which every session of the process tells
// the macros.
class ApartmentsHammerTest : public ComponentTest {
protected:
    ApartmentsHammerTest() { depots_.Text("Work", "Path1", "$USERDIR$\\Work"); }

    // What a call without a handle makes of a path of the folder depot.
    std::string RunConversion(IDepotIntrApi& api, const std::string& name) const {
        BSTR path = nullptr;
        const HRESULT result = api.DPPathConvertDPtoFS(Text("<Work>\\" + name), &path);
        const std::wstring text(path, SysStringLen(path));
        SysFreeString(path);
        if (result == S_OK && text == Wide(folder_.At("Farrow\\User\\Work\\" + name))) return {};
        return "converted to " + std::string(text.begin(), text.end());
    }

    // One client: two sessions' worth of work on each store in every round.
    std::string Hammer(int number) const {
        const Apartment apartment;
        const Com<IDepotIntrApi> api = CreateApi();
        if (!api) return "no object";
        const std::string name = "a" + std::to_string(number) + ".kra";
        for (int round = 0; round < kRounds; ++round) {
            for (const std::string& complaint :
                 {RunSession(*api, "<Work>\\" + name, round),
                  RunSession(*api, "<Corp>\\" + name, round), RunConversion(*api, name),
                  RunListing(*api, "<Work>\\", kApartments),
                  RunListing(*api, "<Corp>\\", kApartments)}) {
                if (!complaint.empty()) return complaint;
            }
        }
        return {};
    }

    const std::string work_ = DefineDepot("Work");
    CorpDepot corp_{depots_};
    const CleanWorkingFiles clean_;
};

TEST_F(ApartmentsHammerTest, EightApartmentsReadWhatTheyWrote) {
    const std::string filling = Filling();
    folder_.MakeFolder("Farrow\\User\\Work");
    for (int number = 0; number < kApartments; ++number) {
        const std::string name = "a" + std::to_string(number) + ".kra";
        folder_.MakeFile("Farrow\\User\\Work\\" + name, filling);
        corp_.Add(name, filling);
    }
    std::vector<std::string> complaints(kApartments, "not run");
    std::vector<std::thread> clients;
    for (int number = 0; number < kApartments; ++number) {
        clients.emplace_back([this, number, &complaints] {
            complaints[static_cast<std::size_t>(number)] = Hammer(number);
        });
    }
    for (std::thread& client : clients) client.join();
    for (const std::string& complaint : complaints) EXPECT_EQ("", complaint);
    EXPECT_TRUE(WorkingCopies().empty());
}

}  // namespace
}  // namespace depot::test
