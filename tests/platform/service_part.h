// What the directory-service library for tests takes from the library that it needs.
#pragma once

// Writes a folder that tells whether the service was loaded quietly.
extern "C" int PartOfTheService(bool quietly, char* buffer, unsigned size);
