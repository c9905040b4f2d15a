// The colour-matching dialog itself.
#pragma once
#include "choices.h"

namespace tesk::icmui {

enum class DialogResult { Accepted, Cancelled, Unavailable };

// Shows the dialog with `choices` and, when accepted, leaves the user's
// choices there. Unavailable: no display could be opened.
DialogResult RunDialog(COLORMATCHSETUPW& setup, Choices& choices);

}  // namespace tesk::icmui
