// Printers seen by GDI32 and the spooler calls: CUPS destinations (the CUPS
// default destination is the default printer), or, when a test names
// printers in TESK_TEST_PRINTERS ("Name[=profile path];Name2..."; the profile
// stands for the one a printer driver would supply), those, the first being
// the default. Without CUPS and test printers the list is empty.
#pragma once
#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace tesk::printers {

struct Printer {
    std::wstring name;
    std::wstring driver;
    std::wstring port;
    std::string driverProfile;  // Linux path of the driver's own profile, or ""
    int dpi = 300;
    bool cups = false;
};

std::vector<Printer> All();
// With its driver's profile looked up (a CUPS printer's PPD is asked).
std::optional<Printer> Find(const wchar_t* name);
// The default printer: the one SetDefaultPrinterW chose in this process,
// else the first of the list. Empty when there are no printers.
std::wstring DefaultName();
bool SetDefaultName(const std::wstring& name);

// Hands a finished document (a PDF file) to the printer; false with last
// error set when it cannot. The file is the caller's to delete.
bool Submit(const Printer& printer, const std::string& pdfPath, const std::wstring& title, int copies);

}  // namespace tesk::printers
