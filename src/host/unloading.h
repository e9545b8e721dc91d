// What happens to the sessions that clients did not end when the DLL is about to go.
#pragma once

namespace depot {

// Answers whether the DLL can be unloaded, with the module's locks as the measure. When it can, the
// sessions left are ended first as their clients would have ended them: changed files are written
// back, which may show messages and ask for credentials. No lock of the system is held here. The
// answer is no when another such question is being answered, or when an object, a call or a session
// has come meanwhile.
//
// A prompt that is cancelled here does not turn prompting for the server off: the user may not even
// know of these files, and other clients still need the server.
bool PrepareUnloading() noexcept;

// Lets go of everything while the system takes the DLL out of the process. Nothing may wait then:
// it holds the lock under which threads start and libraries load. Changed working copies that are
// left are kept among the recovered files.
void LeaveProcess() noexcept;

}  // namespace depot
