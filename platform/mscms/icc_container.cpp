#include "icc_container.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include <tesk/big_endian.h>

namespace tesk::mscms {

namespace {

constexpr size_t kTagCountOffset = 128;
constexpr size_t kTagTableOffset = 132;

size_t AlignTo4(size_t value) { return (value + 3) & ~size_t{3}; }

// Visits each data object once, in the order of the first tag holding it.
template <typename Visit>
void ForEachDistinctData(const IccContainer& container, Visit visit) {
    std::set<const Bytes*> seen;
    for (const IccTag& tag : container.tags) {
        if (seen.insert(tag.data.get()).second) visit(*tag.data);
    }
}

}  // namespace

IccTag* IccContainer::Find(uint32_t signature) {
    auto it = std::find_if(tags.begin(), tags.end(), [&](const IccTag& t) { return t.signature == signature; });
    return it == tags.end() ? nullptr : &*it;
}

const IccTag* IccContainer::Find(uint32_t signature) const {
    return const_cast<IccContainer*>(this)->Find(signature);
}

bool IccContainer::IsShared(const IccTag& tag) const {
    return std::any_of(tags.begin(), tags.end(),
                       [&](const IccTag& other) { return &other != &tag && other.data == tag.data; });
}

std::optional<IccContainer> ParseIccContainer(std::span<const uint8_t> bytes) {
    if (bytes.size() < kTagTableOffset) return std::nullopt;
    const BigEndianReader reader(bytes);
    const uint32_t count = reader.U32(kTagCountOffset);
    if (count > (bytes.size() - kTagTableOffset) / kIccTagEntrySize) return std::nullopt;
    const size_t dataStart = kTagTableOffset + size_t{count} * kIccTagEntrySize;

    IccContainer container;
    std::copy_n(bytes.begin(), kIccHeaderSize, container.header.begin());
    std::map<std::pair<uint32_t, uint32_t>, std::shared_ptr<Bytes>> dataByPlace;
    std::set<uint32_t> signatures;
    container.tags.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        const size_t entry = kTagTableOffset + size_t{i} * kIccTagEntrySize;
        const uint32_t signature = reader.U32(entry);
        const uint32_t offset = reader.U32(entry + 4);
        const uint32_t size = reader.U32(entry + 8);
        if (offset < dataStart || offset > bytes.size() || size > bytes.size() - offset) return std::nullopt;
        if (!signatures.insert(signature).second) return std::nullopt;
        std::shared_ptr<Bytes>& data = dataByPlace[{offset, size}];
        if (!data) data = std::make_shared<Bytes>(bytes.begin() + offset, bytes.begin() + offset + size);
        container.tags.push_back({signature, data});
    }
    return container;
}

size_t SerializedSize(const IccContainer& container) {
    size_t size = kTagTableOffset + container.tags.size() * kIccTagEntrySize;
    ForEachDistinctData(container, [&](const Bytes& data) { size = AlignTo4(size) + data.size(); });
    return AlignTo4(size);
}

Bytes SerializeIccContainer(const IccContainer& container) {
    Bytes out(SerializedSize(container), 0);
    std::copy(container.header.begin(), container.header.end(), out.begin());
    PutBE32(&out[0], static_cast<uint32_t>(out.size()));
    PutBE32(&out[kTagCountOffset], static_cast<uint32_t>(container.tags.size()));

    std::map<const Bytes*, uint32_t> offsets;
    size_t next = kTagTableOffset + container.tags.size() * kIccTagEntrySize;
    ForEachDistinctData(container, [&](const Bytes& data) {
        next = AlignTo4(next);
        offsets[&data] = static_cast<uint32_t>(next);
        std::copy(data.begin(), data.end(), out.begin() + static_cast<std::ptrdiff_t>(next));
        next += data.size();
    });
    for (size_t i = 0; i < container.tags.size(); ++i) {
        const IccTag& tag = container.tags[i];
        uint8_t* entry = &out[kTagTableOffset + i * kIccTagEntrySize];
        PutBE32(entry, tag.signature);
        PutBE32(entry + 4, offsets[tag.data.get()]);
        PutBE32(entry + 8, static_cast<uint32_t>(tag.data->size()));
    }
    return out;
}

}  // namespace tesk::mscms
