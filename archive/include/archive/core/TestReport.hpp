#pragma once

#include <cstdint>
#include <vector>

#include <host/MessageIdError.hpp>

namespace tessel::io::archive::core {

// What testArchive found: how many entries it read whole, and one identified error for
// each damaged entry ("TESSEL:io:archive:testArchive:damagedEntry") or damaged stream
// ("TESSEL:io:archive:testArchive:damagedStream"), in the order found.
struct TestReport {
    std::uint64_t entriesRead = 0;
    std::vector<tessel::host::MessageIdError> damage;

    bool sound() const noexcept { return damage.empty(); }
};

}  // namespace tessel::io::archive::core
