// Profile files read once per process. The module opens the same few
// profiles many times in one run (every band of a separation, every
// transform); each open after the first takes the bytes kept from the first,
// as long as the file is provably the same one.
#pragma once
#include <string>

#include "icc_container.h"

namespace tesk::mscms {

// The whole file, as ReadWholeFile gives it. Kept bytes are used only while
// the file keeps its device, inode, size, modification and change times, and
// a file changed in the last seconds is never kept, so that a change made
// within the file system's timestamp resolution cannot go unseen.
bool ReadProfileFile(const std::string& nativePath, Bytes& bytes);

}  // namespace tesk::mscms
