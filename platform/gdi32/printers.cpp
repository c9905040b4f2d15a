#include "printers.h"

#include <tesk/path.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>

#include <unistd.h>

#include "display.h"
#include "ppd_profiles.h"

#ifdef TESK_HAVE_CUPS
#include "cups_library.h"
#endif

namespace tesk::printers {
namespace {

std::mutex g_mutex;
std::wstring g_chosenDefault;

std::vector<Printer> TestPrinters() {
    std::vector<Printer> list;
    const char* configured = std::getenv("TESK_TEST_PRINTERS");
    if (!configured) return list;
    std::string all = configured;
    size_t start = 0;
    while (start <= all.size()) {
        size_t end = all.find(';', start);
        if (end == std::string::npos) end = all.size();
        std::string entry = all.substr(start, end - start);
        start = end + 1;
        if (entry.empty()) continue;
        Printer printer;
        size_t equals = entry.find('=');
        printer.name = path::Wide(entry.substr(0, equals));
        if (equals != std::string::npos) printer.driverProfile = entry.substr(equals + 1);
        printer.driver = L"Tesk Test Printer";
        printer.port = L"FILE:";
        printer.dpi = 100;  // keeps test pages small
        if (!printer.name.empty()) list.push_back(printer);
    }
    return list;
}

bool TestPrintersNamed() { return std::getenv("TESK_TEST_PRINTERS") != nullptr; }

#ifdef TESK_HAVE_CUPS
std::wstring OptionText(const CupsLibrary& cups, const cups_dest_t& dest, const char* name) {
    const char* value = cups.getOption(name, dest.num_options, dest.options);
    return value ? path::Wide(value) : std::wstring();
}

std::vector<Printer> CupsPrinters(std::wstring* defaultName) {
    std::vector<Printer> list;
    const CupsLibrary* cups = Cups();
    if (!cups) return list;
    cups_dest_t* dests = nullptr;
    int count = cups->getDests2(CUPS_HTTP_DEFAULT, &dests);
    for (int i = 0; i < count; ++i) {
        if (dests[i].instance) continue;  // instances are option sets of a printer, not printers
        Printer printer;
        printer.name = path::Wide(dests[i].name);
        printer.driver = OptionText(*cups, dests[i], "printer-make-and-model");
        if (printer.driver.empty()) printer.driver = L"CUPS";
        printer.port = OptionText(*cups, dests[i], "device-uri");
        if (printer.port.empty()) printer.port = L"CUPS:";
        printer.cups = true;
        if (dests[i].is_default && defaultName) *defaultName = printer.name;
        list.push_back(printer);
    }
    cups->freeDests(count, dests);
    return list;
}

std::string PpdProfileOf(const std::wstring& name) {
    const CupsLibrary* cups = Cups();
    const char* ppd = cups ? cups->getPPD(path::Utf8(name).c_str()) : nullptr;
    if (!ppd) return "";
    std::ifstream in(ppd, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    unlink(ppd);
    const char* data = std::getenv("CUPS_DATADIR");
    std::string profile = ChoosePpdProfile(ParsePpdColorInfo(text), std::string(data && *data ? data : "/usr/share/cups") + "/profiles");
    std::error_code error;
    return std::filesystem::is_regular_file(profile, error) ? profile : "";
}
#endif

std::vector<Printer> Listed(std::wstring* defaultName) {
    if (TestPrintersNamed()) {
        std::vector<Printer> list = TestPrinters();
        if (defaultName && !list.empty()) *defaultName = list.front().name;
        return list;
    }
#ifdef TESK_HAVE_CUPS
    return CupsPrinters(defaultName);
#else
    return {};
#endif
}

std::string SpoolFolder() {
    if (const char* folder = std::getenv("TESK_TEST_PRINTER_SPOOL"); folder && *folder) return folder;
    return path::ConfigDirectory() + "/spool";
}

}  // namespace

std::vector<Printer> All() { return Listed(nullptr); }

std::optional<Printer> Find(const wchar_t* name) {
    if (!name || !*name) return std::nullopt;
    for (Printer& printer : All())
        if (display::SameDeviceName(printer.name, name)) {
#ifdef TESK_HAVE_CUPS
            if (printer.cups) printer.driverProfile = PpdProfileOf(printer.name);
#endif
            return printer;
        }
    return std::nullopt;
}

std::wstring DefaultName() {
    std::wstring systemDefault;
    std::vector<Printer> list = Listed(&systemDefault);
    std::lock_guard lock(g_mutex);
    for (const Printer& printer : list)
        if (!g_chosenDefault.empty() && display::SameDeviceName(printer.name, g_chosenDefault)) return printer.name;
    return systemDefault;
}

bool SetDefaultName(const std::wstring& name) {
    std::optional<Printer> printer = Find(name.c_str());
    if (!printer) {
        SetLastError(ERROR_INVALID_PRINTER_NAME);
        return false;
    }
    std::lock_guard lock(g_mutex);
    g_chosenDefault = printer->name;
    return true;
}

bool Submit(const Printer& printer, const std::string& pdfPath, const std::wstring& title, int copies) {
#ifdef TESK_HAVE_CUPS
    if (const CupsLibrary* cups = printer.cups ? Cups() : nullptr) {
        cups_option_t* options = nullptr;
        int count = 0;
        if (copies > 1) count = cups->addOption("copies", std::to_string(copies).c_str(), count, &options);
        std::string name = path::Utf8(printer.name), titleText = path::Utf8(title);
        int job = cups->printFile2(CUPS_HTTP_DEFAULT, name.c_str(), pdfPath.c_str(),
                                   titleText.empty() ? "Document" : titleText.c_str(), count, options);
        cups->freeOptions(count, options);
        if (job <= 0) SetLastError(ERROR_WRITE_FAULT);
        return job > 0;
    }
#endif
    (void)title;
    (void)copies;
    static std::atomic<unsigned> jobNumber{0};
    std::error_code error;
    std::string folder = SpoolFolder();
    std::filesystem::create_directories(folder, error);
    std::string target = folder + "/" + path::Utf8(printer.name) + "-" + std::to_string(getpid()) + "-" +
                         std::to_string(++jobNumber) + ".pdf";
    std::filesystem::copy_file(pdfPath, target, std::filesystem::copy_options::overwrite_existing, error);
    if (error) {
        SetLastError(ERROR_WRITE_FAULT);
        return false;
    }
    return true;
}

}  // namespace tesk::printers
