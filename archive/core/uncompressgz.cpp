#include <memory>
#include <string>
#include <vector>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/messages/extractArchive.hpp>
#include <archive/core/error/messages/gunzip.hpp>
#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/objects/ArchiveDiskWriter.hpp>
#include <archive/core/objects/ArchiveFormat.hpp>
#include <archive/core/objects/DataBlock.hpp>
#include <archive/core/objects/copyEntryData.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

namespace {

using tessel::host::HostPath;

// Where the output of one input goes when no output folder was given: beside the
// input, as a bare relative name when the input lies in the current folder.
HostPath folderBesideInput(const HostPath& inputPath) {
    const HostPath current = HostPath::currentDirectory().nativeForm();
    const HostPath parent = inputPath.parent().nativeForm();
    if (parent.empty() || parent.native() == current.native()) {
        return HostPath();
    }
    return parent;
}

void setOutputPathname(::archive_entry* entry, const HostPath& folder, const std::u16string& name) {
    const HostPath path =
        name.empty() ? folder : (folder.empty() ? HostPath(name) : folder / HostPath(name));
    archive_entry_set_pathname(entry, path.nativeForm().access().c_str());
}

}  // namespace

std::vector<std::u16string> uncompressgz(const std::vector<std::u16string>& files,
                                         const std::u16string& outputFolder, bool exactOutputPath) {
    namespace messages = TESSEL::io::archive;
    const bool besideInputs = outputFolder.empty();
    // rw-r--r--: what an empty stream's output gets, as libarchive has no entry to copy from.
    constexpr int kEmptyOutputMode = 0644;

    // Kept across inputs: a truncated input is detected before its own output name is
    // derived, so its error names the previous input's output.
    std::u16string outputName;
    HostPath inputPath;
    std::unique_ptr<ArchiveDiskReader> reader;
    try {
        auto writer = std::make_unique<ArchiveDiskWriter>(HostPath::fromText(outputFolder));
        DataBlock block;
        for (const std::u16string& file : files) {
            inputPath = HostPath::fromText(file);
            // The next reader exists before the previous one goes.
            auto next = std::make_unique<ArchiveDiskReader>(inputPath, ArchiveFormat::Gz, u"");
            reader = std::move(next);
            if (!exactOutputPath) {
                outputName = HostPath(inputPath.stem()).nativeForm().native();
            }
            const HostPath folder =
                besideInputs ? folderBesideInput(inputPath) : HostPath::fromText(outputFolder);

            ::archive_entry* entry = nullptr;
            const int found = reader->readNextHeader(&entry);
            if (found == 1) {
                setOutputPathname(entry, folder, outputName);
                writer->writeHeader(entry, ArchiveFormat::Gz);
                copyEntryData(block, *reader, *writer, entry);
                writer->recordWrittenFile(entry);
            } else if (found == 2) {
                // A valid stream with no data: libarchive reports the end at once.
                setOutputPathname(entry, folder, outputName);
                archive_entry_set_perm(entry, kEmptyOutputMode);
                writer->writeHeader(entry, ArchiveFormat::Gz);
                writer->recordWrittenFile(entry);
            }
        }
        std::vector<std::u16string> written = writer->writtenFiles();
        writer.reset();
        reader.reset();
        return written;
    } catch (const ArchiveException& failure) {
        switch (failure.rule) {
            case NullArchiveRule::CouldNotOpenFile:
                messages::gunzip::javaOpenError(inputPath.native()).raise();
            case NullArchiveRule::PermissionDenied:
            case NullArchiveRule::UnableToOverwrite:
                messages::gunzip::javaOutputOpenError(failure.message).raise();
            case NullArchiveRule::CorruptGzFile:
                messages::gunzip::javaCopyStreamError(outputName).raise();
            case NullArchiveRule::NotGzipFormat:
                messages::gunzip::notGzipFormat(inputPath.native()).raise();
            case NullArchiveRule::OverwriteOpenFile:
                messages::extractArchive::OverwriteOpenFile(failure.message).raise();
            case NullArchiveRule::DiskSpaceFull:
                messages::extractArchive::outputDiskFull().raise();
            default:
                rethrowAsHostError();
        }
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
