#include "host/imaging/ImagingError.h"

namespace {

class CVImagingError final : public TUnknownImpl<IVError> {
public:
    explicit CVImagingError(int code) : TUnknownImpl<IVError>(IID_IVImagingError), m_nCode(code) {}
    int GetCode() const override { return m_nCode; }

private:
    int m_nCode;
};

}  // namespace

IVError* VImaging_MakeError(int code) { return new CVImagingError(code); }
