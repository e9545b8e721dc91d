// A registry key as the source of a depot's values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "config/depot_values.h"
#include "platform/registry_key.h"

namespace depot {

// Borrows the key.
class RegistryValues : public ValueSource {
public:
    explicit RegistryValues(const RegistryKey& key) : key_(key) {}

    std::optional<std::string> Text(const std::string& name) const override {
        return key_.ReadString(name);
    }

    // A directory's numbers have exactly four bytes, others any size. A depot's own number of
    // another type resets what was read before, and a directory's may count as what its row says.
    std::optional<std::uint32_t> Number(const std::string& name,
                                        const NumberReading& reading) const override {
        switch (reading.scope) {
            case ValueScope::kDepot:
                return key_.ReadDwordOr(name, reading.standard);
            case ValueScope::kLocation:
                return key_.ReadDwordOfAnySize(name);
            default:
                return key_.ReadDword(name, reading.unreadable);
        }
    }

private:
    const RegistryKey& key_;
};

}  // namespace depot
