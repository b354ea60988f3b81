#pragma once

namespace tessel::io::archive::core {

// The catch-all of every entry point; call it only inside a handler. A message-identified
// host error passes unchanged; anything else (an ArchiveException, a standard exception)
// becomes "TESSEL:io:archive:extractArchive:internalError". Never returns.
[[noreturn]] void rethrowAsHostError();

class ArchiveException;
// The same for a failure caught earlier and translated no further.
[[noreturn]] void rethrowAsHostError(const ArchiveException& failure);

}  // namespace tessel::io::archive::core
