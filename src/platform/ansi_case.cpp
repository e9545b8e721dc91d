#include "platform/ansi_case.h"

#include "platform/text.h"
#include "platform/win32.h"

namespace depot {

void InstallAnsiCaseTable() {
    CaseTable table;
    for (int byte = 0; byte < 256; ++byte) {
        // One letter at a time: in a double-byte code page a lead byte alone has no other case.
        char letter = static_cast<char>(byte);
        if (byte != 0 && !IsDBCSLeadByte(static_cast<BYTE>(byte))) CharLowerBuffA(&letter, 1);
        table[static_cast<std::size_t>(byte)] = letter;
    }
    InstallCaseTable(table);
}

}  // namespace depot
