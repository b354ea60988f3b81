#pragma once

#include <archive/core/error/messages/MessageClass.hpp>

namespace TESSEL::io::archive::createArchive {

// Raised under "TESSEL:io:archive:zip:DiskSpaceFull" or "TESSEL:io:archive:tar:DiskSpaceFull".
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", DiskSpaceFull, 1);  // archive path
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", emptyPassword, 0);
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", invalidArchiveFormat, 0);
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", invalidEncryptionInLinux, 0);
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", unsupportedEncryptionInLinux, 0);
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", invalidNumberOfArgs, 0);
// Fewer entry names than files: refused before the archive is created.
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", entryNameCountMismatch, 2);  // files, names
// A warning; also issued under "TESSEL:zip:openEntryError" and "TESSEL:tar:openEntryError".
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", openEntryError, 1);  // path, UTF-8

// The errors of the calls with options.
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", cancelled, 0);
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", unknownArchiveType, 1);  // archive path
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", invalidCompression, 2);  // filter, level
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", writeError, 1);          // archive path
// archive path, the name's length in bytes, the most the format holds
TQ_MESSAGE_CLASS("TESSEL:io:archive:createArchive", entryNameTooLong, 3);

}  // namespace TESSEL::io::archive::createArchive
