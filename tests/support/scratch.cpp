#include "support/scratch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace depot::test {

namespace {

// The library's paths take narrow text for UTF-8, whatever the code page is.
std::filesystem::path WidePath(const std::string& narrow) {
    const auto size = static_cast<int>(narrow.size());
    std::wstring wide(narrow.size(), L'\0');
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_ACP, 0, narrow.data(), size, wide.data(), size)));
    return wide;
}

}  // namespace

ScratchFolder::ScratchFolder() {
    char temporary[MAX_PATH] = {};
    GetTempPathA(sizeof(temporary), temporary);
    char name[MAX_PATH] = {};
    GetTempFileNameA(temporary, "tst", 0, name);
    ::DeleteFileA(name);
    CreateDirectoryA(name, nullptr);
    path_ = name;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(WidePath(path_), ignored);
}

std::string ScratchFolder::MakeFolder(const std::string& name) const {
    std::filesystem::create_directories(WidePath(At(name)));
    return At(name);
}

std::string ScratchFolder::MakeFile(const std::string& name, const std::string& bytes) const {
    std::ofstream(At(name), std::ios::binary) << bytes;
    return At(name);
}

std::string FileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

bool Exists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string ShortNameOf(const std::string& path) {
    WIN32_FIND_DATAA found = {};
    const HANDLE search = FindFirstFileA(path.c_str(), &found);
    EXPECT_NE(INVALID_HANDLE_VALUE, search) << path;
    if (search == INVALID_HANDLE_VALUE) return {};
    FindClose(search);
    EXPECT_STRNE("", found.cAlternateFileName) << path;
    return found.cAlternateFileName;
}

void WriteRegistry(HKEY root, const std::string& key, const std::string& name, DWORD type,
                   const std::string& data) {
    ASSERT_EQ(ERROR_SUCCESS, RegSetKeyValueA(root, key.c_str(), name.c_str(), type, data.data(),
                                             static_cast<DWORD>(data.size())));
}

void WriteRegistryText(HKEY root, const std::string& key, const std::string& name,
                       const std::string& text) {
    WriteRegistry(root, key, name, REG_SZ, std::string(text.c_str(), text.size() + 1));
}

void WriteRegistryDword(HKEY root, const std::string& key, const std::string& name, DWORD value) {
    WriteRegistry(root, key, name, REG_DWORD,
                  std::string(reinterpret_cast<const char*>(&value), sizeof(value)));
}

void CreateRegistryKey(HKEY root, const std::string& key) {
    HKEY created = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyA(root, key.c_str(), &created));
    RegCloseKey(created);
}

ScratchKey::ScratchKey(HKEY root, std::string path) : root_(root), path_(std::move(path)) {
    RegDeleteTreeA(root_, path_.c_str());
}

ScratchKey::~ScratchKey() {
    RegDeleteTreeA(root_, path_.c_str());
}

std::string ScratchKey::Below(const std::string& subkey) const {
    return subkey.empty() ? path_ : path_ + "\\" + subkey;
}

void ScratchKey::Text(const std::string& subkey, const std::string& name,
                      const std::string& text) const {
    WriteRegistryText(root_, Below(subkey), name, text);
}

void ScratchKey::Dword(const std::string& subkey, const std::string& name, DWORD value) const {
    WriteRegistryDword(root_, Below(subkey), name, value);
}

void ScratchKey::Raw(const std::string& subkey, const std::string& name, DWORD type,
                     const std::string& data) const {
    WriteRegistry(root_, Below(subkey), name, type, data);
}

}  // namespace depot::test
