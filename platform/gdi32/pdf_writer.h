// A PDF document of raster pages, written page by page so that a long job
// never holds more than one page in memory.
#pragma once
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace tesk::gdi {

class PdfWriter {
public:
    PdfWriter() = default;
    ~PdfWriter();
    PdfWriter(const PdfWriter&) = delete;
    PdfWriter& operator=(const PdfWriter&) = delete;

    bool Open(const std::string& nativePath);
    // `pixels` are 0x00RRGGBB, top row first; `dpi` gives the page's size.
    bool AddPage(int width, int height, int dpi, const std::vector<uint32_t>& pixels);
    // Writes the page tree and cross-reference table and closes the file.
    bool Finish(const std::string& title);
    void Abandon();

private:
    int NewObject();
    bool Write(const std::string& text);

    std::FILE* file_ = nullptr;
    bool ok_ = true;
    std::vector<long> offsets_;  // by object number - 1
    std::vector<int> pages_;
};

}  // namespace tesk::gdi
