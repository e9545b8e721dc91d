// Why a client's call failed, as the client may ask for it afterwards.
#pragma once

#include <cstdint>
#include <string>

namespace depot {

// A code of the system, 0 for none, and the text for the user, in the ANSI code page. An empty text
// stands for the system's text of the code.
struct CallFailure {
    std::uint32_t code = 0;
    std::string text{};
    // Whether the call succeeded, and the text is what it would have shown in a box.
    bool isNotice = false;
};

}  // namespace depot
