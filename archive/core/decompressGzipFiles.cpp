#include <archive/core/decompressGzipFiles.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/error/messages/gunzip.hpp>
#include <archive/core/objects/ArchiveDiskReader.hpp>
#include <archive/core/objects/ArchiveDiskWriter.hpp>
#include <archive/core/objects/DataBlock.hpp>
#include <archive/core/objects/copyEntryData.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <host/FileSystemError.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

namespace {

// The input's permission bits and modification time on the output's entry (the disk
// writer applies both), as gzip gives them; read from the descriptor when reading one.
void takeInputMode(::archive_entry* entry, const tessel::host::HostPath& input,
                   int inputDescriptor) {
    struct stat info {};
    const int status = inputDescriptor >= 0 ? ::fstat(inputDescriptor, &info)
                                            : ::stat(input.access().c_str(), &info);
    if (status == 0 && S_ISREG(info.st_mode)) {
        archive_entry_set_perm(entry, info.st_mode & 0777);
        archive_entry_set_mtime(entry, info.st_mtim.tv_sec, info.st_mtim.tv_nsec);
    }
}

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

HostPath outputPathOf(const HostPath& folder, const std::u16string& name) {
    return name.empty() ? folder : (folder.empty() ? HostPath(name) : folder / HostPath(name));
}

void setOutputPathname(::archive_entry* entry, const HostPath& path) {
    archive_entry_set_pathname(entry, path.nativeForm().access().c_str());
}

bool sameFile(const HostPath& a, const HostPath& b) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (fs::absolute(a.fsPath(), error).lexically_normal() ==
        fs::absolute(b.fsPath(), error).lexically_normal()) {
        return true;
    }
    return fs::equivalent(a.fsPath(), b.fsPath(), error);
}

// Refused before anything is written: an input whose output would be the input itself
// (a name without an extension decompressed beside itself) would be destroyed.
void refuseOutputOntoInput(const std::vector<std::u16string>& files,
                           const std::u16string& outputFolder, bool exactOutputPath) {
    for (std::size_t i = 0; i < files.size(); ++i) {
        tessel::host::requireFileSystemName(files[i], "files[" + std::to_string(i) + "]");
    }
    tessel::host::requireFileSystemName(outputFolder, "outputFolder");
    for (const std::u16string& file : files) {
        if (file.empty()) {
            continue;
        }
        const HostPath input = HostPath::fromText(file);
        const HostPath folder =
            outputFolder.empty() ? folderBesideInput(input) : HostPath::fromText(outputFolder);
        const HostPath output =
            outputPathOf(folder, exactOutputPath ? std::u16string() : gunzipOutputName(file));
        if (!output.empty() && sameFile(input, output)) {
            TESSEL::io::archive::gunzip::outputIsInput(input.native()).raise();
        }
    }
}

// Writes decompressed data to a descriptor instead of a file on disk.
void copyToDescriptor(DataBlock& block, ArchiveDiskReader& reader, ::archive_entry* entry,
                      int descriptor, CopyHooks& hooks) {
    for (;;) {
        const int status = reader.readDataBlock(&block.buffer, &block.size, &block.offset, entry);
        if (status == ARCHIVE_EOF) {
            return;
        }
        if (status != ARCHIVE_OK) {
            hooks.readFailed = true;
            throwInternalError(NullArchiveRule::CouldNotWriteFile);
        }
        const auto* bytes = static_cast<const char*>(block.buffer);
        for (std::size_t left = block.size; left > 0;) {
            const ssize_t wrote = ::write(descriptor, bytes, left);
            if (wrote < 0 && errno == EINTR) {
                continue;
            }
            if (wrote < 0) {
                throwInternalError(errno == ENOSPC ? NullArchiveRule::DiskSpaceFull
                                                   : NullArchiveRule::CouldNotWriteFile);
            }
            bytes += wrote;
            left -= static_cast<std::size_t>(wrote);
        }
        if (hooks.afterBlock && !hooks.afterBlock()) {
            throwInternalError(NullArchiveRule::Cancelled);
        }
    }
}

