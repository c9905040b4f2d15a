// Classes and functions the module exports to its host.
#pragma once
#define TESKCOLORMGR_API __attribute__((visibility("default")))
