#include <archive/core/objects/ArchiveDiskReader.hpp>

#include <new>
#include <utility>

#include <zlib.h>

#include <boost/locale/encoding.hpp>

#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/log/LogLevel.hpp>
#include <archive/core/log/LogRecord.hpp>
#include <archive/core/objects/GzipStreamCheck.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

// libarchive reports these situations with a generic failure status; its fixed message
// is the only thing that tells them apart.
constexpr const char* kPassphraseRequired = "Passphrase required for this entry";
constexpr const char* kIncorrectPassphrase = "Incorrect passphrase";
constexpr const char* kNoCryptoLibrary = "Decryption is unsupported due to lack of crypto library";
constexpr const char* kTruncatedGzip = "truncated gzip input";

}  // namespace

namespace {

bool isZip(::archive* handle) {
    return (archive_format(handle) & ARCHIVE_FORMAT_BASE_MASK) == ARCHIVE_FORMAT_ZIP;
}

bool isAscii(const char* text) {
    for (; text != nullptr && *text != '\0'; ++text) {
        if ((static_cast<unsigned char>(*text) & 0x80U) != 0) {
            return false;
        }
    }
    return true;
}

// A stored name libarchive altered: it only recomposes names that hold other than ASCII.
bool altered(const char* read, const std::optional<std::string>& stored) {
    return read != nullptr && stored && !isAscii(read) && *stored != read &&
           tessel::host::isValidUtf8(*stored);
}

}  // namespace

