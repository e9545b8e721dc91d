// Another current folder of the process, for what must not depend on it.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/win32.h"

namespace depot::test {

// Makes a folder the process's current one while the object lives.
class CurrentFolder {
public:
    explicit CurrentFolder(const std::string& path) {
        GetCurrentDirectoryA(sizeof(before_), before_);
        EXPECT_TRUE(SetCurrentDirectoryA(path.c_str()));
    }
    ~CurrentFolder() { SetCurrentDirectoryA(before_); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    char before_[MAX_PATH] = {};
};

}  // namespace depot::test
