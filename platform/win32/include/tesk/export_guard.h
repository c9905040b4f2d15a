// The C boundary of the platform modules. Every export's body is a function
// try block whose handler returns FailAtBoundary(failure value): no C++
// exception reaches a caller written in C, and the caller sees a Windows
// failure with a Windows error code instead.
#pragma once
#include <new>
#include <stdexcept>

#include "../winbase.h"
#include "../winerror.h"

namespace tesk {

// Only inside a catch handler: sets the last error for the exception being
// handled and returns `failure`.
template <typename Result>
Result FailAtBoundary(Result failure) noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    } catch (const std::length_error&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    } catch (...) {
        SetLastError(ERROR_INVALID_PARAMETER);
    }
    return failure;
}

}  // namespace tesk
