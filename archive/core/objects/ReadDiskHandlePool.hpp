#pragma once

#include <memory>
#include <vector>

struct archive;

namespace tessel::io::archive::core {

// Read-disk handles kept, closed, for the next input of the same call. libarchive learns
// a file system's properties (four statfs calls and more) once per handle, so a handle
// opened again on the next file skips that work.
class ReadDiskHandlePool {
  public:
    ReadDiskHandlePool() = default;
    ReadDiskHandlePool(const ReadDiskHandlePool&) = delete;
    ReadDiskHandlePool& operator=(const ReadDiskHandlePool&) = delete;

    // A kept handle, or a new one; throws std::bad_alloc.
    ::archive* take();
    // Keeps a closed handle for a later take().
    void give(::archive* handle) noexcept;

  private:
    struct HandleFreer {
        void operator()(::archive* handle) const noexcept;
    };
    std::vector<std::unique_ptr<::archive, HandleFreer>> kept_;
};

}  // namespace tessel::io::archive::core
