#include <archive/core/objects/ArchiveCreator.hpp>

#include <archive.h>
#include <archive_entry.h>

#include <cerrno>
#include <clocale>
#include <cstring>

#include <locale.h>
#include <new>

#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/log/LogLevel.hpp>
#include <archive/core/log/LogRecord.hpp>
#include <host/FileSystemError.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

using tessel::host::HostPath;

namespace {

// libarchive's own texts, compared whole to tell failures of one status apart.
constexpr const char* kEmptyPassphrase = "Empty passphrase is unacceptable";
constexpr const char* kEncryptionNotSupported = "encryption not supported";
constexpr const char* kWriteError = "Write error";

::archive* newWriteHandle() {
    ::archive* handle = archive_write_new();
    if (handle == nullptr) {
        throw std::bad_alloc();  // every later call would dereference it
    }
    return handle;
}

HostPath absoluteArchivePath(HostPath path) {
    return path.isAbsolute() ? path : path.absolute(HostPath());
}

}  // namespace

void ArchiveCreator::WriteHandleCloser::operator()(::archive* handle) const noexcept {
    // Closing writes the trailer or central directory; nobody is left to hear a failure.
    archive_write_close(handle);
    archive_write_free(handle);
}

ArchiveCreator::ArchiveCreator(HostPath archivePath, ArchiveFormat format)
    : ArchiveCreator(std::move(archivePath), format, CreateOptions()) {}

ArchiveCreator::ArchiveCreator(HostPath archivePath, ArchiveFormat format,
                               const CreateOptions& options, Content content)
    : handle_(newWriteHandle()),
      archivePath_(absoluteArchivePath(std::move(archivePath))),
      format_(format),
      filter_(tessel::host::toUtf8(options.filter)),
      level_(options.level),
      outputDescriptor_(options.outputDescriptor),
      content_(content) {
    setFormat(format_);
    setCompression();
    if (options.password) {
        setEncryption(*options.password, options.encryption);
    }
    openArchiveFile();
}

void ArchiveCreator::setEncryption(const std::u16string& password,
                                   const std::u16string& encryptionMethod) {
    const std::string passphrase = tessel::host::toNarrow(password);
    if (archive_write_set_passphrase(handle_.get(), passphrase.c_str()) != ARCHIVE_OK &&
        libarchiveErrorString(handle_.get(), 1) == kEmptyPassphrase) {
        throwArchiveError(NullArchiveRule::EmptyPassphrase, handle_.get());
    }
    // Other refusals are not fatal: libarchive keeps no passphrase and says so again
    // when an entry needs one.
    ARCHIVE_LOG(LogStep) << "Password set to create a password-protected archive.";

    const std::string method = tessel::host::toNarrow(encryptionMethod);
    const std::string option = "zip:encryption=" + method;
    if (archive_write_set_options(handle_.get(), option.c_str()) != ARCHIVE_OK) {
        const std::string message = libarchiveErrorString(handle_.get(), 1);
        if (message == "zip: unknown encryption '" + method + "'") {
            throwArchiveError(NullArchiveRule::EncryptionNotSupported, handle_.get());
        }
        if (message == kEncryptionNotSupported) {
            throwArchiveError(NullArchiveRule::CryptoUnsupported, handle_.get());
        }
        throwArchiveError(NullArchiveRule::CouldNotSetWriteOptions, handle_.get());
    }
    ARCHIVE_LOG(LogStep) << "Encryption method used to create a password-protected archive-->"
                         << method;
}

ArchiveCreator::~ArchiveCreator() = default;

