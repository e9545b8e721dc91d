// Stands in for any function that fails by its result alone: counts the call, lets it fail, and
// notes what the function hands out or takes back.
#pragma once

#include <type_traits>

#include "faults/fault_state.h"
#include "platform/directory_client.h"

namespace depot::test {

// Whether a call with this result has handed something out. A number is a code of its own kind.
template <class Point, class Result>
bool HandsOut(Result result) {
    if constexpr (std::is_same_v<Result, LONG> || std::is_same_v<Result, ULONG>) {
        return result == ERROR_SUCCESS;
    } else {
        return result != static_cast<Result>(Point::Failure());
    }
}

// A search hands out its message through its last argument, also when it fails.
template <class First, class... Rest>
LDAPMessage** MessageOutput(First first, Rest... rest) {
    if constexpr (sizeof...(Rest) == 0) {
        if constexpr (std::is_same_v<First, LDAPMessage**>)
            return first;
        else
            return nullptr;
    } else {
        return MessageOutput(rest...);
    }
}

// Per function: what stands in for it, and where it really is. `Point` tells how it fails and what
// it takes or gives back.
template <class Point, class Function>
class Interception;

template <class Point, class Result, class... Arguments>
class Interception<Point, Result(WINAPI*)(Arguments...)> {
public:
    static inline Result(WINAPI* real)(Arguments...) = nullptr;

    static Result WINAPI Call(Arguments... arguments) {
        if (!IsWatched()) return real(arguments...);
        if constexpr (Point::kCanFail) {
            if (FailsNow(Point::kKind)) {
                if constexpr (sizeof...(Arguments) > 0) {
                    LDAPMessage** const message = MessageOutput(arguments...);
                    if (message != nullptr) *message = nullptr;
                }
                SetLastError(Point::kError);
                return static_cast<Result>(Point::Failure());
            }
        }
        if constexpr (std::is_void_v<Result>) {
            Note(Point::kHolding, Point::kChange);
            return real(arguments...);
        } else {
            return Noted(real(arguments...), arguments...);
        }
    }

private:
    template <class Returned>
    static Returned Noted(Returned result, Arguments... arguments) {
        if constexpr (sizeof...(Arguments) > 0) {
            LDAPMessage** const message = MessageOutput(arguments...);
            if (message != nullptr && *message != nullptr) Note(Holding::kMessage, 1);
        }
        if constexpr (Point::kChange < 0) {
            // Whatever is given back is gone, whatever the call says.
            Note(Point::kHolding, Point::kChange);
        } else if constexpr (Point::kHolding != Holding::kNothing) {
            if (!HandsOut<Point>(result)) return result;
            if constexpr (Point::kHolding == Holding::kHandle && std::is_same_v<Returned, HANDLE>) {
                ForgetServerHandle(result);
            }
            Note(Point::kHolding, Point::kChange);
        }
        return result;
    }
};

// Returns what stands in for the genuine function.
template <class Point, class Function>
FARPROC Intercepted(FARPROC genuine) {
    using Hook = Interception<Point, Function>;
    Hook::real = FunctionCast<Function>(genuine);
    return FunctionCast<FARPROC>(&Hook::Call);
}

}  // namespace depot::test
