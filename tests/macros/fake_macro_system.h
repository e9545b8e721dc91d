// A machine made of plain values, which counts what is asked of it.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "macros/macro_system.h"

namespace depot::test {

class FakeMacroSystem final : public MacroSystem {
public:
    std::string SlotText(Slot slot) override {
        ++slotReads;
        return slots[static_cast<std::size_t>(slot)];
    }
    std::string ExpandEnvironment(const std::string& text) override {
        ++systemCalls;
        const std::size_t found = text.find("%COMPANY%");
        return found == std::string::npos ? text : std::string(text).replace(found, 9, company);
    }
    RegistryText ReadRegistry(Hive hive, const std::string& key, const std::string& name) override {
        ++systemCalls;
        keysRead.emplace_back(hive, key);
        const auto found = registry.find({hive, key});
        if (found == registry.end()) return {};
        const auto value = found->second.find(name);
        if (value == found->second.end()) return {true, std::nullopt};
        return {true, value->second};
    }
    bool IsNtFamily() override {
        ++systemCalls;
        return ntFamily;
    }
    std::string WindowsFolder() override { return Counted(windowsFolder); }
    std::string SystemFolder() override { return Counted(systemFolder); }
    std::string TemporaryFolder() override { return Counted(temporaryFolder); }
    std::string DocumentsFolder() override { return Counted(documentsFolder); }
    std::string SystemSoundFolder() override { return Counted(soundFolder); }
    std::optional<std::string> UserName() override {
        ++systemCalls;
        return userName;
    }
    std::optional<std::string> ShortPath(const std::string& path) override {
        ++systemCalls;
        if (path.empty() || !hasShortForms) return std::nullopt;
        return "short:" + path;
    }
    bool CreateFolder(const std::string& path) override {
        ++systemCalls;
        created.push_back(path);
        return foldersCanBeCreated;
    }

    std::string& operator[](Slot slot) { return slots[static_cast<std::size_t>(slot)]; }
    void Store(Hive hive, const std::string& key, const std::string& name,
               const std::string& text) {
        registry[{hive, key}][name] = text;
    }

    std::array<std::string, 7> slots;
    std::map<std::pair<Hive, std::string>, std::map<std::string, std::string>> registry;
    std::string company = "Acme";
    std::string windowsFolder = "C:\\windows";
    std::string systemFolder = "C:\\windows\\system32";
    std::string temporaryFolder = "C:\\temp\\";
    std::string documentsFolder = "C:\\users\\ann\\Documents";
    std::string soundFolder = "C:\\windows\\media";
    std::optional<std::string> userName = "ann";
    bool ntFamily = true;
    bool hasShortForms = true;
    bool foldersCanBeCreated = true;
    std::vector<std::string> created;
    std::vector<std::pair<Hive, std::string>> keysRead;
    int systemCalls = 0;
    int slotReads = 0;

private:
    std::string Counted(const std::string& text) {
        ++systemCalls;
        return text;
    }
};

}  // namespace depot::test
