// libtiff reports through process-wide handlers: they are replaced once so
// that a failure becomes the last message of this thread, never console noise.
#pragma once
#include <string>

namespace teskcolor {

void InstallTiffHandlers();
// The last error libtiff reported on this thread ("" when none); cleared by the call.
std::string TakeTiffError();

}  // namespace teskcolor
