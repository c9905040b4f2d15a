// Declarations of the portability interface. On Linux it is part of
// libteskwin32 and exported from it; a Windows build links it statically
// into each DLL, so there is nothing to export.
#pragma once

#if defined(_WIN32)
#define TESK_PORTABLE_API
#else
#define TESK_PORTABLE_API __attribute__((visibility("default")))
#endif
