// Raw tag bytes through every decoder of the profile reader.
#include <cstdint>
#include <string>

#include "host/VException.h"
#include "icc/TagDecoders.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tesk::icc;
    const TagBytes tag(data, size);

    SICCCurveType curve{};
    try {
        DecodeCurve(tag, curve);
        FitGamma(curve);
        IsSrgbCurve(curve);
        CurvesAgree(curve, curve, curve);
    } catch (const CVException&) {
    }
    delete[] curve.m_pEntries;

    SICCParametricCurveType para{};
    DecodeParametricCurve(tag, para);
    DecodeParametricWords(tag, para, size ? data[0] : 0);

    SVCGTGamma gamma{};
    if (DecodeVCGT(tag, gamma) && gamma.m_nGammaType == kVCGTTable) delete[] gamma.m_table.m_pData;

    SMyXYZNumber xyz{};
    DecodeXYZ(tag, xyz);
    double matrix[9];
    DecodeMatrix(tag, matrix);

    DecodeDescAscii(tag);
    DecodeDescWide(tag);
    DecodeTextType(tag);
    std::wstring text;
    DecodeMlucFirstRecord(tag, text);
    return 0;
}
