#include <archive/core/extractEntries.hpp>

#include <memory>
#include <optional>
#include <unordered_set>

#include <archive/core/CreatedPaths.hpp>
#include <archive/core/EntrySafety.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/error/messages/extractArchive.hpp>
#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/objects/ArchiveDiskWriter.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <archive/core/objects/DataBlock.hpp>
#include <archive/core/objects/copyEntryData.hpp>
#include <archive/core/openArchiveReader.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <archive/core/setEntryOutputPath.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

using tessel::host::HostPath;

bool isFolderEntry(::archive_entry* entry) {
    return archive_entry_filetype(entry) == AE_IFDIR;
}

}  // namespace

std::vector<std::u16string> extractEntries(const std::u16string& archivePath,
                                           const std::u16string& outputFolder,
                                           const std::u16string& formatText,
                                           const ExtractOptions& options, EntrySelection& selection,
                                           const ExtractFailurePolicy& failures,
                                           std::vector<std::u16string>* skipped) {
    const ArchiveFormat format = archiveFormatFromText(formatText);
    // What is on disk where each entry goes is looked up only when something needs it:
    // taking back what the call created, keeping existing files, or telling a replacement
    // (to be abandoned) from a new file.
    const bool tracksPaths =
        options.removeCreatedOnFailure || options.keepExisting || options.safeWrites;
    std::unique_ptr<ArchiveDiskReader> reader;
    std::unique_ptr<ArchiveDiskWriter> writer;
    CreatedPaths created;
    // Files kept where the archive has a folder: what goes beneath them is skipped with them.
    std::unordered_set<std::string> keptInTheWay;
    std::u16string currentEntry;
    bool entryInProgress = false;
    bool replacing = false;
    CopyHooks hooks;
    const auto takeBack = [&](const ArchiveException* failure) {
        switch (failures.cleanup) {
            case ExtractCleanup::CurrentEntryFile:
                if (failure != nullptr && writer &&
                    failure->rule != NullArchiveRule::CouldNotCloseFile &&
                    failure->rule != NullArchiveRule::EmptyEntryFilename) {
                    writer->deleteCurrentEntryFile();
                }
                return;
            case ExtractCleanup::AsOptionsSay:
                if (writer && entryInProgress) {
                    if (replacing && options.safeWrites) {
                        writer->abandonReplacement();
                    } else {
                        writer->deleteCurrentEntryFile();
                    }
                } else if (writer) {
                    writer->finishLastEntry();
                }
                if (options.removeCreatedOnFailure) {
                    created.removeAll();
                }
                return;
        }
    };
    try {
        // Refused before anything is opened, rather than cut or altered on the way.
        tessel::host::requireFileSystemName(outputFolder, "outputFolder");
        // The calls with options refuse a zip whose two directories disagree; extractArchive
        // reads it as libarchive does.
        ReadPurpose purpose = ReadPurpose::extraction();
        purpose.checkZipAgreement = failures.table == ExtractFailureTable::OptionCalls;
        reader = openArchiveReader(archivePath, format, options, purpose);
        writer = std::make_unique<ArchiveDiskWriter>(outputFolder, options);
        const EntrySafety safety(options, HostPath(writer->outputFolder()));
        const auto report = [&](bool started) {
            if (options.progress &&
                !options.progress(
                    Progress{reader->bytesRead(), reader->totalBytes(), currentEntry, started})) {
                throwInternalError(NullArchiveRule::Cancelled);
            }
            return true;
        };
        if (options.progress) {
            hooks.afterBlock = [&] { return report(false); };
        }
        DataBlock block;
        ::archive_entry* entry = nullptr;
        // An entry left out with a warning, for the caller to count.
        const auto leaveOut = [&] {
            if (skipped != nullptr) {
                skipped->push_back(currentEntry);
            }
            archive_entry_clear(entry);
        };
        while (reader->readNextHeader(&entry) == 1 && !selection.done()) {
            const char* pathname = archive_entry_pathname(entry);
            // Matched as stored in the archive, before any rewriting.
            std::u16string storedName = tessel::host::fromUtf8(pathname ? pathname : "");
            if (!selection.wants(storedName)) {
                continue;
            }
            currentEntry = std::move(storedName);
            report(true);
            if (!setEntryOutputPath(entry, writer->outputFolder(), options.stripComponents)) {
                continue;  // nothing of its name is left to place
            }
            if (!safety.review(entry, currentEntry)) {
                leaveOut();
                continue;
            }
            CreatedPaths::Plan plan;
            std::string path;
            if (tracksPaths) {
                path = archive_entry_pathname(entry);
                plan = created.plan(path);
                if (options.keepExisting && plan.targetExists &&
                    !(plan.targetIsFolder && isFolderEntry(entry))) {
                    TESSEL::io::archive::extractArchive::existingFileKept(
                        tessel::host::fromFileSystemText(path))
                        .warn();
                    if (isFolderEntry(entry)) {
                        keptInTheWay.insert(path.substr(0, path.find_last_not_of('/') + 1));
                    }
                    archive_entry_clear(entry);
                    continue;
                }
                if (options.keepExisting && !plan.fileInTheWay.empty()) {
                    if (keptInTheWay.insert(plan.fileInTheWay).second) {
                        TESSEL::io::archive::extractArchive::existingFileKept(
                            tessel::host::fromFileSystemText(plan.fileInTheWay))
                            .warn();
                    }
                    archive_entry_clear(entry);
                    continue;
                }
            }
            if (!writer->writeHeader(entry, std::nullopt, tracksPaths && !plan.targetExists)) {
                leaveOut();
                continue;
            }
            entryInProgress = true;
            replacing = plan.targetExists;
            if (tracksPaths) {
                created.confirm(path, plan, isFolderEntry(entry), writer->writesThroughTemporary());
            }
            hooks.readFailed = false;
            copyEntryData(block, *reader, *writer, entry, hooks);
            writer->recordWrittenFile(entry);
            entryInProgress = false;
            selection.taken(currentEntry);
        }
        std::vector<std::u16string> written = writer->writtenFiles();
        // Closing the writer finishes the last entry (its times and permissions).
        writer.reset();
        reader.reset();
        return written;
    } catch (const ArchiveException& failure) {
        takeBack(&failure);
        raiseExtractFailure(failure, failures.table,
                            {archivePath, format, currentEntry, hooks.readFailed});
    } catch (...) {
        takeBack(nullptr);
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
