#pragma once

#include <cstdint>

namespace tessel::io::archive::core {

// Severities of the diagnostic channel, also the bits of the logger's mask.
enum LogLevel : std::uint32_t {
    LogStep = 1,       // an archive step (entry read, written, file deleted)
    LogOpen = 4,       // a file or archive opened, end of an archive read
    LogFailure = 512,  // the evidence a status check writes before it raises or warns
};

}  // namespace tessel::io::archive::core
