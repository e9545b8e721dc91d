// For whom a thread works.
#pragma once

namespace depot {

// Whether the thread works for another user than its process: it may then be refused, or see, what
// other threads are not.
bool IsImpersonating();

}  // namespace depot
