#include "printers.h"

#include <tesk/path.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <mutex>

#include <unistd.h>

#include "display.h"

namespace tesk::printers {
namespace {

std::mutex g_mutex;
std::wstring g_chosenDefault;

std::vector<Printer> TestPrinters() {
    std::vector<Printer> list;
    const char* spec = std::getenv("TESK_TEST_PRINTERS");
    if (!spec) return list;
    std::string all = spec;
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

std::string SpoolFolder() {
    if (const char* folder = std::getenv("TESK_TEST_PRINTER_SPOOL"); folder && *folder) return folder;
    return path::ConfigDirectory() + "/spool";
}

}  // namespace

std::vector<Printer> All() { return TestPrinters(); }

std::optional<Printer> Find(const wchar_t* name) {
    if (!name || !*name) return std::nullopt;
    for (const Printer& printer : All())
        if (display::SameDeviceName(printer.name, name)) return printer;
    return std::nullopt;
}

std::wstring DefaultName() {
    std::vector<Printer> list = All();
    std::lock_guard lock(g_mutex);
    for (const Printer& printer : list)
        if (!g_chosenDefault.empty() && display::SameDeviceName(printer.name, g_chosenDefault)) return printer.name;
    return list.empty() ? std::wstring() : list.front().name;
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

bool Submit(const Printer& printer, const std::string& pdfPath, const std::wstring& title) {
    (void)title;
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
