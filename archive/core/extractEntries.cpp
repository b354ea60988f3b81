#include <archive/core/extractEntries.hpp>

#include <filesystem>
#include <memory>
#include <optional>

#include <archive/core/CreatedPaths.hpp>
#include <archive/core/EntrySafety.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/error/messages/extractArchive.hpp>
#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/objects/ArchiveDiskWriter.hpp>
#include <archive/core/objects/ArchiveFormat.hpp>
#include <archive/core/objects/DataBlock.hpp>
#include <archive/core/objects/copyEntryData.hpp>
#include <archive/core/openArchiveReader.hpp>
#include <archive/core/raiseExtractionError.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <archive/core/setEntryOutputPath.hpp>
#include <archive/core/translateExtractFailure.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

using tessel::host::HostPath;

ReaderSetup readerSetup(const ExtractOptions& options) {
    ReaderSetup setup;
    setup.inputDescriptor = options.inputDescriptor;
    setup.gzipCheck =
        options.gzipCheck ? options.gzipCheck : StreamCheckFactory(makeGzipStreamCheck);
    setup.upstreamVerdict = options.upstreamVerdict;
    return setup;
}

// libarchive's secure flags check the whole path, the output folder's own part included,
// so a confined writer works on the folder's canonical form (no symbolic links, no "..").
// Below the current folder it is taken relative to it: the checks then start there, as
// they do for a tool that changes into the folder first, and cost one look per level less.
HostPath canonicalFolder(const HostPath& folder) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path named = folder.empty() ? fs::path(".") : folder.fsPath();
    fs::path canonical = fs::weakly_canonical(fs::absolute(named, error), error);
    if (error) {
        canonical = fs::absolute(named).lexically_normal();
    }
    const fs::path current = fs::current_path(error);
    if (!error) {
        const fs::path below = canonical.lexically_relative(current);
        if (!below.empty() && *below.begin() != "..") {
            return HostPath(below);
        }
    }
    return HostPath(canonical);
}

std::unique_ptr<ArchiveDiskWriter> makeWriter(const std::u16string& outputFolder,
                                              const ExtractOptions& options) {
    HostPath folder = HostPath::fromText(outputFolder, "outputFolder");
    WriterSetup setup;
    setup.confine = options.confine;
    setup.safeWrites = options.safeWrites;
    setup.noOverwrite = options.keepExisting;
    if (options.confine) {
        setup.shownFolder = outputFolder;
        folder = canonicalFolder(folder);
    }
    return std::make_unique<ArchiveDiskWriter>(std::move(folder), std::move(setup));
}

bool isFolderEntry(::archive_entry* entry) {
    return archive_entry_filetype(entry) == AE_IFDIR;
}

}  // namespace

std::vector<std::u16string> extractEntries(const std::u16string& archivePath,
                                           const std::u16string& outputFolder,
                                           const std::u16string& formatText,
                                           const ExtractOptions& options, EntrySelection& selection,
                                           ExtractionFailures failures) {
    const ArchiveFormat format = archiveFormatFromText(formatText);
    const bool withOptions = failures == ExtractionFailures::AsOptionsSay;
    std::unique_ptr<ArchiveDiskReader> reader;
    std::unique_ptr<ArchiveDiskWriter> writer;
    CreatedPaths created;
    ExtractionFailureContext context;
    bool entryInProgress = false;
    bool replacing = false;
    CopyHooks hooks;
    // Takes back what a failed call did, as the options ask: the entry in progress (its
    // temporary, when it was replacing a file through one), then all this call created.
    const auto undo = [&] {
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
    };
    try {
        // Refused before anything is opened, rather than cut or altered on the way.
        tessel::host::requireFileSystemName(outputFolder, "outputFolder");
        reader = openArchiveReader(archivePath, format, options, readerSetup(options));
        writer = makeWriter(outputFolder, options);
        const EntrySafety safety(options, HostPath(writer->outputFolder()));
        const auto report = [&](bool started) {
            if (options.progress &&
                !options.progress(
                    Progress{reader->bytesRead(), reader->totalBytes(), context.entry, started})) {
                throwInternalError(NullArchiveRule::Cancelled);
            }
            return true;
        };
        if (options.progress) {
            hooks.afterBlock = [&] { return report(false); };
        }
        DataBlock block;
        ::archive_entry* entry = nullptr;
        while (reader->readNextHeader(&entry) == 1 && !selection.done()) {
            const char* pathname = archive_entry_pathname(entry);
            // Matched as stored in the archive, before any rewriting.
            std::u16string storedName = tessel::host::fromUtf8(pathname ? pathname : "");
            if (!selection.wants(storedName)) {
                continue;
            }
            context.entry = std::move(storedName);
            report(true);
            setEntryOutputPath(entry, writer->outputFolder());
            CreatedPaths::Plan plan;
            std::string path;
            if (withOptions) {
                if (!safety.review(entry, context.entry)) {
                    archive_entry_clear(entry);
                    continue;
                }
                path = archive_entry_pathname(entry);
                plan = created.plan(path);
                if (options.keepExisting && plan.targetExists &&
                    !(plan.targetIsFolder && isFolderEntry(entry))) {
                    TESSEL::io::archive::extractArchive::existingFileKept(
                        tessel::host::fromFileSystemText(path))
                        .warn();
                    archive_entry_clear(entry);
                    continue;
                }
            }
            if (!writer->writeHeader(entry, std::nullopt, withOptions && !plan.targetExists)) {
                archive_entry_clear(entry);
                continue;
            }
            entryInProgress = true;
            replacing = plan.targetExists;
            if (withOptions) {
                created.confirm(path, plan, isFolderEntry(entry));
            }
            hooks.readFailed = false;
            copyEntryData(block, *reader, *writer, entry, hooks);
            writer->recordWrittenFile(entry);
            entryInProgress = false;
            selection.taken(context.entry);
        }
        std::vector<std::u16string> written = writer->writtenFiles();
        // Closing the writer finishes the last entry (its times and permissions).
        writer.reset();
        reader.reset();
        return written;
    } catch (const ArchiveException& failure) {
        if (!withOptions) {
            translateExtractFailure(failure, archivePath, writer, format);
            rethrowAsHostError();
        }
        context.readFailed = hooks.readFailed;
        undo();
        raiseExtractionError(failure, archivePath, format, context);
    } catch (...) {
        if (withOptions) {
            undo();
        }
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
