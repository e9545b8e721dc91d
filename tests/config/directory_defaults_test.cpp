#include "config/directory_defaults.h"

#include <gtest/gtest.h>

#include <map>

namespace depot {
namespace {

// A definition that holds these numbers.
class Numbers : public ValueSource {
public:
    explicit Numbers(std::map<std::string, std::uint32_t> numbers) : numbers_(std::move(numbers)) {}

    std::optional<std::string> Text(const std::string& name) const override {
        return name.starts_with("Path") ? std::optional("dc=example") : std::nullopt;
    }
    std::optional<std::uint32_t> Number(const std::string& name,
                                        const NumberReading& /*reading*/) const override {
        const auto found = numbers_.find(name);
        return found == numbers_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::map<std::string, std::uint32_t> numbers_;
};

LocationSettings Read(const DirectoryDefaults& defaults,
                      std::map<std::string, std::uint32_t> numbers, int location) {
    numbers["Type" + std::to_string(location)] = kDirectoryLocation;
    const Numbers source(numbers);
    LocationSettings settings;
    ReadLocationValues(source, location, settings);
    ApplyDefaults(defaults, source, location, settings);
    return settings;
}

TEST(DirectoryDefaultsTest, DefaultCountsWhereTheDefinitionIsSilent) {
    const DirectoryDefaults defaults = {1, 20, 60, true};
    const LocationSettings settings = Read(defaults, {{"Offline1", 0}, {"OfflineSize1", 5}}, 2);
    EXPECT_EQ(1U, settings.offline);
    EXPECT_EQ(20U, settings.offlineSize);
    EXPECT_EQ(60U, settings.keepConnection);
}

TEST(DirectoryDefaultsTest, DefinitionWinsOverADefault) {
    const DirectoryDefaults defaults = {1, 20, 60, true};
    const LocationSettings settings =
        Read(defaults, {{"Offline1", 0}, {"OfflineSize1", 5}, {"KeepConnection1", 0}}, 1);
    EXPECT_EQ(0U, settings.offline);
    EXPECT_EQ(5U, settings.offlineSize);
    EXPECT_EQ(0U, settings.keepConnection);
}

TEST(DirectoryDefaultsTest, OfflineThatIsNotAllowedIsOffWhateverTheDefinitionSays) {
    DirectoryDefaults defaults = {1, {}, {}, false};
    EXPECT_EQ(0U, Read(defaults, {{"Offline1", 1}}, 1).offline);
    EXPECT_EQ(0U, Read(defaults, {}, 1).offline);
    EXPECT_FALSE(defaults.AreNone());
}

TEST(DirectoryDefaultsTest, WithoutSettingsNothingChanges) {
    EXPECT_TRUE(DirectoryDefaults().AreNone());
    const LocationSettings settings = Read({}, {{"Offline1", 1}}, 1);
    EXPECT_EQ(1U, settings.offline);
    EXPECT_EQ(100U, settings.offlineSize);
    EXPECT_EQ(0U, settings.keepConnection);
}

}  // namespace
}  // namespace depot
