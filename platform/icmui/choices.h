// What the colour-matching dialog edits, and how it comes from and goes back
// into the caller's COLORMATCHSETUPW record.
#pragma once
#include <windows.h>

#include <icm.h>

#include <string>

namespace tesk::icmui {

struct Choices {
    bool enableIcm = true;
    bool proofing = false;
    DWORD renderIntent = INTENT_PERCEPTUAL;
    DWORD proofIntent = INTENT_RELATIVE_COLORIMETRIC;
    std::wstring monitorProfile;  // file names in the colour directory
    std::wstring printerProfile;
    std::wstring targetProfile;
};

// The record's starting values (only the fields its flags say are set).
Choices ReadRecord(const COLORMATCHSETUPW& setup);

// Writes the user's choices back. A profile name that does not fit its
// buffer sets the matching overflow flag; the result is then false with
// last error ERROR_INSUFFICIENT_BUFFER.
bool WriteRecord(const Choices& choices, COLORMATCHSETUPW& setup);

}  // namespace tesk::icmui
