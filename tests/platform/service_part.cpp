// A library that a directory-service library for tests needs.
#include "platform/service_part.h"

#include <cstring>

extern "C" int PartOfTheService(bool quietly, char* buffer, unsigned size) {
    const char* const folder = quietly ? "C:\\Quietly" : "C:\\Loudly";
    if (std::strlen(folder) >= size) return 0;
    std::strcpy(buffer, folder);
    return 1;
}
