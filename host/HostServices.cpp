#include "HostServices.h"

#include "SettingsStore.h"

void StartHostServices() { RegisterSettingsStoreService(); }