ArchiveDiskReader::ArchiveDiskReader(tessel::host::HostPath archivePath, ArchiveFormat format,
                                     const ExtractOptions& options, ReadPurpose purpose)
    : handle_(archive_read_new()),
      archivePath_(std::move(archivePath)),
      trackDataCrc_(purpose.trackDataCrc),
      checkZipAgreement_(purpose.checkZipAgreement) {
    if (!handle_) {
        throw std::bad_alloc();
    }
    if (purpose.askUpstreamVerdict) {
        upstreamVerdict_ = options.upstreamVerdict;
    }
    const int inputDescriptor = purpose.readInputDescriptor ? options.inputDescriptor : -1;
    enableFormats(format);
    // Read from a descriptor, the name only names the archive, and stays as given.
    if (inputDescriptor < 0 && !archivePath_.isAbsolute()) {
        archivePath_ = archivePath_.absolute(tessel::host::HostPath());
    }
    if (purpose.offerPassword && !options.password.empty()) {
        // A refused passphrase is not fatal here: a wrong or missing one shows when
        // encrypted data is read.
        archive_read_add_passphrase(handle_.get(), tessel::host::toUtf8(options.password).c_str());
        ARCHIVE_LOG(LogStep) << "Password registered for reading a password-protected archive.";
    }
    StreamCheckFactory check;
    if (purpose.checkCompressedStream) {
        check = options.gzipCheck ? options.gzipCheck : StreamCheckFactory(makeGzipStreamCheck);
    }
    openFile(format, inputDescriptor, check);
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

void ArchiveDiskReader::openFile(ArchiveFormat format, int inputDescriptor,
                                 const StreamCheckFactory& check) {
    ::archive* handle = handle_.get();
    source_ = std::make_unique<ArchiveFileSource>(archivePath_.access(), inputDescriptor);
    if (check) {
        source_->setCheck(check());
    }
    const int status = source_->open(handle);
    // Only a stream libarchive decodes as gzip has trailers to check.
    if (status == ARCHIVE_OK && source_->hasCheck() &&
        (archive_filter_count(handle) < 2 ||
         archive_filter_code(handle, 0) != ARCHIVE_FILTER_GZIP)) {
        source_->setCheck(nullptr);
    }
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
        dataCrc_ = 0;
        dataLength_ = 0;
        if (isZip(handle_.get())) {
            restoreStoredZipName(*entry);
            readLegacyZipName(*entry);
        } else if ((archive_format(handle_.get()) & ARCHIVE_FORMAT_BASE_MASK) ==
                   ARCHIVE_FORMAT_TAR) {
            restoreStoredTarNames(*entry);
        }
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
        judgeCompressedStream();
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
        if (trackDataCrc_ && status == ARCHIVE_OK && *size > 0) {
            dataCrc_ = static_cast<std::uint32_t>(
                crc32_z(dataCrc_, static_cast<const Bytef*>(*buffer), *size));
            dataLength_ += *size;
        }
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

void ArchiveDiskReader::restoreStoredZipName(::archive_entry* entry) {
    ::archive* handle = handle_.get();
    if (!zipDirectoryRead_) {
        zipDirectoryRead_ = true;
        // Only a zip file read in place has a directory that libarchive read: a stream or a
        // compressed zip is read by its local headers alone.
        if (source_->rereadable() && archive_filter_count(handle) == 1 &&
            archive_filter_code(handle, 0) == ARCHIVE_FILTER_NONE) {
            zipDirectory_ = readZipDirectory(
                [this](std::uint64_t offset, void* into, std::size_t size) {
                    return source_->readAt(offset, into, size);
                },
                source_->totalBytes());
            if (zipDirectory_->damage && checkZipAgreement_) {
                ARCHIVE_LOG(LogFailure)
                    << "[INTERNAL_MESSAGE]: zip directory check: " << *zipDirectory_->damage;
                throwArchiveErrorWithMessage(NullArchiveRule::CouldNotOpenFile,
                                             tessel::host::fromUtf8(*zipDirectory_->damage));
            }
        }
    }
    const std::size_t index = zipEntryIndex_++;
    if (!zipDirectory_ || zipDirectory_->damage || index >= zipDirectory_->entries.size()) {
        return;
    }
    // libarchive yields the entries in the order of their local headers, as listed here.
    const ZipDirectoryEntry& stored = zipDirectory_->entries[index];
    if (stored.utf8 && altered(archive_entry_pathname(entry), stored.name)) {
        archive_entry_set_pathname(entry, stored.name.c_str());
    }
}

void ArchiveDiskReader::restoreStoredTarNames(::archive_entry* entry) {
    ::archive* handle = handle_.get();
    const char* name = archive_entry_pathname(entry);
    const char* hardLink = archive_entry_hardlink(entry);
    const char* symbolicLink = archive_entry_symlink(entry);
    if (isAscii(name) && isAscii(hardLink) && isAscii(symbolicLink)) {
        return;
    }
    // The headers are read again where libarchive read them: an uncompressed input from
    // the blocks it was just given (a pipe cannot give them again), a compressed file by
    // decoding it a second time.
    ReadAt readAt;
    if (archive_filter_count(handle) == 1) {
        readAt = [this](std::uint64_t offset, void* into, std::size_t size) {
            return source_->readRecent(offset, into, size) || source_->readAt(offset, into, size);
        };
    } else if (source_->rereadable()) {
        if (!decodedTar_) {
            decodedTar_ = std::make_unique<DecodedStream>(
                [this](std::uint64_t offset, void* into, std::size_t size) {
                    return source_->readAt(offset, into, size);
                });
        }
        readAt = [this](std::uint64_t offset, void* into, std::size_t size) {
            return decodedTar_->readAt(offset, into, size);
        };
    } else {
        return;
    }
    const std::optional<PaxNames> stored =
        readPaxNames(readAt, static_cast<std::uint64_t>(archive_read_header_position(handle)));
    if (!stored) {
        return;
    }
    if (altered(name, stored->path)) {
        archive_entry_set_pathname(entry, stored->path->c_str());
    }
    if (altered(hardLink, stored->linkPath)) {
        archive_entry_set_hardlink(entry, stored->linkPath->c_str());
    } else if (altered(symbolicLink, stored->linkPath)) {
        archive_entry_set_symlink(entry, stored->linkPath->c_str());
    }
}

void ArchiveDiskReader::readLegacyZipName(::archive_entry* entry) {
    // A zip name without the UTF-8 flag comes through as the bytes stored. When those are
    // not UTF-8 they were written by a legacy system in its code page, CP437 by the
    // format's own definition, as Info-ZIP and Python read them. (A flagged name that is
    // not UTF-8 has already failed the header.)
    const char* name = archive_entry_pathname(entry);
    if (name == nullptr || tessel::host::isValidUtf8(name)) {
        return;
    }
    archive_entry_set_pathname(entry, boost::locale::conv::to_utf<char>(name, "CP437").c_str());
}

void ArchiveDiskReader::judgeCompressedStream() {
    std::optional<std::string> damage = source_->finishCheck();
    if (!damage && upstreamVerdict_) {
        source_->drain();  // whoever fills the input has finished once it ends
        damage = upstreamVerdict_();
    }
    if (damage) {
        ARCHIVE_LOG(LogFailure) << "[INTERNAL_MESSAGE]: gzip trailer check: " << *damage;
        throwArchiveErrorWithMessage(NullArchiveRule::CouldNotOpenFile,
                                     tessel::host::fromUtf8(*damage));
    }
}

void ArchiveDiskReader::checkGzipTrailer() {
    source_->drain();
    const std::string& tail = source_->tail();
    const auto little = [&tail](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = 4; i-- > 0;) {
            value = (value << 8) | static_cast<unsigned char>(tail[at + i]);
        }
        return value;
    };
    if (tail.size() == 8 && little(0) == dataCrc_ &&
        little(4) == static_cast<std::uint32_t>(dataLength_)) {
        return;  // one member, sound: the common case costs one CRC over data already read
    }
    std::optional<std::string> damage = std::string("the trailer does not match the data");
    if (source_->rereadable()) {
        GzipStreamCheck members;
        source_->rereadInto(members);
        damage = members.finish();
    }
    if (damage) {
        ARCHIVE_LOG(LogFailure) << "[INTERNAL_MESSAGE]: gzip trailer check: " << *damage;
        throwArchiveErrorWithMessage(NullArchiveRule::CorruptGzFile,
                                     tessel::host::fromUtf8(*damage));
    }
}

void ArchiveDiskReader::probeDataBlock(DataBlock& block, ::archive_entry* entry) {
    if (readDataBlock(&block.buffer, &block.size, &block.offset, entry) < ARCHIVE_OK) {
        throwInternalError(NullArchiveRule::CouldNotOpenFile);
    }
}

}  // namespace tessel::io::archive::core
