// What the macro engine asks of the machine, as one interface with a double for tests.
#pragma once

#include <optional>
#include <string>

namespace depot {

enum class Hive { kCurrentUser, kLocalMachine };

// The texts of the macro cache, in the order of its slots.
enum class Slot {
    kApplicationFolder,
    kApplicationFolderX86,
    kOrganization,
    kUserFolder,
    kProfileFolder,
    kLanguageCode,
    kTransferUserName,
};

// The outcome of reading one registry value.
struct RegistryText {
    bool keyOpened = false;
    std::optional<std::string> text;  // nothing when there is no value or when it is too long
};

// The values behind the macros. No call fails: what cannot be had is empty or nothing.
class MacroSystem {
public:
    virtual ~MacroSystem() = default;

    // The text of a slot of the macro cache, without any system call.
    virtual std::string SlotText(Slot slot) = 0;

    // The text with its %NAME% references replaced, or unchanged when that does not work.
    virtual std::string ExpandEnvironment(const std::string& text) = 0;

    // Reads a value of at most 260 bytes; an empty `name` is the key's default value.
    virtual RegistryText ReadRegistry(Hive hive, const std::string& key,
                                      const std::string& name) = 0;

    // Whether the system is of the NT family, which keeps settings for all users apart.
    virtual bool IsNtFamily() = 0;

    virtual std::string WindowsFolder() = 0;
    virtual std::string SystemFolder() = 0;
    virtual std::string TemporaryFolder() = 0;
    virtual std::string DocumentsFolder() = 0;
    virtual std::string SystemSoundFolder() = 0;

    // The name of the logged-on user.
    virtual std::optional<std::string> UserName() = 0;

    // The short (8.3) form of the path of an existing file or folder.
    virtual std::optional<std::string> ShortPath(const std::string& path) = 0;

    // Creates a folder; false also when it exists.
    virtual bool CreateFolder(const std::string& path) = 0;
};

}  // namespace depot
