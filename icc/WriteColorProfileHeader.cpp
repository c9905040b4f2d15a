// The writer's profile header: program defaults, the stored fields and their
// setters, and the size derived from the tags written so far.
#include <tesk/local_time.h>

#include <cstring>
#include <ctime>

#include "icc/ICCWriteColorProfile.h"

namespace {

constexpr uint32_t kVersion210 = 0x02100000;
constexpr uint32_t kD50X = 0x0000F6D6;
constexpr uint32_t kD50Y = 0x00010000;
constexpr uint32_t kD50Z = 0x0000D32D;

// (year << 16 | month), (day << 16 | hour), (minute << 16 | second) of the
// local time; without a local time the fields fall back one by one to values
// files written that way already carry.
void LocalDateTimeWords(uint32_t words[3]) {
    uint32_t year = 0, month = 0, day = 0, hour = 65535, minute = 0xFFFF, second = 65535;
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (now != static_cast<std::time_t>(-1) && tesk::LocalTime(now, local)) {
        year = static_cast<uint32_t>(local.tm_year + 1900);
        month = static_cast<uint32_t>(local.tm_mon + 1);
        day = static_cast<uint32_t>(local.tm_mday);
        hour = static_cast<uint32_t>(local.tm_hour);
        minute = static_cast<uint32_t>(local.tm_min);
        second = static_cast<uint32_t>(local.tm_sec);
    }
    words[0] = (year << 16) | (month & 0xFFFF);
    words[1] = (day << 16) | (hour & 0xFFFF);
    words[2] = (minute << 16) | (second & 0xFFFF);
}

}  // namespace

void CICCWriteColorProfile::InitHeaderFields() {
    // A writer whose fields are never set still builds a usable display header.
    m_nCMMType = CMM_WINDOWS_DEFAULT;
    m_nHeaderClass = CLASS_MONITOR;
    m_nHeaderDataColorSpace = SPACE_RGB;
    m_nHeaderConnectionSpace = SPACE_XYZ;
    LocalDateTimeWords(m_nHeaderDateTime);
    m_nHeaderSignature = 'acsp';
    m_nHeaderPlatform = 'MSFT';
    m_nHeaderProfileFlags = 0;
    m_nHeaderManufacturer = 'none';
    m_nHeaderModel = 0;
    m_nHeaderAttributes[0] = m_nHeaderAttributes[1] = 0;
    m_nHeaderRenderingIntent = INTENT_PERCEPTUAL;
    SetHeaderIlluminant();
    m_nHeaderCreator = m_nCMMType;
}

void CICCWriteColorProfile::FillHeaderCommon(PROFILEHEADER& header) {
    header.phSize = 132 + 12 * m_nTagCount + m_nTagDataTotal;
    header.phCMMType = m_nCMMType;
    header.phVersion = kVersion210;
}

void CICCWriteColorProfile::SetDefaultHeader(PROFILEHEADER& header) {
    std::memset(&header, 0, sizeof header);
    FillHeaderCommon(header);
    header.phClass = CLASS_MONITOR;
    header.phDataColorSpace = SPACE_RGB;
    header.phConnectionSpace = SPACE_XYZ;
    uint32_t dateTime[3];
    LocalDateTimeWords(dateTime);
    for (int i = 0; i < 3; ++i) header.phDateTime[i] = dateTime[i];
    header.phSignature = 'acsp';
    header.phPlatform = 'MSFT';
    header.phProfileFlags = 0;
    header.phManufacturer = 'none';
    header.phModel = 0;
    header.phRenderingIntent = INTENT_PERCEPTUAL;
    header.phIlluminant.ciexyzX = static_cast<LONG>(kD50X);
    header.phIlluminant.ciexyzY = static_cast<LONG>(kD50Y);
    header.phIlluminant.ciexyzZ = static_cast<LONG>(kD50Z);
    header.phCreator = m_nCMMType;
}

