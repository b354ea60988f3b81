#pragma once

namespace tessel::host {

// Installs the host's own sinks once per process: one that accepts nothing (so the
// logging core never falls back to its console output and records are opened only for
// a listener), and the TQARCHIVE_LOG file sink when that variable is set.
void installHostSinksOnce();

}  // namespace tessel::host
