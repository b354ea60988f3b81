#include <archive/core/objects/ArchiveDiskReader.hpp>

#include <new>
#include <utility>

#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/log/LogLevel.hpp>
#include <archive/core/log/LogRecord.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

// Block size handed to libarchive for reading the archive file.
constexpr std::size_t kReadBlockSize = 10240;

// libarchive reports these situations with a generic failure status; its fixed message
// is the only thing that tells them apart.
constexpr const char* kPassphraseRequired = "Passphrase required for this entry";
constexpr const char* kIncorrectPassphrase = "Incorrect passphrase";
constexpr const char* kNoCryptoLibrary = "Decryption is unsupported due to lack of crypto library";
constexpr const char* kTruncatedGzip = "truncated gzip input";

}  // namespace

ArchiveDiskReader::ArchiveDiskReader(tessel::host::HostPath archivePath, ArchiveFormat format,
                                     const std::u16string& password)
    : handle_(archive_read_new()), archivePath_(std::move(archivePath)) {
    if (!handle_) {
        throw std::bad_alloc();
    }
    enableFormats(format);
    if (!archivePath_.isAbsolute()) {
        archivePath_ = archivePath_.absolute(tessel::host::HostPath());
    }
    if (!password.empty()) {
        // A refused passphrase is not fatal here: a wrong or missing one shows when
        // encrypted data is read.
        archive_read_add_passphrase(handle_.get(), tessel::host::toUtf8(password).c_str());
        ARCHIVE_LOG(LogStep) << "Password registered for reading a password-protected archive.";
    }
    openFile(format);
}

ArchiveDiskReader::~ArchiveDiskReader() {
    handle_.reset();
}

void ArchiveDiskReader::enableFormats(ArchiveFormat format) {
    ::archive* handle = handle_.get();
    switch (format) {
        case ArchiveFormat::Zip:
            if (archive_read_support_format_zip(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFormat, handle);
            }
            break;
        case ArchiveFormat::Gz:
            if (archive_read_support_format_raw(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFormat, handle);
            }
            if (archive_read_support_filter_gzip(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFilter, handle);
            }
            // An empty gzip stream holds no raw entry; the empty format accepts it.
            if (archive_read_support_format_empty(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFilter, handle);
            }
            break;
        case ArchiveFormat::Tgz:
            if (archive_read_support_format_tar(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFormat, handle);
            }
            if (archive_read_support_filter_gzip(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFilter, handle);
            }
            break;
        default:
            // "tar" deliberately stays wide open, like "all": any format, any filter.
            if (archive_read_support_format_all(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFormat, handle);
            }
            if (archive_read_support_filter_all(handle) != ARCHIVE_OK) {
                throwArchiveError(NullArchiveRule::UnableToSetFilter, handle);
            }
            break;
    }
}

void ArchiveDiskReader::openFile(ArchiveFormat format) {
    ::archive* handle = handle_.get();
    const std::string path = archivePath_.access();
    const int status = archive_read_open_filename(handle, path.c_str(), kReadBlockSize);
    if (format != ArchiveFormat::Gz) {
        if (status != ARCHIVE_OK) {
            throwArchiveError(NullArchiveRule::CouldNotOpenFile, handle);
        }
    } else if (status == ARCHIVE_OK) {
        // The raw format accepts any bytes, so the filter chain is the only proof that
        // the file really is gzip-compressed.
        const char* filter =
            archive_filter_count(handle) > 0 ? archive_filter_name(handle, 0) : nullptr;
        if (filter == nullptr || std::string(filter) != "gzip") {
            throwInternalError(NullArchiveRule::NotGzipFormat);
        }
    } else if (libarchiveErrorString(handle, 1) == kTruncatedGzip) {
        throwArchiveError(NullArchiveRule::CorruptGzFile, handle);
    } else {
        throwArchiveError(NullArchiveRule::CouldNotOpenFile, handle);
    }
    ARCHIVE_LOG(LogOpen) << "Opened source archive file on disk for reading-->" << archivePath_;
}

std::int32_t ArchiveDiskReader::readNextHeader(::archive_entry** entry) {
    const int status = archive_read_next_header(handle_.get(), entry);
    if (status == ARCHIVE_OK) {
        const char* name = archive_entry_pathname(*entry);
        if (name != nullptr && *name != '\0') {
            ARCHIVE_LOG(LogStep) << "Opened entry file to read from source archive-->"
                                 << tessel::host::HostPath::fromFileSystem(name).nativeForm();
        } else {
            ARCHIVE_LOG(LogStep) << "Opened entry file to read from source archive-->";
        }
        return 1;
    }
    if (status == ARCHIVE_EOF) {
        ARCHIVE_LOG(LogOpen) << "Reached end of archive-->" << archivePath_;
        return 2;
    }
    // A warning here (a damaged header libarchive could partly read) is still a failure.
    throwArchiveError(NullArchiveRule::InvalidEntryHeader, handle_.get());
}

std::int32_t ArchiveDiskReader::readDataBlock(const void** buffer, std::size_t* size,
                                              la_int64_t* offset, ::archive_entry* entry) {
    ::archive* handle = handle_.get();
    const int status = archive_read_data_block(handle, buffer, size, offset);
    if (status >= ARCHIVE_OK) {
        return status;
    }
    const std::string text = libarchiveErrorString(handle, 0);
    if (text == kPassphraseRequired) {
        throwArchiveErrorForPath(NullArchiveRule::PasswordProtected, handle, entry);
    }
    if (text == kIncorrectPassphrase) {
        throwArchiveErrorForPath(NullArchiveRule::IncorrectPassphrase, handle, entry);
    }
    if (text == kNoCryptoLibrary) {
        throwArchiveErrorForPath(NullArchiveRule::CryptoUnsupported, handle, entry);
    }
    return status;
}

void ArchiveDiskReader::probeDataBlock(DataBlock& block, ::archive_entry* entry) {
    if (readDataBlock(&block.buffer, &block.size, &block.offset, entry) < ARCHIVE_OK) {
        throwInternalError(NullArchiveRule::CouldNotOpenFile);
    }
}

}  // namespace tessel::io::archive::core
