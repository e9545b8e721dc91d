// The file that a trace is written to, which several processes may share.
#pragma once

#include <cstdint>
#include <string>

#include "platform/handles.h"
#include "platform/lock.h"

namespace depot {

// How much of a trace is kept: where a file would become larger it is renamed, "trace.txt" to
// "trace.txt.1" and that to "trace.txt.2", and the last one is deleted.
struct TraceLimit {
    std::uint64_t mostBytes = 0;  // 0 for any number
    std::uint32_t olderFiles = 1;
};

// A file that lines are appended to, from any thread and any process. A file that cannot be
// renamed, because a program has it open in a way that forbids it, grows to twice the limit; from
// then on lines are left out until it can be.
class TraceFile {
public:
    // Returns whether it could be opened. A link, a file of several names and what is no file count
    // as what cannot.
    bool Open(const std::string& path, const TraceLimit& limit);
    void Close();
    bool IsOpen() const { return file_ != nullptr; }

    void Write(const std::string& line);

private:
    void Append(const std::string& line) const;
    std::uint64_t Size() const;
    void Rotate();
    UniqueHandle OpenForAppending() const;

    std::string path_;
    TraceLimit limit_;
    UniqueHandle file_;
    Lock lock_;  // taken where the file is limited: only there it may be replaced
};

}  // namespace depot
