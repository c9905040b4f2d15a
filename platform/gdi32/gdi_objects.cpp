#include "gdi_objects.h"

#include <map>
#include <variant>

#include "display.h"

namespace tesk::gdi {
namespace {

using Object = std::variant<std::shared_ptr<DeviceContext>, std::shared_ptr<Bitmap>>;

struct Table {
    std::recursive_mutex mutex;
    std::map<uintptr_t, Object> objects;
    uintptr_t next = 0x10010;
    // The frame buffers of the displays, made on first drawing.
    std::map<size_t, std::shared_ptr<Bitmap>> displaySurfaces;
};

Table& TheTable() {
    static Table* table = new Table;  // outlives every static destructor that might still draw
    return *table;
}

uintptr_t Add(Object object) {
    Table& table = TheTable();
    uintptr_t handle = table.next;
    table.next += 0x10;
    table.objects.emplace(handle, std::move(object));
    return handle;
}

template <typename T>
T* Find(void* handle) {
    Table& table = TheTable();
    auto it = table.objects.find(reinterpret_cast<uintptr_t>(handle));
    if (it != table.objects.end())
        if (auto* object = std::get_if<std::shared_ptr<T>>(&it->second)) return object->get();
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

}  // namespace

std::unique_lock<std::recursive_mutex> Lock() { return std::unique_lock(TheTable().mutex); }

HDC AddDeviceContext(std::shared_ptr<DeviceContext> dc) { return reinterpret_cast<HDC>(Add(std::move(dc))); }
HBITMAP AddBitmap(std::shared_ptr<Bitmap> bitmap) { return reinterpret_cast<HBITMAP>(Add(std::move(bitmap))); }
DeviceContext* FindDeviceContext(HDC hdc) { return Find<DeviceContext>(hdc); }
Bitmap* FindBitmap(HBITMAP bitmap) { return Find<Bitmap>(bitmap); }

bool RemoveDeviceContext(HDC hdc) {
    if (!FindDeviceContext(hdc)) return false;
    TheTable().objects.erase(reinterpret_cast<uintptr_t>(hdc));
    return true;
}

bool RemoveBitmap(HBITMAP bitmap) {
    if (!FindBitmap(bitmap)) return false;
    TheTable().objects.erase(reinterpret_cast<uintptr_t>(bitmap));
    return true;
}

Bitmap* Surface(HDC hdc, DeviceContext& dc) {
    (void)hdc;
    switch (dc.kind) {
    case DeviceKind::Memory:
        return FindBitmap(dc.bitmap);
    case DeviceKind::Printer:
        return dc.inPage ? dc.pageSurface.get() : nullptr;
    case DeviceKind::Display: {
        if (dc.window) return dc.windowSurface.get();
        auto& surface = TheTable().displaySurfaces[dc.adapter];
        if (!surface) {
            std::vector<display::Adapter> adapters = display::Current().Adapters();
            if (dc.adapter >= adapters.size()) return nullptr;
            const RECT& bounds = adapters[dc.adapter].bounds;
            surface = std::make_shared<Bitmap>(std::max<LONG>(1, bounds.right - bounds.left),
                                               std::max<LONG>(1, bounds.bottom - bounds.top));
        }
        return surface.get();
    }
    }
    return nullptr;
}

}  // namespace tesk::gdi
