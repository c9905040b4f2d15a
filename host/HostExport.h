// What the host library (teskhost) exports: everything marked TESK_HOST_API.
// The library is built with hidden visibility on Linux; on Windows it exports
// while it is built and its users import.
#pragma once
#if defined(_WIN32)
#if defined(TESK_BUILDING_HOST)
#define TESK_HOST_API __declspec(dllexport)
#else
#define TESK_HOST_API __declspec(dllimport)
#endif
#else
#define TESK_HOST_API __attribute__((visibility("default")))
#endif
