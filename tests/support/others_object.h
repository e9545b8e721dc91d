// Named objects that somebody else made before the component came.
#pragma once

#include <sddl.h>

#include <memory>
#include <string>

#include "platform/handles.h"

namespace depot::test {

// Owners and rights as the system writes them: everyone may use what is there.
inline constexpr char kOfSomebodyElse[] = "O:WDD:(A;;GA;;;WD)";
inline constexpr char kOfTheSystem[] = "O:SYD:(A;;GA;;;WD)";
inline constexpr char kOfAdministrators[] = "O:BAD:(A;;GA;;;WD)";
inline constexpr char kForNobodyHere[] = "O:WDD:(D;;GA;;;WD)";

struct LocalFreer {
    void operator()(void* memory) const { LocalFree(memory); }
};

// Rights for an object from such a text.
class WrittenRights {
public:
    explicit WrittenRights(const std::string& text) {
        void* descriptor = nullptr;
        ConvertStringSecurityDescriptorToSecurityDescriptorA(text.c_str(), SDDL_REVISION_1,
                                                             &descriptor, nullptr);
        descriptor_.reset(descriptor);
        attributes_ = {sizeof(attributes_), descriptor, FALSE};
    }
    SECURITY_ATTRIBUTES* Get() { return &attributes_; }

private:
    std::unique_ptr<void, LocalFreer> descriptor_;
    SECURITY_ATTRIBUTES attributes_ = {};
};

// The owner of this program's user, before rights that are given to everyone.
inline std::string OfThisUser(const std::string& rest = "D:(A;;GA;;;WD)") {
    HANDLE token = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token);
    const UniqueHandle owner(token);
    alignas(TOKEN_USER) BYTE bytes[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE] = {};
    DWORD size = sizeof(bytes);
    GetTokenInformation(token, TokenUser, bytes, size, &size);
    char* text = nullptr;
    ConvertSidToStringSidA(reinterpret_cast<TOKEN_USER*>(bytes)->User.Sid, &text);
    const std::unique_ptr<void, LocalFreer> freer(text);
    return std::string("O:") + text + rest;
}

// A block with `contents` in the memory that others see.
class OthersBlock {
public:
    OthersBlock(const std::string& name, const std::string& rights, const std::string& contents)
        : handle_(CreateFileMappingA(INVALID_HANDLE_VALUE, WrittenRights(rights).Get(),
                                     PAGE_READWRITE, 0, static_cast<DWORD>(contents.size()),
                                     name.c_str())),
          view_(MapViewOfFile(handle_.get(), FILE_MAP_WRITE, 0, 0, contents.size())) {
        if (view_ != nullptr) contents.copy(static_cast<char*>(view_), contents.size());
    }
    ~OthersBlock() { UnmapViewOfFile(view_); }
    OthersBlock(const OthersBlock&) = delete;
    OthersBlock& operator=(const OthersBlock&) = delete;

    std::string Contents(std::size_t size) const {
        return std::string(static_cast<const char*>(view_), size);
    }

private:
    UniqueHandle handle_;
    void* view_;
};

// An event, not signalled.
inline UniqueHandle OthersEvent(const std::string& name, const std::string& rights) {
    return UniqueHandle(CreateEventA(WrittenRights(rights).Get(), FALSE, FALSE, name.c_str()));
}

}  // namespace depot::test
