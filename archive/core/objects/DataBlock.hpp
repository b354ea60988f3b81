#pragma once

#include <cstddef>

#include <archive.h>

namespace tessel::io::archive::core {

// One block of entry data as libarchive hands it out: valid until the next read on the
// same reader. One record serves a whole call and is refilled for every block.
struct DataBlock {
    const void* buffer = nullptr;
    std::size_t size = 0;
    la_int64_t offset = 0;
};

}  // namespace tessel::io::archive::core
