// The code page of one input of a fuzz target, chosen by the input's first byte.
#pragma once

#include "fuzz/fuzz_input.h"
#include "support/code_pages.h"

namespace depot::test {

// Takes a byte off the input. The digits 1 to 7 choose in the order of kCodePages.
inline unsigned ChosenCodePage(FuzzInput& input) {
    static_assert('1' % kCodePages.size() == 0);
    return kCodePages[static_cast<std::size_t>(input.Number()) % kCodePages.size()];
}

}  // namespace depot::test
