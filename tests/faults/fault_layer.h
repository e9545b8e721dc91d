// System calls of a module that fail when a test says so, and a count of what the module holds.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "platform/win32.h"

namespace depot::test {

// Memory; the registry; files, folders and profile values; the directory client; and the objects
// of the kernel that are shared between processes.
enum class FaultKind { kMemory, kRegistry, kFile, kDirectory, kObject };
inline constexpr FaultKind kFaultKinds[] = {FaultKind::kMemory, FaultKind::kRegistry,
                                            FaultKind::kFile, FaultKind::kDirectory,
                                            FaultKind::kObject};
const char* NameOf(FaultKind kind);

enum class Holding {
    kNothing,
    kBlock,
    kHandle,
    kLegacyFile,
    kSearch,
    kKey,
    kView,
    kConnection,
    kMessage,
    kValues,
    kDirectoryText,
    kControl,
    kSystemText,
    kItemList,
    kIcon,
    kActivation,
    kHoldings
};

// How many things of each kind the watched thread has taken and not given back.
//
// The block that processes share about a directory server is left out, because its handles and
// views stay on purpose: each access opens it afresh, and only the last pair is closed.
struct Holdings {
    std::array<std::ptrdiff_t, static_cast<std::size_t>(Holding::kHoldings)> counts = {};

    // What is held now and was not then, as a text; empty when it is nothing. `spareBlocks` of
    // memory do not count.
    std::string Since(const Holdings& before, std::ptrdiff_t spareBlocks) const;
};

// Stands between a module and the system while it lives: the entries of the module's import table
// lead here and from here to the system, and so do the entry points of the directory client that
// the module looks up. Only calls of the thread that made the layer fail and count. Message boxes
// of the module are not shown but noted.
class FaultLayer {
public:
    explicit FaultLayer(HMODULE module);
    ~FaultLayer();
    FaultLayer(const FaultLayer&) = delete;
    FaultLayer& operator=(const FaultLayer&) = delete;

    // Lets `count` calls of that kind fail, from the `number`-th from now on: 1 is the next one,
    // and 0 lets none fail.
    static void Fail(FaultKind kind, int number, int count);
    // Ends the process, as a kill or a power cut would, at the `number`-th call of that kind from
    // now on: before it, or with half of its bytes written where it writes a file.
    static void EndProcess(FaultKind kind, int number);
    static constexpr UINT kEnded = 98;  // the exit code of such a process
    // Lets every call succeed from now on. Returns how many calls of the kind were made meanwhile.
    static int Stop();

    static Holdings Held();
    // The texts of the module's message boxes since the last call of this.
    static std::vector<std::string> TakeBoxes();
    // How many blocks of the directory servers stay open on purpose.
    static std::size_t LastingServerBlocks();
    // Closes them, but for one that keeps the block alive, while no session of the module uses one:
    // some systems give a process fewer handles than a long run leaves behind.
    static void CloseLastingServerBlocks();

private:
    struct Replaced {
        FARPROC* entry;
        FARPROC genuine;
        FARPROC replacement;
    };
    std::vector<Replaced> replaced_;
};

}  // namespace depot::test
