#include <memory>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/ExtractFailures.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <archive/core/objects/DataBlock.hpp>
#include <archive/core/openArchiveReader.hpp>
#include <archive/core/readEntryInfo.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

// The header loop of extraction with the data skipped. A zip records each entry's
// compressed size, which libarchive keeps to itself: reading the entry's data consumes
// exactly that much of the archive.
void listArchive(const std::u16string& archivePath, const std::u16string& formatText,
                 const ExtractOptions& options, const EntryVisitor& visit) {
    const ArchiveFormat format = archiveFormatFromText(formatText);
    std::u16string currentEntry;
    try {
        const std::unique_ptr<ArchiveDiskReader> opened =
            openArchiveReader(archivePath, format, options, ReadPurpose::listing());
        ArchiveDiskReader& reader = *opened;
        ::archive_entry* entry = nullptr;
        while (reader.readNextHeader(&entry) == 1) {
            EntryInfo info = readEntryInfo(entry);
            currentEntry = info.name;
            const bool zip =
                (archive_format(reader.handle()) & ARCHIVE_FORMAT_BASE_MASK) == ARCHIVE_FORMAT_ZIP;
            // An entry that cannot be decrypted is listed without its compressed size.
            if (zip && options.measureCompressedSizes && info.type == EntryType::File &&
                (!info.encrypted || !options.password.empty()))
                try {
                    const la_int64_t before = archive_filter_bytes(reader.handle(), -1);
                    DataBlock block;
                    int status = ARCHIVE_OK;
                    while ((status = reader.readDataBlock(&block.buffer, &block.size, &block.offset,
                                                          entry)) == ARCHIVE_OK) {
                    }
                    if (status == ARCHIVE_EOF) {
                        info.compressedSize = static_cast<std::uint64_t>(
                            archive_filter_bytes(reader.handle(), -1) - before);
                    }
                } catch (const ArchiveException& failure) {
                    if (failure.rule != NullArchiveRule::IncorrectPassphrase) {
                        throw;
                    }
                }
            if (options.progress &&
                !options.progress(
                    Progress{reader.bytesRead(), reader.totalBytes(), info.name, true})) {
                throwInternalError(NullArchiveRule::Cancelled);
            }
            visit(info);
        }
    } catch (const ArchiveException& failure) {
        raiseExtractFailure(failure, ExtractFailureTable::OptionCalls,
                            {archivePath, format, currentEntry});
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
