#include "depotctl/file_times.h"

namespace depot::ctl {

std::string TimeText(const FILETIME& time, TimeForm form) {
    SYSTEMTIME utc = {}, local = {};
    if (!FileTimeToSystemTime(&time, &utc)) return {};
    char text[32] = {};
    if (form == TimeForm::kIso) {
        wsprintfA(text, "%04u-%02u-%02uT%02u:%02u:%02uZ", utc.wYear, utc.wMonth, utc.wDay,
                  utc.wHour, utc.wMinute, utc.wSecond);
        return text;
    }
    if (!SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local)) return {};
    wsprintfA(text, "%04u-%02u-%02u %02u:%02u", local.wYear, local.wMonth, local.wDay, local.wHour,
              local.wMinute);
    return text;
}

}  // namespace depot::ctl
