// Publishing a Skein profile together with the files that it depends on.
#pragma once

#include "fileops/transfer_progress.h"
#include "manager/depot_session.h"

namespace depot {

// Copies each client file that the session's current file lists into that file's folder, rewrites
// the list to point at the copies, and removes the server's configuration entry. A client that
// begins with "u" stands for a file of the component's resource folder: only its name is kept. At
// most 10,000 clients are looked at. The changes reach a directory when the file is released.
//
// Only files are copied, of any extension: a client that is a folder, or a pattern, is left out.
//
// A profile whose path has no folder, or one relative to the process's current folder, gets no
// copies.
//
// The watcher is called after each client and can end the work between two of them: the entries
// behind keep what they say.
//
// Kept: an entry is rewritten also when its file could not be copied.
void PublishDependentFiles(DepotSession& session, const TransferWatcher& watcher = {});

}  // namespace depot
