// A folder with libraries of texts.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/handles.h"
#include "platform/module_state.h"
#include "support/scratch.h"

namespace depot::test {

// Whether the library is loaded as data: then the file cannot be opened for writing.
inline bool IsInUse(const std::string& path) {
    const UniqueHandle file = OwnFile(CreateFileA(
        path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return !file && GetLastError() == ERROR_SHARING_VIOLATION;
}

// Empty at first; it may offer the plain library and those of some languages.
class LibraryFolder : public ScratchFolder {
public:
    // Copies a file of the build's own folder under a new name.
    void Offer(const std::string& name, const std::string& source) const {
        ASSERT_TRUE(CopyFileA((OwnModuleFolder() + source).c_str(), At(name).c_str(), FALSE));
    }
    void OfferAll() const {
        Offer("DepotIntr.NLS", "DepotIntr.NLS");
        for (const std::string name : {"depotintr.eng.nls", "depotintr.fra.nls"}) Offer(name, name);
    }
};

}  // namespace depot::test
