// A Win32 call's failure together with the last error it left.
#pragma once
#include <gtest/gtest.h>
#include <windows.h>

namespace tesk::test {

// Whether `result` (a BOOL or a handle) reports failure with `error` as the last error.
template <typename Result>
::testing::AssertionResult FailsWith(Result result, DWORD error) {
    const DWORD last = GetLastError();
    if (result) return ::testing::AssertionFailure() << "succeeded";
    if (last != error) return ::testing::AssertionFailure() << "last error " << last << " instead of " << error;
    return ::testing::AssertionSuccess();
}

}  // namespace tesk::test
