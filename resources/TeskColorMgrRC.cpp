#include <tesk/resource.h>

// Profile file names are the same in every language: they name files.
namespace {

const TeskResourceString kEnglish[] = {
    {10401, L"sRGB Color Space Profile.icm"},
    {10402, L"ISO Coated (FOGRA39).icc"},
    {10403, L"SWOP Coated (TR003).icc"},
};

const TeskResourceString kGerman[] = {
    {10401, L"sRGB Color Space Profile.icm"},
    {10402, L"ISO Coated (FOGRA39).icc"},
    {10403, L"SWOP Coated (TR003).icc"},
};

const TeskResourceStringTable kTables[] = {
    {"en-us", kEnglish, sizeof kEnglish / sizeof kEnglish[0]},
    {"de-de", kGerman, sizeof kGerman / sizeof kGerman[0]},
    {nullptr, nullptr, 0},
};

}  // namespace

extern "C" __attribute__((visibility("default"))) const TeskResourceStringTable* TeskResourceStringTables() {
    return kTables;
}
