#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace tessel::io::archive::core {

// Reads exactly size bytes at an offset of an input; false when they are not there.
using ReadAt = std::function<bool(std::uint64_t offset, void* into, std::size_t size)>;

}  // namespace tessel::io::archive::core
