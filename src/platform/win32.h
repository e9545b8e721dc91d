// The Windows headers, with the settings that the whole component expects.
#pragma once

#include <windows.h>

// The headers spell some pairs of calls as macros that would rename our own operations.
#undef CopyFile
#undef DeleteFile
#undef LoadString
#undef MoveFile
