// What CreateMultiProfileTransform and CreateColorTransformW build: the
// profile list, intents and flags, checked against lcms2 doing the same.
#include <gtest/gtest.h>

#include "transform_test_support.h"

namespace tesk::test {
namespace {

Bytes Translate(const Transform& transform, const Bytes& in, BMFORMAT from, BMFORMAT to, size_t outBytesPerPixel,
                DWORD pixels) {
    Bytes out(pixels * outBytesPerPixel);
    EXPECT_TRUE(TranslateBitmapBits(transform.Get(), const_cast<uint8_t*>(in.data()), from, pixels, 1, 0,
                                    out.data(), to, 0, nullptr, 0));
    return out;
}

// lcms2 over an explicit profile list with an intent for each entry.
Bytes LcmsChain(const std::vector<const Bytes*>& profiles, std::vector<cmsUInt32Number> intents,
                cmsUInt32Number flags, cmsUInt32Number inFormat, cmsUInt32Number outFormat, const Bytes& in,
                size_t pixels, size_t outBytesPerPixel) {
    std::vector<cmsHPROFILE> handles;
    for (const Bytes* bytes : profiles)
        handles.push_back(cmsOpenProfileFromMem(bytes->data(), static_cast<cmsUInt32Number>(bytes->size())));
    std::vector<cmsBool> bpc(handles.size(), FALSE);
    std::vector<cmsFloat64Number> adaptation(handles.size(), 1.0);
    cmsHTRANSFORM transform =
        cmsCreateExtendedTransform(nullptr, static_cast<cmsUInt32Number>(handles.size()), handles.data(), bpc.data(),
                                   intents.data(), adaptation.data(), nullptr, 0, inFormat, outFormat, flags);
    for (cmsHPROFILE handle : handles) cmsCloseProfile(handle);
    Bytes out(pixels * outBytesPerPixel);
    if (!transform) {
        ADD_FAILURE() << "lcms2 refused the reference transform";
        return out;
    }
    cmsDoTransform(transform, in.data(), out.data(), static_cast<cmsUInt32Number>(pixels));
    cmsDeleteTransform(transform);
    return out;
}

class TransformCreation : public IsolatedTest {
protected:
    // The noise pixels as FOGRA39 ink, through `transform` or through lcms2 from sRGB.
    Bytes Ink(const Transform& t) { return Translate(t, pixels_, BM_RGBTRIPLETS, BM_KYMCQUADS, 4, 4096); }
    Bytes LcmsInk(std::vector<cmsUInt32Number> intents, cmsUInt32Number flags = cmsFLAGS_HIGHRESPRECALC) {
        return LcmsChain({&srgb_, &fogra_}, intents, flags, TYPE_BGR_8, TYPE_CMYK_8, pixels_, 4096, 4);
    }

