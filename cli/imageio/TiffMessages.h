// libtiff reports through process-wide handlers: they are replaced once so
// that a failure becomes the last message of this thread, never console noise.
#pragma once
#include <string>

namespace teskcolor {

void InstallTiffHandlers();
// The last error libtiff reported on this thread ("" when none); cleared by
// the call, with the warnings.
std::string TakeTiffError();
// Whether libtiff warned since then that it ignored this field (by its
// libtiff name) as unreadable, as it does for a tag cut off by truncation.
bool TiffDroppedTag(const std::string& fieldName);

}  // namespace teskcolor
