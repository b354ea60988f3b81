#pragma once

#include <memory>
#include <string>

#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/objects/ArchiveDiskWriter.hpp>
#include <archive/core/objects/ArchiveFormat.hpp>

namespace tessel::io::archive::core {

// Removes the file of the entry in progress (when there is a writer) and raises the
// message-identified error the failure stands for in extraction. Returns when the
// failure has no translation of its own; the caller then sends it to the catch-all.
void translateExtractFailure(const ArchiveException& failure, const std::u16string& archivePath,
                             const std::unique_ptr<ArchiveDiskWriter>& writer,
                             ArchiveFormat format);

// The rows of that table that every extraction shares, the additions included: a password
// missing or wrong, decryption unavailable, an empty entry name, a full disk. Raises for
// those; returns for any other rule.
void raiseSharedExtractionError(NullArchiveRule rule, const std::u16string& archivePath,
                                ArchiveFormat format);

}  // namespace tessel::io::archive::core
