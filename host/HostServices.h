// The one start call of a program that embeds the colour manager.
#pragma once
#include "host/HostExport.h"

// Registers with the singleton manager the host services that the module
// looks up when it starts: the file-backed settings store, unless the program
// registered a store of its own first. Call it once, before the first
// CColorManager::Instance(); without it the manager runs on its built-in
// defaults and keeps no setting.
TESK_HOST_API void StartHostServices();
