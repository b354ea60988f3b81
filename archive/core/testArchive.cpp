#include <memory>
#include <string>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/ExtractFailures.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/error/messages/testArchive.hpp>
#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <archive/core/objects/DataBlock.hpp>
#include <archive/core/openArchiveReader.hpp>
#include <archive/core/readEntryInfo.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

namespace messages = TESSEL::io::archive::testArchive;

std::string libarchiveText(::archive* handle) {
    const char* text = archive_error_string(handle);
    return text != nullptr ? text : "unreadable data";
}

// Reads the entry's data to its end. Returns libarchive's verdict: ARCHIVE_EOF when the
// data was whole and its checks (zip CRC, sizes, decryption) passed.
int readWholeEntry(ArchiveDiskReader& reader, ::archive_entry* entry, DataBlock& block,
                   const std::function<bool()>& afterBlock) {
    for (;;) {
        const int status = reader.readDataBlock(&block.buffer, &block.size, &block.offset, entry);
        if (status != ARCHIVE_OK) {
            return status;
        }
        if (afterBlock && !afterBlock()) {
            throwInternalError(NullArchiveRule::Cancelled);
        }
    }
}

}  // namespace

// The extraction loop with the data read into nothing: whatever libarchive checks while
// reading is checked, and what fails is reported rather than raised, entry by entry.
// A single gzip file ("gz") is checked against its trailers.
TestReport testArchive(const std::u16string& archivePath, const std::u16string& formatText,
                       const ExtractOptions& options, const EntryVisitor& visit) {
    const ArchiveFormat format = archiveFormatFromText(formatText);
    TestReport report;
    std::u16string currentEntry;
    try {
        const std::unique_ptr<ArchiveDiskReader> opened =
            openArchiveReader(archivePath, format, options, ReadPurpose::testing(format));
        ArchiveDiskReader& reader = *opened;
        DataBlock block;
        std::function<bool()> afterBlock;
        if (options.progress) {
            afterBlock = [&] {
                return options.progress(
                    Progress{reader.bytesRead(), reader.totalBytes(), currentEntry, false});
            };
        }
        ::archive_entry* entry = nullptr;
        for (;;) {
            try {
                if (reader.readNextHeader(&entry) != 1) {
                    break;
                }
            } catch (const ArchiveException& failure) {
                // A damaged header or stream ends the reading: nothing after it can be trusted.
                if (failure.rule != NullArchiveRule::InvalidEntryHeader &&
                    failure.rule != NullArchiveRule::CouldNotOpenFile) {
                    throw;
                }
                const std::string reason = failure.rule == NullArchiveRule::CouldNotOpenFile
                                               ? tessel::host::toUtf8(failure.message)
                                               : libarchiveText(reader.handle());
                report.damage.push_back(messages::damagedStream(archivePath, reason));
                break;
            }
            const EntryInfo info = readEntryInfo(entry);
            currentEntry = info.name;
            if (options.progress &&
                !options.progress(
                    Progress{reader.bytesRead(), reader.totalBytes(), currentEntry, true})) {
                throwInternalError(NullArchiveRule::Cancelled);
            }
            if (visit) {
                visit(info);
            }
            const int status = readWholeEntry(reader, entry, block, afterBlock);
            if (status != ARCHIVE_EOF && format == ArchiveFormat::Gz) {
                report.damage.push_back(
                    messages::damagedStream(archivePath, libarchiveText(reader.handle())));
                break;
            }
            if (status != ARCHIVE_EOF) {
                report.damage.push_back(messages::damagedEntry(info.name, archivePath,
                                                               libarchiveText(reader.handle())));
                if (status == ARCHIVE_FATAL) {
                    break;
                }
                continue;
            }
            if (format == ArchiveFormat::Gz) {
                try {
                    reader.checkGzipTrailer();
                } catch (const ArchiveException& failure) {
                    report.damage.push_back(messages::damagedStream(
                        archivePath, tessel::host::toUtf8(failure.message)));
                    break;
                }
            }
            ++report.entriesRead;
        }
        return report;
    } catch (const ArchiveException& failure) {
        // A gzip file cut short is damage found, not a failure of the call.
        if (format == ArchiveFormat::Gz && failure.rule == NullArchiveRule::CorruptGzFile) {
            report.damage.push_back(
                messages::damagedStream(archivePath, std::string("truncated gzip input")));
            return report;
        }
        raiseExtractFailure(failure, ExtractFailureTable::Testing,
                            {archivePath, format, currentEntry});
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
