// The imaging library's classes and functions, exported by the host library.
#pragma once
#include "host/HostExport.h"

#define VIMAGING_API TESK_HOST_API
