#include <tesk/resource.h>

namespace {
#include "string_tables.inc"
}  // namespace

extern "C" __attribute__((visibility("default"))) const TeskResourceStringTable* TeskResourceStringTables() {
    return kTables;
}