void CICCWriteColorProfile::CreateProfileHeader(PROFILEHEADER& header) {
    std::memset(&header, 0, sizeof header);
    FillHeaderCommon(header);
    header.phClass = m_nHeaderClass;
    header.phDataColorSpace = m_nHeaderDataColorSpace;
    header.phConnectionSpace = m_nHeaderConnectionSpace;
    for (int i = 0; i < 3; ++i) header.phDateTime[i] = m_nHeaderDateTime[i];
    header.phSignature = m_nHeaderSignature;
    header.phPlatform = m_nHeaderPlatform;
    header.phProfileFlags = m_nHeaderProfileFlags;
    header.phManufacturer = m_nHeaderManufacturer;
    header.phModel = m_nHeaderModel;
    header.phAttributes[0] = m_nHeaderAttributes[0];
    header.phAttributes[1] = m_nHeaderAttributes[1];
    header.phRenderingIntent = m_nHeaderRenderingIntent;
    header.phIlluminant.ciexyzX = static_cast<LONG>(m_nHeaderIlluminant[0]);
    header.phIlluminant.ciexyzY = static_cast<LONG>(m_nHeaderIlluminant[1]);
    header.phIlluminant.ciexyzZ = static_cast<LONG>(m_nHeaderIlluminant[2]);
    header.phCreator = m_nHeaderCreator;
}

bool CICCWriteColorProfile::SetDefaultProfileHeader() {
    if (!m_hProfile) return false;
    PROFILEHEADER header;
    SetDefaultHeader(header);
    return SetProfileHeader(header);
}

bool CICCWriteColorProfile::SetProfileHeader(PROFILEHEADER& header) {
    if (!m_hProfile || !m_pfnSetColorProfileHeader) return false;
    return m_pfnSetColorProfileHeader(m_hProfile, &header) != FALSE;
}

void CICCWriteColorProfile::SetHeaderClass(unsigned long profileClass) {
    m_nHeaderClass = static_cast<uint32_t>(profileClass);
}
void CICCWriteColorProfile::SetHeaderConnectionColorSpace(unsigned long space) {
    m_nHeaderConnectionSpace = static_cast<uint32_t>(space);
}
void CICCWriteColorProfile::SetHeaderDataColorSpace(unsigned long space) {
    m_nHeaderDataColorSpace = static_cast<uint32_t>(space);
}
void CICCWriteColorProfile::SetHeaderManufacturer(unsigned long manufacturer) {
    m_nHeaderManufacturer = static_cast<uint32_t>(manufacturer);
}
void CICCWriteColorProfile::SetHeaderModel(unsigned long model) { m_nHeaderModel = static_cast<uint32_t>(model); }
void CICCWriteColorProfile::SetHeaderPlatform(unsigned long platform) {
    m_nHeaderPlatform = static_cast<uint32_t>(platform);
}
void CICCWriteColorProfile::SetHeaderProfileFlags(unsigned long flags) {
    m_nHeaderProfileFlags = static_cast<uint32_t>(flags);
}
void CICCWriteColorProfile::SetHeaderRenderingIntent(unsigned long intent) {
    m_nHeaderRenderingIntent = static_cast<uint32_t>(intent);
}

void CICCWriteColorProfile::SetHeaderDateTime(unsigned long* words, int count) {
    if (count != 3 || !words) return;
    for (int i = 0; i < 3; ++i) m_nHeaderDateTime[i] = static_cast<uint32_t>(words[i]);
}

void CICCWriteColorProfile::SetHeaderIlluminant() {
    m_nHeaderIlluminant[0] = kD50X;
    m_nHeaderIlluminant[1] = kD50Y;
    m_nHeaderIlluminant[2] = kD50Z;
}

void CICCWriteColorProfile::SetHeaderAttributes(bool reflective, bool glossy, bool positive, bool colour) {
    // ICC's bits name the opposites: transparency, matte, negative, black and white.
    m_nHeaderAttributes[0] = 0;
    m_nHeaderAttributes[1] = (reflective ? 0u : 1u) | (glossy ? 0u : 2u) | (positive ? 0u : 4u) | (colour ? 0u : 8u);
}
