// What went wrong in a call, and where it is kept for the client.
#pragma once

#include "manager/call_failure.h"
#include "platform/result.h"
#include "platform/user_notice.h"

namespace depot {

// The code of a failure for which a method has no other one.
inline constexpr std::uint32_t kUnexplained = 1003;  // ERROR_CAN_NOT_COMPLETE

// Returns the system's code of a failure. Those of directories, which are another kind of number,
// become the system's codes of what happened.
std::uint32_t SystemCodeOf(const Error& error);

// Return the failure of a method that ends with this; without memory for the text its code alone.
CallFailure FailureOf(bool succeeded) noexcept;
CallFailure FailureOf(const Result& result) noexcept;
inline CallFailure FailureOf(CallFailure failure) noexcept {
    return failure;
}

// Returns the failure that the exception which is being handled stands for.
CallFailure FailureOfException() noexcept;

// Adds what a quiet session had to show to what its call came to.
void AddNotices(const NoticeCollector& notices, CallFailure& failure) noexcept;

// Returns the text for the user: the failure's own, else the system's text of its code.
std::string TextOf(const CallFailure& failure);

// The failures of threads. A thread keeps that of its last call until its next one; of threads that
// ended a few are kept, until others take their place.
CallFailure FailureOfThread();
void NoteFailureOfThread(const CallFailure& failure) noexcept;
void ForgetFailureOfThread() noexcept;
// Called when the DLL leaves the process.
void FreeFailuresOfThreads() noexcept;

}  // namespace depot
