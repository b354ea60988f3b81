#pragma once

#include <archive/core/error/messages/MessageClass.hpp>

namespace TESSEL::io::archive::extractArchive {

TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", unableToWrite, 2);       // archive, reason
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", emptyEntryFilename, 2);  // format, archive
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", incorrectPassword, 0);
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", protectedEntry, 0);
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", outputDiskFull, 0);
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", unsupportedEncryptionInLinux, 0);
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", OverwriteOpenFile, 1);  // target path
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", internalError, 0);
// Warnings, each with one UTF-8 path.
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", unableToCreate, 1);
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", unableToOverwrite, 1);
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", removeControlM, 1);

// The errors and warnings of the calls with options.
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", entryOutsideFolder, 2);   // entry, archive
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", entryThroughSymlink, 2);  // entry, archive
// entry, its target, archive
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", linkOutsideFolder, 3);
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", entryNotFound, 2);  // pattern, archive
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", cancelled, 0);
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", writeError, 1);          // target path
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", specialFileSkipped, 1);  // entry, warning
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", existingFileKept, 1);    // path, warning
// entry, its target; warning
TQ_MESSAGE_CLASS("TESSEL:io:archive:extractArchive", outwardLinkSkipped, 2);

}  // namespace TESSEL::io::archive::extractArchive