// Whether nothing is at the path yet. A path that cannot be looked at is left to the
// writer's check, which names it as the output that cannot be opened.
bool nothingAt(const HostPath& path) {
    try {
        return !path.statusIfExists().has_value();
    } catch (const tessel::host::FileSystemError&) {
        return false;
    }
}

}  // namespace

std::vector<std::u16string> decompressGzipFiles(const std::vector<std::u16string>& files,
                                                const std::u16string& outputFolder,
                                                bool exactOutputPath, const ExtractOptions& options,
                                                GunzipFailureTable failures) {
    const bool besideInputs = outputFolder.empty();
    // rw-r--r--: what an empty stream's output gets, as libarchive has no entry to copy from.
    constexpr int kEmptyOutputMode = 0644;

    // Kept across inputs: a truncated input is detected before its own output name is
    // derived, so its error names the previous input's output.
    std::u16string outputName;
    HostPath inputPath;
    HostPath outputPath;
    bool outputIsNew = false;
    std::unique_ptr<ArchiveDiskReader> reader;
    std::unique_ptr<ArchiveDiskWriter> writer;
    try {
        refuseOutputOntoInput(files, outputFolder, exactOutputPath);
        writer = std::make_unique<ArchiveDiskWriter>(HostPath::fromText(outputFolder));
        DataBlock block;
        CopyHooks hooks;
        std::u16string current;
        if (options.progress) {
            hooks.afterBlock = [&] {
                return options.progress(
                    Progress{reader->bytesRead(), reader->totalBytes(), current, false});
            };
        }
        for (const std::u16string& file : files) {
            inputPath = HostPath::fromText(file);
            // The next reader exists before the previous one goes.
            auto next =
                std::make_unique<ArchiveDiskReader>(inputPath, ArchiveFormat::Gz, options,
                                                    ReadPurpose::gunzip(&file == &files.front()));
            reader = std::move(next);
            if (!exactOutputPath) {
                outputName = gunzipOutputName(inputPath.native());
            }
            const HostPath folder =
                besideInputs ? folderBesideInput(inputPath) : HostPath::fromText(outputFolder);
            outputPath = outputPathOf(folder, outputName);
            current = inputPath.native();
            if (options.progress &&
                !options.progress(
                    Progress{reader->bytesRead(), reader->totalBytes(), current, true})) {
                throwInternalError(NullArchiveRule::Cancelled);
            }

            ::archive_entry* entry = nullptr;
            const int found = reader->readNextHeader(&entry);
            if (found == 1 && options.outputDescriptor >= 0) {
                copyToDescriptor(block, *reader, entry, options.outputDescriptor, hooks);
                reader->checkGzipTrailer();
            } else if (found == 1) {
                setOutputPathname(entry, outputPath);
                if (options.gunzipKeepsInputMode) {
                    takeInputMode(entry, inputPath,
                                  &file == &files.front() ? options.inputDescriptor : -1);
                }
                outputIsNew = nothingAt(outputPath);
                writer->writeHeader(entry, ArchiveFormat::Gz);
                copyEntryData(block, *reader, *writer, entry, hooks);
                reader->checkGzipTrailer();
                writer->recordWrittenFile(entry);
                outputIsNew = false;
            } else if (found == 2 && options.outputDescriptor < 0) {
                // A valid stream with no data: libarchive reports the end at once.
                setOutputPathname(entry, outputPath);
                archive_entry_set_perm(entry, kEmptyOutputMode);
                if (options.gunzipKeepsInputMode) {
                    takeInputMode(entry, inputPath,
                                  &file == &files.front() ? options.inputDescriptor : -1);
                }
                writer->writeHeader(entry, ArchiveFormat::Gz);
                writer->recordWrittenFile(entry);
            }
        }
        std::vector<std::u16string> written = writer->writtenFiles();
        writer.reset();
        reader.reset();
        return written;
    } catch (const ArchiveException& failure) {
        if (options.removeCreatedOnFailure && outputIsNew && writer) {
            writer->deleteCurrentEntryFile();
        }
        raiseGunzipFailure(failure, failures, {inputPath.native(), outputName});
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
