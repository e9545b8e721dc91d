// The groups of measurements.
#pragma once

#include "bench/client.h"

namespace depot::bench {

// What the library weighs: its size, what it imports, and how long loading takes. To be asked
// before the library is loaded for anything else.
void MeasureLibrary();

// Opening and closing a session with 0, 20 and 1,000 depots.
void MeasureSessions(IDepotIntrApi* api);

// Reading and writing profile values, early- and late-bound.
void MeasureValues(IDepotIntrApi* api);

// Expanding path macros, without the component around them.
void MeasureMacros();

// Working with entries in a real directory server.
void MeasureDirectory();

// Loading and releasing files of a directory, and many sessions at once.
void MeasureWorkingCopies(IDepotIntrApi* api);

// What it costs to keep a location for the time when its server is away, to merge edits, and to
// store those that waited.
void MeasureApart();

// Listing folders of the file system and of a directory.
void MeasureListings();

// Copying, moving and renaming files and trees within and between stores.
void MeasureTransfers();

// What operations wait for when the server is far away.
void MeasureRoundTrips(IDepotIntrApi* api);

}  // namespace depot::bench
