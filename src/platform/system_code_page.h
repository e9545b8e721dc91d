// The characters of a code page as Windows knows them.
#pragma once

#include "platform/code_page.h"

namespace depot {

// Describes a code page that the system has, by its number.
CodePage DescribeSystemCodePage(unsigned codePage);

// Makes narrow texts have the characters of the ANSI code page. Every module calls it once, when it
// is loaded.
void InstallSystemCodePage();

}  // namespace depot
