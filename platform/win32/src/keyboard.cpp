#include <windows.h>

// The module asks for modifier keys only at start-up (the trace's hot-key
// protocol). A process without a window system holds no keys.
TESK_WIN32_API SHORT WINAPI GetAsyncKeyState(int) { return 0; }
