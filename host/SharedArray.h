// vell::TSharedArray: a shared buffer with a separately allocated 32-bit
// reference count that starts at 1 and changes atomically; the last owner
// frees both.
#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <new>

namespace vell {

template <typename T>
class TSharedArray {
public:
    TSharedArray() = default;
    explicit TSharedArray(size_t count) : m_pData(new T[count]()), m_pCount(new std::atomic<int32_t>(1)), m_nSize(count) {}
    TSharedArray(const TSharedArray& other) : m_pData(other.m_pData), m_pCount(other.m_pCount), m_nSize(other.m_nSize) {
        if (m_pCount) m_pCount->fetch_add(1, std::memory_order_relaxed);
    }
    TSharedArray& operator=(const TSharedArray& other) {
        if (this != &other) {
            TSharedArray copy(other);
            Swap(copy);
        }
        return *this;
    }
    ~TSharedArray() { Release(); }

    // A new array holding `text` and its terminator (wide strings).
    static TSharedArray FromText(const T* text) {
        size_t length = 0;
        if (text)
            while (text[length]) ++length;
        TSharedArray result(length + 1);
        for (size_t i = 0; i < length; ++i) result.m_pData[i] = text[i];
        return result;
    }

    T* Get() const { return m_pData; }
    operator T*() const { return m_pData; }
    size_t GetSize() const { return m_nSize; }
    bool IsNull() const { return m_pData == nullptr; }
    int32_t UseCount() const { return m_pCount ? m_pCount->load() : 0; }
    void Reset() { Release(); }

    void Swap(TSharedArray& other) noexcept {
        std::swap(m_pData, other.m_pData);
        std::swap(m_pCount, other.m_pCount);
        std::swap(m_nSize, other.m_nSize);
    }

private:
    void Release() {
        if (m_pCount && m_pCount->fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete[] m_pData;
            delete m_pCount;
        }
        m_pData = nullptr;
        m_pCount = nullptr;
        m_nSize = 0;
    }

    T* m_pData = nullptr;
    std::atomic<int32_t>* m_pCount = nullptr;
    size_t m_nSize = 0;
};

}  // namespace vell