void ArchiveCreator::setFormat(ArchiveFormat format) {
    ::archive* handle = handle_.get();
    if (content_ == Content::RawStream) {
        if (archive_write_set_format_raw(handle) != ARCHIVE_OK) {
            throwArchiveError(NullArchiveRule::UnableToSetFormat, handle);
        }
        return;
    }
    switch (format) {
        case ArchiveFormat::Zip:
            if (archive_write_set_format_zip(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFormat, handle);
            }
            break;
        case ArchiveFormat::Tar:
            if (archive_write_set_format_pax_restricted(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFormat, handle);
            }
            break;
        case ArchiveFormat::Gz:
            if (archive_write_set_format_raw(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFormat, handle);
            }
            if (archive_write_add_filter_gzip(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFilter, handle);
            }
            break;
        case ArchiveFormat::Tgz:
            if (archive_write_set_format_pax_restricted(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFormat, handle);
            }
            if (archive_write_add_filter_gzip(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFilter, handle);
            }
            break;
        default:
            // "all" and unknown format texts: the archive's extension decides.
            if (archive_write_set_format_filter_by_ext(handle, archivePath_.access().c_str()) !=
                ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFormat, handle);
            }
            break;
    }
}

void ArchiveCreator::setCompression() {
    ::archive* handle = handle_.get();
    if (!filter_.empty() &&
        archive_write_add_filter_by_name(handle, filter_.c_str()) != ARCHIVE_OK) {
        throwArchiveError(NullArchiveRule::UnableToSetFilter, handle);
    }
    if (level_ < 0) {
        return;
    }
    const std::string level = std::to_string(level_);
    const bool zip = (archive_format(handle) & ARCHIVE_FORMAT_BASE_MASK) == ARCHIVE_FORMAT_ZIP;
    // Zip compresses entry by entry; every other format leaves it to its filter.
    const int status =
        zip ? archive_write_set_format_option(handle, "zip", "compression-level", level.c_str())
            : archive_write_set_filter_option(handle, nullptr, "compression-level", level.c_str());
    if (status != ARCHIVE_OK) {
        throwArchiveError(NullArchiveRule::InvalidCompressionLevel, handle);
    }
}

void ArchiveCreator::openArchiveFile() {
    if (outputDescriptor_ >= 0) {
        // libarchive pads the last block of a pipe or terminal to the block size; the
        // zeros would follow the stream (a gzip member, say) that is all the caller wants.
        archive_write_set_bytes_in_last_block(handle_.get(), 1);
    }
    const int status =
        outputDescriptor_ >= 0
            ? archive_write_open_fd(handle_.get(), outputDescriptor_)
            : archive_write_open_filename(handle_.get(), archivePath_.access().c_str());
    if (status != ARCHIVE_OK) {
        throwArchiveError(archive_errno(handle_.get()) == EACCES
                              ? NullArchiveRule::AccessDenied
                              : NullArchiveRule::CouldNotOpenArchiveForWriting,
                          handle_.get());
    }
    ARCHIVE_LOG(LogOpen) << "Opened archive file for creating destination archive on disk-->"
                         << archivePath_;
}

bool ArchiveCreator::holdsName(std::size_t bytes) const noexcept {
    return (archive_format(handle_.get()) & ARCHIVE_FORMAT_BASE_MASK) != ARCHIVE_FORMAT_ZIP ||
           bytes <= kZipEntryNameLimit;
}

bool ArchiveCreator::writeHeader(::archive_entry* entry, HeaderWarnings warnings) {
    const char* pathname = archive_entry_pathname(entry);
    const HostPath name = (pathname == nullptr || *pathname == '\0')
                              ? HostPath()
                              : HostPath::fromFileSystem(pathname).nativeForm();
    // A zip name longer than its field would overrun libarchive's buffer: refused as a
    // header libarchive refuses, and left in the same state (the entry's data is refused).
    if (pathname != nullptr && !holdsName(std::strlen(pathname))) {
        archive_write_finish_entry(handle_.get());
        archive_set_error(handle_.get(), ENAMETOOLONG,
                          "Pathname is too long for zip (%zu bytes, at most %zu)",
                          std::strlen(pathname), kZipEntryNameLimit);
        warnArchiveError(NullArchiveRule::InvalidEntryHeader, handle_.get(), name);
        return false;
    }
    const int status = writeHeaderAsStored(entry, pathname);
    // Warnings count as refusals too: the entry may be stored other than asked. Where the
    // caller knows better, a header libarchive wrote with a warning (a name it could not
    // translate and stored as its bytes) is logged and no more.
    if (status != ARCHIVE_OK && (status < ARCHIVE_WARN || warnings == HeaderWarnings::Issued)) {
        warnArchiveError(NullArchiveRule::InvalidEntryHeader, handle_.get(), name);
        return false;
    }
    if (status != ARCHIVE_OK) {
        logArchiveWarning(handle_.get());
    }
    ARCHIVE_LOG(LogStep) << "Wrote entry to destination archive-->" << name;
    return true;
}

