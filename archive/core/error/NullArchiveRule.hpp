#pragma once

#include <cstdint>

namespace tessel::io::archive::core {

// The kinds of failure an archive object reports.
enum class NullArchiveRule : std::int32_t {
    CouldNotOpenFile = 0,
    CouldNotCreateFile = 1,
    CouldNotWriteFile = 2,
    CouldNotOverwriteFile = 3,
    CouldNotCloseFile = 4,
    InvalidEntryHeader = 5,
    UnableToSetFormat = 6,
    UnableToSetFilter = 7,
    PermissionDenied = 8,
    PasswordProtected = 9,
    UnableToOverwrite = 10,
    CorruptGzFile = 11,
    RemoveControlM = 12,
    NotGzipFormat = 13,
    CouldNotOpenArchiveForWriting = 14,
    OpenEntryError = 15,
    AccessDenied = 16,
    CouldNotSetWriteOptions = 17,
    CouldNotSetSymlinkMode = 18,
    OverwriteOpenFile = 19,
    EmptyEntryFilename = 20,
    DiskSpaceFull = 21,
    IncorrectPassphrase = 22,
    EmptyPassphrase = 23,
    EncryptionNotSupported = 24,
    CryptoUnsupported = 25,
    // Raised only by the calls with options (confinement, safe modes, cancellation); like
    // the other values without a text of their own, they read as the unknown-error text.
    EntryOutsideFolder = 26,
    EntryThroughSymlink = 27,
    LinkOutsideFolder = 28,
    Cancelled = 29,
    OutputIsInput = 30,
    InvalidCompressionLevel = 31,
    EntryNameTooLong = 32,  // longer than the format's name field
};

}  // namespace tessel::io::archive::core
