// String tables of a resource module (such as TeskColorMgrRC): the module
// exports TeskResourceStringTables, a list ending with a null language.
#pragma once
#include "../windef.h"

struct TeskResourceString {
    UINT id;
    const wchar_t* text;
};

struct TeskResourceStringTable {
    const char* language;  // "en-us", "de-de", ... (lower case)
    const TeskResourceString* strings;
    UINT count;
};

typedef const TeskResourceStringTable* (*PFN_TeskResourceStringTables)();
