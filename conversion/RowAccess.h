// One image's rows as the conversion loops see them, whichever kind of image
// holds them.
#pragma once
#include <windows.h>

#include "host/imaging/DibIterator.h"
#include "host/imaging/RowIterator.h"

class IRowAccess {
public:
    virtual ~IRowAccess() = default;
    virtual int Width() const = 0;
    virtual int Height() const = 0;
    // The stride the platform is told for a row.
    virtual DWORD Stride() const = 0;
    virtual BYTE* Row(int y) = 0;  // null when the row cannot be had
    virtual void Release(BYTE* row) = 0;
};

class CImageRows final : public IRowAccess {
public:
    explicit CImageRows(const CRowIterator& image) : m_image(const_cast<CRowIterator&>(image)) {}
    int Width() const override { return m_image.GetWidth(); }
    int Height() const override { return m_image.GetHeight(); }
    DWORD Stride() const override { return static_cast<DWORD>(m_image.GetBytesPerRow()); }
    BYTE* Row(int y) override { return m_image.GetRow(y); }
    void Release(BYTE*) override {}

private:
    CRowIterator& m_image;  // read-only where the caller's image is const
};

// DIB rows go to the platform unpadded: (bits per pixel x width + 7) / 8.
class CDibRows final : public IRowAccess {
public:
    explicit CDibRows(CDibIterator& dib) : m_dib(dib) {}
    int Width() const override { return m_dib.GetWidth(); }
    int Height() const override { return m_dib.GetHeight(); }
    DWORD Stride() const override { return static_cast<DWORD>((m_dib.GetBPP() * m_dib.GetWidth() + 7) / 8); }
    BYTE* Row(int y) override {
        BYTE* row = nullptr;
        if (IVError* error = m_dib.GetRow(y, 0, m_dib.GetWidth(), 0, &row)) error->Release();
        return row;
    }
    void Release(BYTE* row) override {
        if (row) m_dib.ReleaseRow(row);
    }

private:
    CDibIterator& m_dib;
};
