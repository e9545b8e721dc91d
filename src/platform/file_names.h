// File names as a file system compares them: by their characters, letter case makes no difference.
#pragma once

#include <set>
#include <string>

namespace depot {

// Whether both names or paths, in the ANSI code page, are one to a file system.
bool IsSameFileName(const std::string& left, const std::string& right);

// Names or paths of files, each once.
class FileNameSet {
public:
    // Returns false when one is there already that a file system takes for the same.
    bool Insert(const std::string& name);

private:
    struct Less {
        bool operator()(const std::wstring& left, const std::wstring& right) const;
    };
    std::set<std::wstring, Less> names_;
};

}  // namespace depot
