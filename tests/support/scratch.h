// Worlds that a test builds for itself: a folder of its own and registry keys of its own.
#pragma once

#include <string>

#include "platform/win32.h"

namespace depot::test {

// A new empty folder in the temporary folder, removed with all that is in it at the end.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    // The folder's path without a trailing backslash.
    const std::string& Path() const { return path_; }

    // Returns the path of `name` in the folder, which may hold backslashes.
    std::string At(const std::string& name) const { return path_ + "\\" + name; }

    // Creates a subfolder, parents included, and returns its path.
    std::string MakeFolder(const std::string& name) const;

    // Creates a file with these bytes and returns its path.
    std::string MakeFile(const std::string& name, const std::string& bytes) const;

private:
    std::string path_;
};

// Returns all bytes of a file; a test failure and an empty text when it cannot be read.
std::string FileBytes(const std::string& path);

bool Exists(const std::string& path);

// Returns the short name that the file system gave besides the file's own. A volume that gives none
// fails the test.
std::string ShortNameOf(const std::string& path);

// Writes a registry value, creating the keys on its way.
void WriteRegistry(HKEY root, const std::string& key, const std::string& name, DWORD type,
                   const std::string& data);
void WriteRegistryText(HKEY root, const std::string& key, const std::string& name,
                       const std::string& text);
void WriteRegistryDword(HKEY root, const std::string& key, const std::string& name, DWORD value);
void CreateRegistryKey(HKEY root, const std::string& key);

// A registry key that does not exist at the beginning and is removed at the end.
class ScratchKey {
public:
    ScratchKey(HKEY root, std::string path);
    ~ScratchKey();
    ScratchKey(const ScratchKey&) = delete;
    ScratchKey& operator=(const ScratchKey&) = delete;

    HKEY Root() const { return root_; }
    const std::string& Path() const { return path_; }

    // Writes a value into the key, or into `subkey` below it.
    void Text(const std::string& subkey, const std::string& name, const std::string& text) const;
    void Dword(const std::string& subkey, const std::string& name, DWORD value) const;
    void Raw(const std::string& subkey, const std::string& name, DWORD type,
             const std::string& data) const;

private:
    std::string Below(const std::string& subkey) const;

    HKEY root_;
    std::string path_;
};

}  // namespace depot::test
