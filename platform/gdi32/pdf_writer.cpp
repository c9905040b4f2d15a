#include "pdf_writer.h"

#include <cstdio>

namespace tesk::gdi {
namespace {

// Objects 1 and 2 are the catalogue and the page tree, written last.
constexpr int kCatalog = 1;
constexpr int kPageTree = 2;

std::string Escaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '(' || c == ')' || c == '\\') out += '\\';
        out += c;
    }
    return out;
}

}  // namespace

PdfWriter::~PdfWriter() { Abandon(); }

bool PdfWriter::Open(const std::string& nativePath) {
    file_ = std::fopen(nativePath.c_str(), "wb");
    if (!file_) return false;
    offsets_.assign(2, 0);
    return Write("%PDF-1.4\n%\xE2\xE3\xCF\xD3\n");
}

int PdfWriter::NewObject() {
    offsets_.push_back(std::ftell(file_));
    return int(offsets_.size());
}

bool PdfWriter::Write(const std::string& text) {
    if (ok_ && file_) ok_ = std::fwrite(text.data(), 1, text.size(), file_) == text.size();
    return ok_;
}

bool PdfWriter::AddPage(int width, int height, int dpi, const std::vector<uint32_t>& pixels) {
    if (!file_ || width <= 0 || height <= 0 || dpi <= 0 || pixels.size() < size_t(width) * size_t(height))
        return false;
    const double pointsWide = width * 72.0 / dpi, pointsHigh = height * 72.0 / dpi;
    char text[512];

    int image = NewObject();
    std::snprintf(text, sizeof text,
                  "%d 0 obj\n<< /Type /XObject /Subtype /Image /Width %d /Height %d /ColorSpace /DeviceRGB "
                  "/BitsPerComponent 8 /Length %zu >>\nstream\n",
                  image, width, height, size_t(width) * size_t(height) * 3);
    Write(text);
    std::vector<uint8_t> row(size_t(width) * 3);
    for (int y = 0; y < height && ok_; ++y) {
        const uint32_t* line = pixels.data() + size_t(y) * size_t(width);
        for (int x = 0; x < width; ++x) {
            row[size_t(x) * 3] = uint8_t(line[x] >> 16);
            row[size_t(x) * 3 + 1] = uint8_t(line[x] >> 8);
            row[size_t(x) * 3 + 2] = uint8_t(line[x]);
        }
        ok_ = std::fwrite(row.data(), 1, row.size(), file_) == row.size();
    }
    Write("\nendstream\nendobj\n");

    char content[160];
    int contentLength = std::snprintf(content, sizeof content, "q %.3f 0 0 %.3f 0 0 cm /Im0 Do Q\n", pointsWide,
                                      pointsHigh);
    int contents = NewObject();
    std::snprintf(text, sizeof text, "%d 0 obj\n<< /Length %d >>\nstream\n%sendstream\nendobj\n", contents,
                  contentLength, content);
    Write(text);

    int page = NewObject();
    std::snprintf(text, sizeof text,
                  "%d 0 obj\n<< /Type /Page /Parent %d 0 R /MediaBox [0 0 %.3f %.3f] /Contents %d 0 R "
                  "/Resources << /XObject << /Im0 %d 0 R >> >> >>\nendobj\n",
                  page, kPageTree, pointsWide, pointsHigh, contents, image);
    Write(text);
    pages_.push_back(page);
    return ok_;
}

bool PdfWriter::Finish(const std::string& title) {
    if (!file_) return false;
    std::string kids;
    for (int page : pages_) kids += std::to_string(page) + " 0 R ";
    offsets_[kPageTree - 1] = std::ftell(file_);
    Write(std::to_string(kPageTree) + " 0 obj\n<< /Type /Pages /Kids [" + kids + "] /Count " +
          std::to_string(pages_.size()) + " >>\nendobj\n");
    offsets_[kCatalog - 1] = std::ftell(file_);
    Write(std::to_string(kCatalog) + " 0 obj\n<< /Type /Catalog /Pages " + std::to_string(kPageTree) +
          " 0 R >>\nendobj\n");
    int info = NewObject();
    Write(std::to_string(info) + " 0 obj\n<< /Title (" + Escaped(title) + ") >>\nendobj\n");
    long xref = std::ftell(file_);
    Write("xref\n0 " + std::to_string(offsets_.size() + 1) + "\n0000000000 65535 f \n");
    for (long offset : offsets_) {
        char entry[32];
        std::snprintf(entry, sizeof entry, "%010ld 00000 n \n", offset);
        Write(entry);
    }
    Write("trailer\n<< /Size " + std::to_string(offsets_.size() + 1) + " /Root " + std::to_string(kCatalog) +
          " 0 R /Info " + std::to_string(info) + " 0 R >>\nstartxref\n" + std::to_string(xref) + "\n%%EOF\n");
    bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    return ok_ && closed;
}

void PdfWriter::Abandon() {
    if (file_) std::fclose(file_);
    file_ = nullptr;
}

}  // namespace tesk::gdi
