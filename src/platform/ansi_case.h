// The letter case of the ANSI code page.
#pragma once

namespace depot {

// Makes the text helpers fold case as the ANSI code page does.
void InstallAnsiCaseTable();

}  // namespace depot
