// What the tests of the list of depots share.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/depots.h"
#include "model/localization.h"
#include "support/scratch.h"

namespace depot::test {

inline std::vector<std::string> Names(const CDepots& depots) {
    std::vector<std::string> names;
    for (const CDepot* depot : depots) names.push_back(depot->name);
    return names;
}

// Starts without definitions, and ends in the language in which programs begin.
class DepotsFixture : public testing::Test {
protected:
    static constexpr char kKey[] = "Software\\DepotTests\\Depots";

    ~DepotsFixture() override { InstallLocalization({}); }

    static void Define(const ScratchKey& hive, const std::string& name) {
        hive.Text(name, "Path1", "C:\\" + name);
    }

    static void Define(const ScratchKey& hive, const std::string& name, DWORD orderIndex) {
        Define(hive, name);
        hive.Dword(name, "OrderIndex", orderIndex);
    }

    ScratchKey user_{HKEY_CURRENT_USER, kKey};
    ScratchKey machine_{HKEY_LOCAL_MACHINE, kKey};
};

// A list that a test fills itself, with depots that tell how many there are.
class DepotListFixture : public DepotsFixture {
protected:
    class CountedDepot : public CDepot {
    public:
        explicit CountedDepot(CDepots* owningList) : CDepot(owningList) { ++alive; }
        ~CountedDepot() override { --alive; }
    };
    static inline int alive = 0;

    DepotListFixture() {
        alive = 0;
        depots_.ownsItems = true;
    }

    CDepot* Append(const std::string& name, std::int32_t orderIndex = CDepot::kNoOrderIndex) {
        auto depot = std::make_unique<CountedDepot>(&depots_);
        depot->name = name;
        depot->orderIndex = orderIndex;
        depots_.Add(depot.release(), false);
        return depots_.At(depots_.Count() - 1);
    }

    CDepots depots_;
};

}  // namespace depot::test
