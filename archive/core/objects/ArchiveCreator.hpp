#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <archive/core/CreateOptions.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <host/HostPath.hpp>

struct archive;
struct archive_entry;

namespace tessel::io::archive::core {

// Owns one libarchive write handle opened on a new archive file: chooses format and
// filter, optionally a passphrase and the zip encryption method, writes entry headers
// and data, and keeps the names of the entries written. Destroying it finishes the
// archive (trailer or central directory) and closes the file.
class ArchiveCreator {
  public:
    // What the creator writes: entries in its format, or one entry's bytes as they are
    // under the filter alone (libarchive's raw format), the format then only choosing the
    // errors' family.
    enum class Content { Entries, RawStream };

    // Failures throw ArchiveException: UnableToSetFormat, UnableToSetFilter, AccessDenied,
    // CouldNotOpenArchiveForWriting.
    ArchiveCreator(tessel::host::HostPath archivePath, ArchiveFormat format);
    // As the options say: their filter (added to the format's), level and output
    // descriptor, and with a password its encryption, which adds EmptyPassphrase,
    // EncryptionNotSupported, CryptoUnsupported and CouldNotSetWriteOptions (the zip
    // option is refused by every other format); InvalidCompressionLevel for a level the
    // format or filter refuses.
    ArchiveCreator(tessel::host::HostPath archivePath, ArchiveFormat format,
                   const CreateOptions& options, Content content = Content::Entries);
    ~ArchiveCreator();

    ArchiveCreator(const ArchiveCreator&) = delete;
    ArchiveCreator& operator=(const ArchiveCreator&) = delete;
    ArchiveCreator(ArchiveCreator&&) = delete;
    ArchiveCreator& operator=(ArchiveCreator&&) = delete;

    // Which header warnings reach the caller's user.
    enum class HeaderWarnings {
        Issued,        // every status but OK, and a header written with a warning counts
                       // as refused
        RefusalsOnly,  // a header written with a warning is only logged, and counts as
                       // written
    };
    // Whether the header was written; a refused header is a warning (openEntryError),
    // never an exception.
    bool writeHeader(::archive_entry* entry, HeaderWarnings warnings = HeaderWarnings::Issued);
    // Throws DiskSpaceFull (errno 28 with "Write error") or CouldNotWriteFile.
    void writeData(const void* bytes, std::size_t count);
    void addEntryName(::archive_entry* entry);
    const std::vector<std::u16string>& getEntryNames() const noexcept { return entryNames_; }
    // Closes the archive and removes its file; a failed close keeps the file. Afterwards
    // the creator must only be destroyed.
    void deleteArchiveFile();
    // Finishes the archive (trailer, central directory, last buffered block) and reports
    // a failure: DiskSpaceFull for a full disk, CouldNotWriteFile otherwise. Afterwards the
    // creator must only be destroyed.
    void finish();

    const tessel::host::HostPath& archivePath() const noexcept { return archivePath_; }
    // Whether the format written stores a name of this many bytes.
    bool holdsName(std::size_t bytes) const noexcept;

  private:
    struct WriteHandleCloser {
        void operator()(::archive* handle) const noexcept;
    };

    int writeHeaderAsStored(::archive_entry* entry, const char* pathname);
    void setFormat(ArchiveFormat format);
    void setCompression();
    void setEncryption(const std::u16string& password, const std::u16string& encryptionMethod);
    void openArchiveFile();

    std::unique_ptr<::archive, WriteHandleCloser> handle_;
    tessel::host::HostPath archivePath_;
    std::vector<std::u16string> entryNames_;
    ArchiveFormat format_;
    std::string filter_;  // added to the format's; empty: none
    int level_;           // -1: libarchive's default
    int outputDescriptor_;
    Content content_;
};

}  // namespace tessel::io::archive::core
