#include <archive/core/objects/ReadDiskHandlePool.hpp>

#include <archive.h>

#include <new>

namespace tessel::io::archive::core {

void ReadDiskHandlePool::HandleFreer::operator()(::archive* handle) const noexcept {
    archive_read_free(handle);
}

::archive* ReadDiskHandlePool::take() {
    if (!kept_.empty()) {
        ::archive* handle = kept_.back().release();
        kept_.pop_back();
        return handle;
    }
    ::archive* handle = archive_read_disk_new();
    if (handle == nullptr) {
        throw std::bad_alloc();
    }
    return handle;
}

void ReadDiskHandlePool::give(::archive* handle) noexcept {
    try {
        kept_.emplace_back(handle);
    } catch (...) {
        archive_read_free(handle);  // no room to keep it: it goes now
    }
}

}  // namespace tessel::io::archive::core
