#pragma once

#include <string>

#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/objects/ArchiveFormat.hpp>

namespace tessel::io::archive::core {

// Raises the message-identified error that stands for a failure of createArchive, or
// returns when the failure has none (the caller then raises the internal error).
// archivePath is the path as the caller gave it, relative or not.
void translateCreateArchiveFailure(const ArchiveException& failure,
                                   const std::u16string& archivePath, ArchiveFormat format);

}  // namespace tessel::io::archive::core
