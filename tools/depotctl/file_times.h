// Times of files as text.
#pragma once

#include <string>

#include "platform/win32.h"

namespace depot::ctl {

enum class TimeForm {
    kLocal,  // "2026-05-31 14:07", in the time of the machine
    kIso,    // "2026-05-31T12:07:31Z", by ISO 8601
};

// Returns the time, or nothing where there is none.
std::string TimeText(const FILETIME& time, TimeForm form);

}  // namespace depot::ctl
