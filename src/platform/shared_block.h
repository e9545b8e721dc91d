// Named blocks of memory that the processes of one user share in a logon session.
//
// The blocks live in the paging file. They carry no lock: they hold small fixed-size fields, and
// the last writer wins. A block's name ends with the last handle to it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/handles.h"
#include "platform/win32.h"

namespace depot {

struct ViewUnmapper {
    void operator()(void* view) const { UnmapViewOfFile(view); }
};
// Owns one mapped view of a block.
using UniqueView = std::unique_ptr<void, ViewUnmapper>;

// What the owner of a block keeps of it. Handle and view are null while nothing is mapped.
struct SharedBlockLink {
    UniqueHandle handle;
    UniqueView view;
    std::string key;  // the text from which the block's name is formed
};

// Creates or opens the block of that name and maps `size` bytes of it. A null or empty name stands
// for the process's own "Quillon - File Mapping - 0x...". Returns 1 when the block is new, and then
// zero-filled; 0 when it existed, its contents untouched, or cannot be had. One that existed is
// used only when IsTrustedObject says so, else it cannot be had. What it holds may be anything all
// the same. Whatever `handle` and `view` held before is closed; both are null where there is
// nothing.
int OpenSharedBlock(const char* name, std::uint32_t size, UniqueHandle& handle, UniqueView& view);

// Unmaps the view, closes the handle and empties the key; does nothing where nothing is open.
void CloseSharedBlock(SharedBlockLink& link);

// Returns `prefix` and the process id as the names of process-wide blocks carry it.
//
// Kept: after "0x" the process id stands in decimal, padded with zeros to eight digits.
// Relied on by: other modules of the process that open the same block by its name.
std::string ProcessBlockName(std::string_view prefix, DWORD processId = GetCurrentProcessId());

}  // namespace depot
