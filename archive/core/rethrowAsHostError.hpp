#pragma once

namespace tessel::io::archive::core {

// The catch-all of every entry point; call it only inside a handler. A message-identified
// host error passes unchanged; anything else (an ArchiveException, a standard exception)
// becomes "TESSEL:io:archive:extractArchive:internalError". Never returns.
[[noreturn]] void rethrowAsHostError();

}  // namespace tessel::io::archive::core
