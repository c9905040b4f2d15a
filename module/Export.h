// Classes and functions the module exports to its host. On Windows the module
// exports them while it is built and its host imports them.
#pragma once
#if defined(_WIN32)
#if defined(TESK_BUILDING_MODULE)
#define TESKCOLORMGR_API __declspec(dllexport)
#else
#define TESKCOLORMGR_API __declspec(dllimport)
#endif
#else
#define TESKCOLORMGR_API __attribute__((visibility("default")))
#endif
