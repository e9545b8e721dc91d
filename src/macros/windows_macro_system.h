// The macro values of the running system.
#pragma once

#include "macros/macro_system.h"
#include "platform/macro_cache.h"

namespace depot {

// Answers from the environment, the registry and the shell, and for the slots from the macro cache.
class WindowsMacroSystem final : public MacroSystem {
public:
    // With a null `values` every slot is empty. The values must outlive this object.
    explicit WindowsMacroSystem(const MacroValues* values) : values_(values) {}

    std::string SlotText(Slot slot) override;
    std::string ExpandEnvironment(const std::string& text) override;
    RegistryText ReadRegistry(Hive hive, const std::string& key, const std::string& name) override;
    bool IsNtFamily() override;
    std::string WindowsFolder() override;
    std::string SystemFolder() override;
    std::string TemporaryFolder() override;
    std::string DocumentsFolder() override;
    std::string SystemSoundFolder() override;
    std::optional<std::string> UserName() override;
    std::optional<std::string> ShortPath(const std::string& path) override;
    bool CreateFolder(const std::string& path) override;

private:
    const MacroValues* values_;
};

}  // namespace depot