int ArchiveCreator::writeHeaderAsStored(::archive_entry* entry, const char* pathname) {
    ::archive* handle = handle_.get();
    // Zip flags a name UTF-8 whenever the locale is UTF-8, whatever its bytes; a name that
    // is not UTF-8 is stored as the bytes it is, without the flag (readers then take it
    // for CP437, as any legacy zip name), by writing it under the C locale on this thread.
    if ((archive_format(handle) & ARCHIVE_FORMAT_BASE_MASK) != ARCHIVE_FORMAT_ZIP ||
        pathname == nullptr || tessel::host::isValidUtf8(pathname)) {
        return archive_write_header(handle, entry);
    }
    const locale_t plain = newlocale(LC_CTYPE_MASK, "C", static_cast<locale_t>(nullptr));
    if (plain == static_cast<locale_t>(nullptr)) {
        return archive_write_header(handle, entry);
    }
    const locale_t previous = uselocale(plain);
    const int status = archive_write_header(handle, entry);
    uselocale(previous);
    freelocale(plain);
    return status;
}

void ArchiveCreator::writeData(const void* bytes, std::size_t count) {
    if (archive_write_data(handle_.get(), bytes, count) >= 0) {
        return;
    }
    // Only the file writer's own text with ENOSPC is a full disk; a full disk reported
    // any other way is a plain write failure.
    const bool diskFull = archive_errno(handle_.get()) == ENOSPC &&
                          libarchiveErrorString(handle_.get(), 1) == kWriteError;
    throwArchiveError(
        diskFull ? NullArchiveRule::DiskSpaceFull : NullArchiveRule::CouldNotWriteFile,
        handle_.get());
}

void ArchiveCreator::addEntryName(::archive_entry* entry) {
    const char* pathname = archive_entry_pathname(entry);
    std::u16string name = pathname == nullptr ? std::u16string() : tessel::host::fromUtf8(pathname);
    // Tar stores folders as "name/"; callers get the folder's name. Zip keeps the slash.
    if ((format_ == ArchiveFormat::Tar || format_ == ArchiveFormat::Tgz) && !name.empty() &&
        name.back() == HostPath::genericSeparator()) {
        name.pop_back();
    }
    entryNames_.push_back(std::move(name));
}

void ArchiveCreator::finish() {
    ::archive* handle = handle_.get();
    if (archive_write_close(handle) == ARCHIVE_OK) {
        return;
    }
    const bool diskFull =
        archive_errno(handle) == ENOSPC && libarchiveErrorString(handle, 1) == kWriteError;
    throwArchiveError(
        diskFull ? NullArchiveRule::DiskSpaceFull : NullArchiveRule::CouldNotWriteFile, handle);
}

void ArchiveCreator::deleteArchiveFile() {
    if (archive_write_close(handle_.get()) != ARCHIVE_OK) {
        ARCHIVE_LOG(LogStep) << "Unable to close archive file for deletion.";
        return;
    }
    if (!archivePath_.empty()) {
        try {
            archivePath_.remove();
        } catch (const tessel::host::FileSystemError&) {
            return;  // the file stays; the caller's error is the one that matters
        }
    }
    ARCHIVE_LOG(LogStep) << "Successfully deleted archive file from disk-->"
                         << archivePath_.native();
}

}  // namespace tessel::io::archive::core
