#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <new>

// Every block carries a header in front of the caller's bytes, so that a
// pointer into a fixed block leads back to its handle and size. Fixed and
// moveable blocks are alike here: a handle is the block's data pointer.
namespace {

struct alignas(16) BlockHeader {
    uint64_t magic;
    SIZE_T size;
};
constexpr uint64_t kBlockMagic = 0x5445534B474D454DULL;  // "TESKGMEM"

BlockHeader* HeaderOf(LPCVOID data) {
    if (!data) return nullptr;
    auto* header = reinterpret_cast<BlockHeader*>(const_cast<void*>(data)) - 1;
    return header->magic == kBlockMagic ? header : nullptr;
}

HGLOBAL Allocate(UINT flags, SIZE_T bytes) {
    if (bytes > SIZE_MAX - sizeof(BlockHeader)) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    void* raw = (flags & GMEM_ZEROINIT) ? std::calloc(1, sizeof(BlockHeader) + bytes)
                                        : std::malloc(sizeof(BlockHeader) + bytes);
    if (!raw) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    auto* header = static_cast<BlockHeader*>(raw);
    header->magic = kBlockMagic;
    header->size = bytes;
    return header + 1;
}

HGLOBAL Free(HGLOBAL block) {
    if (!block) return nullptr;
    BlockHeader* header = HeaderOf(block);
    if (!header) {
        SetLastError(ERROR_INVALID_HANDLE);
        return block;
    }
    header->magic = 0;
    std::free(header);
    return nullptr;
}

}  // namespace

TESK_WIN32_API HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T bytes) { return Allocate(flags, bytes); }
TESK_WIN32_API HGLOBAL WINAPI GlobalFree(HGLOBAL block) { return Free(block); }
TESK_WIN32_API LPVOID WINAPI GlobalLock(HGLOBAL block) { return HeaderOf(block) ? block : nullptr; }
TESK_WIN32_API BOOL WINAPI GlobalUnlock(HGLOBAL) { return FALSE; }
TESK_WIN32_API HGLOBAL WINAPI GlobalHandle(LPCVOID data) {
    if (!HeaderOf(data)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    return const_cast<void*>(data);
}
TESK_WIN32_API SIZE_T WINAPI GlobalSize(HGLOBAL block) {
    BlockHeader* header = HeaderOf(block);
    return header ? header->size : 0;
}
TESK_WIN32_API HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T bytes) { return Allocate(flags, bytes); }
TESK_WIN32_API HLOCAL WINAPI LocalFree(HLOCAL block) { return Free(block); }
TESK_WIN32_API SIZE_T WINAPI LocalSize(HLOCAL block) { return GlobalSize(block); }
