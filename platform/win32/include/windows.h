// The Win32 subset this project uses, under the Windows SDK's header names so
// that the module's sources build unchanged against the real SDK.
#pragma once
#include "windef.h"
#include "winerror.h"
#include "winbase.h"
#include "winreg.h"
#include "wingdi.h"
#include "winuser.h"
#include "winspool.h"
