#include <archive/core/error/ErrorMessageFactory.hpp>

namespace tessel::io::archive::core {

std::u16string ErrorMessageFactory::messageFor(NullArchiveRule rule) {
    switch (rule) {
        case NullArchiveRule::CouldNotOpenFile:
            return u"[archive_err]: Could not open file.";
        case NullArchiveRule::CouldNotCreateFile:
            return u"[archive_err]: Could not create file.";
        case NullArchiveRule::CouldNotWriteFile:
            return u"[archive_err]: Could not write to file.";
        case NullArchiveRule::CouldNotOverwriteFile:
            return u"[archive_err]: Could not overwrite file.";
        case NullArchiveRule::CouldNotCloseFile:
            return u"[archive_err]: Could not close file.";
        case NullArchiveRule::InvalidEntryHeader:
            return u"[archive_err]: Invalid entry in archive header.";
        case NullArchiveRule::UnableToSetFormat:
            return u"[archive_err]: Unable to set archive format.";
        case NullArchiveRule::UnableToSetFilter:
            return u"[archive_err]: Unable to set archive filter.";
        case NullArchiveRule::PermissionDenied:
            return u"[archive_err]: Entry is invalid. Permission was denied.";
        case NullArchiveRule::PasswordProtected:
            return u"[archive_err]: Entry is invalid. It is password protected.";
        case NullArchiveRule::CorruptGzFile:
            return u"[archive_err]: Unable to open GZ file. It is corrupt.";
        case NullArchiveRule::CouldNotOpenArchiveForWriting:
            return u"[archive_err]: Could not open archive for writing.";
        case NullArchiveRule::CouldNotSetWriteOptions:
            return u"[archive_err]: Could not set the required write options for the archive.";
        case NullArchiveRule::EmptyEntryFilename:
            // The wording is the established text; do not correct it.
            return u"[archive_err]: Entry is invalid. It's filename is empty.";
        default:
            return u"[archive_err]: Unknown error. This should not be hit. Zorp it!";
    }
}

}  // namespace tessel::io::archive::core
