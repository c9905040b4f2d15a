// The GTK dialog lives in a module of its own, loaded on the first call: a
// process that never shows the dialog never loads GTK and its seventy-odd
// libraries.
#pragma once
#include "gtk_dialog.h"

namespace tesk::icmui {

// Runs the dialog from icmui-gtk.so beside this module; Unavailable when
// that module (or the GTK it needs) cannot be loaded.
DialogResult RunDialogFromModule(COLORMATCHSETUPW& setup, Choices& choices);

}  // namespace tesk::icmui
