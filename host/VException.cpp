#include "host/VException.h"

const char* CVException::what() const noexcept { return "CVException"; }