    Bytes srgb_ = SrgbProfileBytes();
    Bytes fogra_ = FograProfile();
    Bytes pixels_ = NoiseBytes(3 * 4096, 11);
};

TEST_F(TransformCreation, MiddleProfileIsDestinationThenSource) {
    Transform proof = MakeTransform({&srgb_, &fogra_, &srgb_}, {INTENT_RELATIVE_COLORIMETRIC});
    EXPECT_TRUE(Translate(proof, pixels_, BM_RGBTRIPLETS, BM_RGBTRIPLETS, 3, 4096) ==
                LcmsChain({&srgb_, &fogra_, &fogra_, &srgb_}, {1, 1, 1, 1}, cmsFLAGS_HIGHRESPRECALC, TYPE_BGR_8,
                          TYPE_BGR_8, pixels_, 4096, 3));
}

TEST_F(TransformCreation, EachProfileHasItsOwnIntentOrOneServesAllAndTheRelativeFlagWins) {
    Transform mixed = MakeTransform({&srgb_, &fogra_}, {INTENT_RELATIVE_COLORIMETRIC, INTENT_ABSOLUTE_COLORIMETRIC});
    Transform one = MakeTransform({&srgb_, &fogra_}, {INTENT_ABSOLUTE_COLORIMETRIC});
    Transform both = MakeTransform({&srgb_, &fogra_}, {INTENT_ABSOLUTE_COLORIMETRIC, INTENT_ABSOLUTE_COLORIMETRIC});
    Transform relative = MakeTransform({&srgb_, &fogra_}, {INTENT_RELATIVE_COLORIMETRIC});
    // The flag drops the white point of an absolute transform.
    Transform flagged =
        MakeTransform({&srgb_, &fogra_}, {INTENT_ABSOLUTE_COLORIMETRIC}, BEST_MODE | USE_RELATIVE_COLORIMETRIC);
    EXPECT_TRUE(Ink(mixed) == LcmsInk({1, 3}));
    const Bytes oneOut = Ink(one), relativeOut = Ink(relative);
    EXPECT_TRUE(oneOut == Ink(both));
    EXPECT_FALSE(oneOut == relativeOut);
    EXPECT_TRUE(Ink(flagged) == relativeOut);
}

TEST_F(TransformCreation, ModesChooseLcms2Precision) {
    const std::pair<DWORD, cmsUInt32Number> modes[] = {
        {BEST_MODE, cmsFLAGS_HIGHRESPRECALC}, {NORMAL_MODE, 0}, {PROOF_MODE, cmsFLAGS_LOWRESPRECALC}};
    std::vector<Bytes> results;
    for (const auto& [mode, lcmsFlags] : modes) {
        Transform transform = MakeTransform({&srgb_, &fogra_}, {INTENT_PERCEPTUAL}, mode);
        results.push_back(Ink(transform));
        EXPECT_TRUE(results.back() == LcmsInk({0, 0}, lcmsFlags)) << "mode " << mode;
    }
    EXPECT_FALSE(results[0] == results[2]);
}

// Our extension flag: the same ink as lcms2's own black-point compensation
// (what tificc -b does), and different ink from a transform without it.
TEST_F(TransformCreation, BlackPointCompensationIsLcms2sAndOnlyWhenAsked) {
    cmsHPROFILE srgb = cmsOpenProfileFromMem(srgb_.data(), static_cast<cmsUInt32Number>(srgb_.size()));
    cmsHPROFILE fogra = cmsOpenProfileFromMem(fogra_.data(), static_cast<cmsUInt32Number>(fogra_.size()));
    cmsHTRANSFORM reference = cmsCreateTransform(srgb, TYPE_BGR_8, fogra, TYPE_CMYK_8, INTENT_RELATIVE_COLORIMETRIC,
                                                 cmsFLAGS_HIGHRESPRECALC | cmsFLAGS_BLACKPOINTCOMPENSATION);
    cmsCloseProfile(srgb);
    cmsCloseProfile(fogra);
    ASSERT_NE(reference, nullptr);
    Bytes expected(4096 * 4);
    cmsDoTransform(reference, pixels_.data(), expected.data(), 4096);
    cmsDeleteTransform(reference);

    const Bytes compensated = Ink(MakeTransform({&srgb_, &fogra_}, {INTENT_RELATIVE_COLORIMETRIC},
                                                BEST_MODE | TESK_BLACK_POINT_COMPENSATION));
    EXPECT_TRUE(compensated == expected);
    EXPECT_FALSE(Ink(MakeTransform({&srgb_, &fogra_}, {INTENT_RELATIVE_COLORIMETRIC})) == compensated);
}

TEST_F(TransformCreation, GamutCheckingMarksWhatTheLastProfileCannotPrint) {
    Transform checking =
        MakeTransform({&srgb_, &fogra_}, {INTENT_RELATIVE_COLORIMETRIC}, BEST_MODE | ENABLE_GAMUT_CHECKING);
    Transform plain = MakeTransform({&srgb_, &fogra_}, {INTENT_RELATIVE_COLORIMETRIC});
    const Bytes blueAndGray = {255, 0, 0, 128, 128, 128};  // B,G,R
    const Bytes checked = Translate(checking, blueAndGray, BM_RGBTRIPLETS, BM_KYMCQUADS, 4, 2);
    const Bytes unchecked = Translate(plain, blueAndGray, BM_RGBTRIPLETS, BM_KYMCQUADS, 4, 2);
    const Bytes alarm = {0x7F, 0x7F, 0x7F, 0};  // lcms2's default alarm codes
    EXPECT_EQ(Bytes(checked.begin(), checked.begin() + 4), alarm);
    EXPECT_NE(Bytes(unchecked.begin(), unchecked.begin() + 4), alarm);
    EXPECT_EQ(Bytes(checked.begin() + 4, checked.end()), Bytes(unchecked.begin() + 4, unchecked.end()));
}

TEST_F(TransformCreation, DeviceLinkStandsAloneButMustFitItsNeighbours) {
    cmsHPROFILE cmyk = cmsOpenProfileFromMem(fogra_.data(), static_cast<cmsUInt32Number>(fogra_.size()));
    cmsHPROFILE rgb = cmsCreate_sRGBProfile();
    cmsHTRANSFORM cmykToRgb = cmsCreateTransform(cmyk, TYPE_CMYK_8, rgb, TYPE_RGB_8, INTENT_PERCEPTUAL, 0);
    const Bytes link = SavedProfile(cmsTransform2DeviceLink(cmykToRgb, 4.3, 0));
    cmsDeleteTransform(cmykToRgb);
    cmsCloseProfile(cmyk);
    cmsCloseProfile(rgb);

    Transform alone = MakeTransform({&link}, {INTENT_PERCEPTUAL});
    const Bytes ink = NoiseBytes(4 * 100, 12);
    EXPECT_TRUE(Translate(alone, ink, BM_KYMCQUADS, BM_BGRTRIPLETS, 3, 100) ==
                LcmsChain({&link}, {0}, cmsFLAGS_HIGHRESPRECALC, TYPE_CMYK_8, TYPE_RGB_8, ink, 100, 3));
    EXPECT_TRUE(TryMakeTransform({&srgb_, &fogra_, &link}, {INTENT_PERCEPTUAL}));

    SetLastError(0);
    EXPECT_TRUE(FailsWith(TryMakeTransform({&srgb_, &link}, {INTENT_PERCEPTUAL}), ERROR_COLORSPACE_MISMATCH));
    EXPECT_FALSE(TryMakeTransform({&srgb_}, {INTENT_PERCEPTUAL}));  // one profile must be a link
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(TransformCreation, BadArgumentsGiveNullAndAReason) {
    OpenedProfile a(srgb_), b(fogra_);
    HPROFILE profiles[2] = {a.Get(), b.Get()};
    DWORD intents[3] = {0, 0, 0};
    auto create = [&](PHPROFILE list, DWORD count, PDWORD intentList, DWORD intentCount) {
        SetLastError(0);
        HTRANSFORM transform = CreateMultiProfileTransform(list, count, intentList, intentCount, BEST_MODE, 0);
        EXPECT_EQ(transform, nullptr);
        if (transform) DeleteColorTransform(transform);
        return GetLastError();
    };
    EXPECT_EQ(create(nullptr, 2, intents, 2), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(create(profiles, 0, intents, 1), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(create(profiles, 2, nullptr, 2), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(create(profiles, 2, intents, 3), DWORD{ERROR_INVALID_PARAMETER});
    intents[1] = 4;
    EXPECT_EQ(create(profiles, 2, intents, 2), DWORD{ERROR_INVALID_PARAMETER});
    intents[1] = 0;
    HPROFILE foreign[2] = {a.Get(), reinterpret_cast<HPROFILE>(0x4321)};
    EXPECT_EQ(create(foreign, 2, intents, 2), DWORD{ERROR_INVALID_HANDLE});

    // A header the container accepts but without the 'acsp' mark lcms2 wants.
    Bytes unmarked(fogra_.begin(), fogra_.end());
    unmarked[36] = 'x';
    OpenedProfile broken(unmarked);
    HPROFILE withBroken[2] = {a.Get(), broken.Get()};
    EXPECT_EQ(create(withBroken, 2, intents, 2), DWORD{ERROR_INVALID_PROFILE});

    // Matrix shapers whose destination matrix is singular: lcms2 refuses the
    // join, and creation must say so even where joins wait for first use.
    cmsHPROFILE flat = cmsOpenProfileFromMem(srgb_.data(), static_cast<cmsUInt32Number>(srgb_.size()));
    const cmsCIEXYZ red = *static_cast<const cmsCIEXYZ*>(cmsReadTag(flat, cmsSigRedColorantTag));
    cmsWriteTag(flat, cmsSigGreenColorantTag, &red);
    OpenedProfile singular(SavedProfile(flat));
    HPROFILE toSingular[2] = {a.Get(), singular.Get()};
    EXPECT_EQ(create(toSingular, 2, intents, 2), DWORD{ERROR_INVALID_TRANSFORM});

    // Class, data space and connection space outside ICC.1 (the fuzzer's find:
    // such a word once reached lcms2's enumerations).
    for (size_t offset : {12, 16, 20}) {
        Bytes unknown(fogra_.begin(), fogra_.end());
        unknown[offset] = 0x93;
        OpenedProfile odd(unknown);
        HPROFILE withOdd[2] = {a.Get(), odd.Get()};
        EXPECT_EQ(create(withOdd, 2, intents, 2), DWORD{ERROR_INVALID_PROFILE}) << offset;
    }
}

TEST_F(TransformCreation, DeletingOneOfTwoIdenticalTransformsLeavesTheOther) {
    Transform first = MakeTransform({&srgb_, &fogra_}, {INTENT_PERCEPTUAL});
    HTRANSFORM second = MakeTransform({&srgb_, &fogra_}, {INTENT_PERCEPTUAL}).Get();  // deleted on return
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, first.Get());
    SetLastError(0);
    EXPECT_TRUE(FailsWith(DeleteColorTransform(second), ERROR_INVALID_HANDLE));
    EXPECT_TRUE(Ink(first) == LcmsInk({0, 0}));
}

class ColorTransformFromLogColorSpace : public TransformCreation {
protected:
    Bytes BuiltInSrgb() {
        WCHAR name[MAX_PATH];
        DWORD size = sizeof name;
        EXPECT_TRUE(GetStandardColorSpaceProfileW(nullptr, LCS_sRGB, name, &size));
        return ReadBytes(env_.ColorDir() + "/sRGB Color Space Profile.icm");
    }
    static LOGCOLORSPACEW Srgb(LONG intent) {
        LOGCOLORSPACEW space{};
        space.lcsSignature = LCS_SIGNATURE;
        space.lcsVersion = 0x400;
        space.lcsSize = sizeof space;
        space.lcsCSType = LCS_sRGB;
        space.lcsIntent = intent;
        return space;
    }
};

TEST_F(ColorTransformFromLogColorSpace, SourceToDestinationWithTheSpacesIntent) {
    const Bytes builtIn = BuiltInSrgb();
    OpenedProfile destination(fogra_);
    LOGCOLORSPACEW space = Srgb(LCS_GM_BUSINESS);
    Transform transform(CreateColorTransformW(&space, destination.Get(), nullptr, BEST_MODE));
    EXPECT_TRUE(Ink(transform) == LcmsChain({&builtIn, &fogra_}, {2, 2}, cmsFLAGS_HIGHRESPRECALC, TYPE_BGR_8,
                                            TYPE_CMYK_8, pixels_, 4096, 4));
}

TEST_F(ColorTransformFromLogColorSpace, ProofingThroughATargetKeepsItsPaperUnlessRelative) {
    const Bytes builtIn = BuiltInSrgb();
    OpenedProfile target(fogra_), destination(srgb_);
    LOGCOLORSPACEW space = Srgb(LCS_GM_IMAGES);
    Transform absolute(CreateColorTransformW(&space, destination.Get(), target.Get(), BEST_MODE));
    Transform relative(
        CreateColorTransformW(&space, destination.Get(), target.Get(), BEST_MODE | USE_RELATIVE_COLORIMETRIC));
    ASSERT_TRUE(absolute && relative);
    const std::vector<const Bytes*> chain = {&builtIn, &fogra_, &fogra_, &srgb_};
    EXPECT_TRUE(Translate(absolute, pixels_, BM_RGBTRIPLETS, BM_RGBTRIPLETS, 3, 4096) ==
                LcmsChain(chain, {0, 0, 3, 3}, cmsFLAGS_HIGHRESPRECALC, TYPE_BGR_8, TYPE_BGR_8, pixels_, 4096, 3));
    EXPECT_TRUE(Translate(relative, pixels_, BM_RGBTRIPLETS, BM_RGBTRIPLETS, 3, 4096) ==
                LcmsChain(chain, {0, 0, 1, 1}, cmsFLAGS_HIGHRESPRECALC, TYPE_BGR_8, TYPE_BGR_8, pixels_, 4096, 3));
}

TEST_F(ColorTransformFromLogColorSpace, BadArgumentsFail) {
    OpenedProfile destination(fogra_);
    LOGCOLORSPACEW space = Srgb(LCS_GM_IMAGES);
    SetLastError(0);
    EXPECT_EQ(CreateColorTransformW(nullptr, destination.Get(), nullptr, BEST_MODE), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    space.lcsIntent = 0;
    EXPECT_EQ(CreateColorTransformW(&space, destination.Get(), nullptr, BEST_MODE), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    space.lcsIntent = LCS_GM_IMAGES;
    EXPECT_EQ(CreateColorTransformW(&space, reinterpret_cast<HPROFILE>(0x99), nullptr, BEST_MODE), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

TEST_F(TransformCreation, CmmInfoNamesLcms2) {
    Transform transform = MakeTransform({&srgb_, &fogra_}, {INTENT_PERCEPTUAL});
    EXPECT_EQ(GetCMMInfo(transform.Get(), CMM_IDENT), DWORD('lcms'));
    EXPECT_EQ(GetCMMInfo(transform.Get(), CMM_DLL_VERSION), DWORD(cmsGetEncodedCMMversion()));
    EXPECT_EQ(GetCMMInfo(transform.Get(), CMM_WIN_VERSION), 0x00050000u);
    EXPECT_EQ(GetCMMInfo(transform.Get(), CMM_LOGOICON), 0u);
    SetLastError(0);
    EXPECT_EQ(GetCMMInfo(reinterpret_cast<HTRANSFORM>(0x77), CMM_IDENT), 0u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

}  // namespace
}  // namespace tesk::test
