// Definitions of values of any registry type and size: what the component reads of them, and that
// the program reads the same.
//
// DEPOTINTR_FUZZ_ROUNDS is how many definitions are tried instead of those of every day;
// --gtest_shuffle gives each run others, by the seed that the program prints.
#include <cstdlib>

#include "config/depot_path.h"
#include "depotctl/definition_checks.h"
#include "depotctl/definition_store.h"
#include "depotctl/tool.h"
#include "model/depot_paths.h"
#include "platform/registry_key.h"
#include "support/random_text.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr char kKey[] = "Hostile";

int Rounds() {
    constexpr int kEveryDay = 300;
    const char* const given = std::getenv("DEPOTINTR_FUZZ_ROUNDS");
    return given != nullptr ? std::atoi(given) : kEveryDay;
}

class HostileDefinitionsTest : public testing::Test {
protected:
    std::string Data() {
        switch (random_.Below(5)) {
            case 0:
                return std::string(4, static_cast<char>(random_.Below(4)));
            case 1:
                return std::string(1, static_cast<char>(random_.Below(3))) + std::string(3, '\0');
            case 2:
                return random_.Text(300, "abc$%\\<>:=,. \"") + '\0';
            case 3:
                return random_.Bytes(12);
            default:
                return random_.Pieces(3,
                                      {"C:\\", "$USERDIR$", "%TMP%", "\\\\", "dc=x", "..", "\n"});
        }
    }

    // Values of all names, some of them missing, in a definition of its own.
    void Write(const ScratchKey& key) {
        static const DWORD kTypes[] = {
            REG_NONE,  REG_SZ,     REG_EXPAND_SZ,       REG_BINARY,   REG_DWORD,
            REG_DWORD, REG_DWORD,  REG_QWORD,           REG_MULTI_SZ, REG_LINK,
            0x1234,    0xFFFFFFFF, REG_DWORD_BIG_ENDIAN};
        for (const DepotValue& value : kDepotValues) {
            const int last = value.IsNumbered() ? 3 : 1;
            for (int number = 1; number <= last; ++number) {
                if (random_.Below(4) == 0) continue;
                const std::string name =
                    value.IsNumbered() ? ctl::Numbered(value.name, number) : value.name;
                key.Raw(kKey, name, kTypes[random_.Below(std::size(kTypes))], Data());
            }
        }
        // Most definitions have locations, and most of these are directories.
        if (random_.Below(8) != 0) key.Text(kKey, "Path1", "C:\\folder");
        if (random_.Below(3) != 0) key.Dword(kKey, "Type1", 1);
        if (random_.Below(2) != 0) key.Raw(kKey, "DisplayName.eng", REG_BINARY, random_.Bytes(300));
    }

    // Loads the depots and uses them as far as no server is asked.
    static void Use() {
        CDepots depots;
        LoadDepotList(depots, kDepotsKey);
        for (CDepot* depot : GetFilteredView(depots, 6, true)) {
            EXPECT_LT(0u, depot->paths->Count());
            for (std::size_t at = 0; at < depot->paths->Count(); ++at) {
                CDepotPath& location = *depot->paths->At(at);
                EXPECT_GE(1u, location.type);
                static_cast<void>(ExpandedPath(location));
            }
        }
        static_cast<void>(GetDefaultDepot(depots, 1));
    }

    // Returns how many numbers of the definition's locations were compared.
    static int Compare(const ScratchKey& key) {
        const auto opened = RegistryKey::Open(key.Root(), key.Path() + "\\" + kKey);
        const auto raw = ctl::ReadDefinition(HKEY_CURRENT_USER, kKey);
        if (!opened || !raw) return 0;
        static_cast<void>(ctl::CheckDefinition(*raw));
        int compared = 0;
        for (int number = 1; number <= raw->Locations(); ++number) {
            CDepotPath record(nullptr);
            EXPECT_THAT(record.LoadFromRegistry(*opened, number), test::IsDone());
            const LocationSettings seen = raw->Location(number);
            EXPECT_EQ(record.IsDirectory(), seen.IsDirectory());
            if (!record.IsDirectory()) continue;
            for (const DepotValue& value : kDepotValues) {
                const auto* const member =
                    std::get_if<std::uint32_t LocationSettings::*>(&value.member);
                if (member == nullptr) continue;
                EXPECT_EQ(record.*(*member), seen.*(*member)) << value.name << number;
                ++compared;
            }
        }
        return compared;
    }

    RandomTexts random_{21};
};

TEST_F(HostileDefinitionsTest, EveryDefinitionIsReadAndBothReadTheSame) {
    const int rounds = Rounds();
    int compared = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const ScratchKey key(HKEY_CURRENT_USER, kDepotsKey);
        Write(key);
        Use();
        compared += Compare(key);
    }
    EXPECT_LT(rounds, compared);
    std::printf("%d definitions, %d numbers compared\n", rounds, compared);
}

}  // namespace
}  // namespace depot::test
