#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/objects/ArchiveDiskWriter.hpp>
#include <archive/core/objects/ArchiveFormat.hpp>
#include <archive/core/objects/DataBlock.hpp>
#include <archive/core/objects/copyEntryData.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <archive/core/setEntryOutputPath.hpp>
#include <archive/core/translateExtractFailure.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

// Writes the current entry under the output folder. false: the writer refused to start
// it (warning already issued) and the entry is skipped.
bool extractEntry(::archive_entry* entry, DataBlock& block, ArchiveDiskReader& reader,
                  ArchiveDiskWriter& writer) {
    setEntryOutputPath(entry, writer.outputFolder());
    if (!writer.writeHeader(entry)) {
        archive_entry_clear(entry);
        return false;
    }
    copyEntryData(block, reader, writer, entry);
    writer.recordWrittenFile(entry);
    return true;
}

// Opens reader and writer, runs the entry loop and translates failures. The loop gets
// the reader, the writer and the call's one data block.
template <class EntryLoop>
std::vector<std::u16string> runExtraction(const std::u16string& archivePath,
                                          const std::u16string& outputFolder,
                                          const std::u16string& formatText,
                                          const std::u16string& password, EntryLoop&& loop) {
    const ArchiveFormat format = archiveFormatFromText(formatText);
    std::unique_ptr<ArchiveDiskReader> reader;
    std::unique_ptr<ArchiveDiskWriter> writer;
    try {
        reader = std::make_unique<ArchiveDiskReader>(tessel::host::HostPath::fromText(archivePath),
                                                     format, password);
        writer =
            std::make_unique<ArchiveDiskWriter>(tessel::host::HostPath::fromText(outputFolder));
        DataBlock block;
        loop(*reader, *writer, block);
        std::vector<std::u16string> written = writer->writtenFiles();
        // Closing the writer finishes the last entry (its times and permissions).
        writer.reset();
        reader.reset();
        return written;
    } catch (const ArchiveException& failure) {
        translateExtractFailure(failure, archivePath, writer, format);
        rethrowAsHostError();
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace

std::vector<std::u16string> extractArchive(const std::u16string& archivePath,
                                           const std::u16string& outputFolder,
                                           const std::u16string& format,
                                           const std::u16string& password) {
    return runExtraction(
        archivePath, outputFolder, format, password,
        [](ArchiveDiskReader& reader, ArchiveDiskWriter& writer, DataBlock& block) {
            ::archive_entry* entry = nullptr;
            while (reader.readNextHeader(&entry) == 1) {
                extractEntry(entry, block, reader, writer);
            }
        });
}

std::vector<std::u16string> extractArchive(const std::u16string& archivePath,
                                           const std::u16string& outputFolder,
                                           const std::u16string& format,
                                           const std::vector<std::u16string>& entryNames,
                                           const std::u16string& password) {
    return runExtraction(
        archivePath, outputFolder, format, password,
        [&entryNames](ArchiveDiskReader& reader, ArchiveDiskWriter& writer, DataBlock& block) {
            // Name -> already extracted. A name listed twice is wanted once.
            std::unordered_map<std::u16string, bool> wanted;
            for (const std::u16string& name : entryNames) {
                wanted.emplace(name, false);
            }
            std::size_t extracted = 0;
            ::archive_entry* entry = nullptr;
            while (reader.readNextHeader(&entry) == 1 && extracted < wanted.size()) {
                const char* pathname = archive_entry_pathname(entry);
                if (pathname == nullptr) {
                    continue;
                }
                // Matched as stored in the archive, before any rewriting.
                const auto found = wanted.find(tessel::host::fromUtf8(pathname));
                if (found == wanted.end() || found->second) {
                    continue;
                }
                if (extractEntry(entry, block, reader, writer)) {
                    found->second = true;
                    ++extracted;
                }
            }
        });
}

}  // namespace tessel::io::archive::core
