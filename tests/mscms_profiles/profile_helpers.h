// Profiles for the MSCMS profile tests, made with Little CMS so that they do
// not come from the code under test.
#pragma once
#include <icm.h>
#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tesk::test {

using Bytes = std::vector<uint8_t>;

Bytes LcmsSrgbProfile();
HPROFILE OpenMemory(const Bytes& bytes, DWORD access = PROFILE_READ);
HPROFILE OpenFile(const std::wstring& path, DWORD access, DWORD creation);
// The profile as GetColorProfileFromHandle gives it; empty on failure.
Bytes BytesOf(HPROFILE profile);
Bytes TagOf(HPROFILE profile, TAGTYPE tag);
bool IsValid(const Bytes& bytes);
uint32_t BE32(const Bytes& bytes, size_t offset);
void PutBE32(Bytes& bytes, size_t offset, uint32_t value);
// Offset and size of a tag in raw profile bytes; false when absent.
bool FindTagEntry(const Bytes& bytes, uint32_t signature, size_t& entry);
std::wstring Wide(const std::string& text);

}  // namespace tesk::test
