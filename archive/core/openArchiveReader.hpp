#pragma once

#include <memory>
#include <string>

#include <archive/core/ExtractOptions.hpp>
#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/types/ArchiveFormat.hpp>

namespace tessel::io::archive::core {

// The reader of a call that reads with options (extraction, listing, testing): the
// archive path is checked before anything is opened, or the options' descriptor is read
// instead; the purpose says which checks the reader makes.
std::unique_ptr<ArchiveDiskReader> openArchiveReader(const std::u16string& archivePath,
                                                     ArchiveFormat format,
                                                     const ExtractOptions& options,
                                                     ReadPurpose purpose);

}  // namespace tessel::io::archive::core
