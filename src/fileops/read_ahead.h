// Reading the sources of several copies together.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "store/store.h"

namespace depot {

// How many bytes of small files are held at once; a larger one is held alone.
inline constexpr std::uint64_t kBytesAtOnce = std::uint64_t{1024} * 1024;

// How many files of a store are read at once: how large they are shows only then.
class ReadWindow {
public:
    std::size_t Size(const Store& store) const { return std::min(store.Window(), size_); }
    // Takes so many more files as the last ones let expect to fit.
    void Adapt(std::size_t files, std::uint64_t bytes, const Store& store) {
        const std::uint64_t fitting = kBytesAtOnce * files / std::max<std::uint64_t>(bytes, 1);
        size_ = static_cast<std::size_t>(std::clamp<std::uint64_t>(fitting, 1, store.Window()));
    }

private:
    static constexpr std::size_t kFirst = 8;
    std::size_t size_ = kFirst;
};

// The sources of copies that follow one another, each read with those that come next where its
// store has several requests under way. Nothing that one of the copies writes may be read before:
// see Written.
class ReadAhead {
public:
    // Sources without a store are read by themselves.
    ReadAhead(std::vector<StorePath> sources, SourceFate fate)
        : sources_(std::move(sources)), fate_(fate) {}

    // Returns the bytes of a source; nothing for one that has to be read by itself. The numbers are
    // those of the list, and each is taken once, in order. REQUIRES: the source's store is open.
    std::optional<FileBuffer> Take(std::size_t number);

    // Drops what was read of this place, and of what lies below it.
    void Written(const StorePath& place);

private:
    void ReadFrom(std::size_t number);
    void RefuseChildren(Store& store);

    const std::vector<StorePath> sources_;
    const SourceFate fate_;
    ReadWindow window_;
    std::vector<FileToRead> files_;
    std::vector<std::size_t> numbers_;  // of the sources that were read
};

}  // namespace depot
