#pragma once

#include <cstdint>

namespace tessel::host {

// Installs the host's sinks once per process: one that accepts nothing (so the logging
// core never falls back to its console output and records are opened only for a
// listener), and the TQARCHIVE_LOG file sink when that variable names a file that can be
// used. Reads TQARCHIVE_LOG_LEVELS once and returns the mask of levels it chooses. A
// variable that cannot be used gets one notice on standard error. The sinks and the core
// they live in are never destroyed, so calls made while the process exits still log.
std::uint32_t installHostSinksOnce();

// Adds the host's sinks again after the host removed them (a sink already there is not
// added twice).
void reinstallHostSinks();

// Whether the discard sink was asked about a record on this thread since the last
// forgetDiscardSinkAsked(): it is asked about every record while it is in the core.
void forgetDiscardSinkAsked() noexcept;
bool discardSinkAsked() noexcept;

}  // namespace tessel::host
