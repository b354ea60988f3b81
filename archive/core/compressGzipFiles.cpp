#include <archive/core/compressGzipFiles.hpp>

#include <archive_entry.h>

#include <cstdint>
#include <functional>
#include <memory>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/objects/ArchiveCreator.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <archive/core/objects/ArchiveObjectReader.hpp>
#include <archive/core/objects/CopyBuffer.hpp>
#include <archive/core/objects/copyFileContent.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

using tessel::host::HostPath;

namespace {

constexpr std::streamsize kChunkSize = 16384;

HostPath outputPathFor(const HostPath& input, const GzipOutputs& outputs) {
    if (outputs.exactPath) {
        return HostPath::fromText(*outputs.exactPath);
    }
    const HostPath folder =
        HostPath::fromText(outputs.folder.empty() ? input.parent().native() : outputs.folder);
    const HostPath name(gzipOutputName(input.native()));
    // A bare input name and no folder: the bare output name, resolved against the
    // current folder like the input was.
    return folder.empty() ? name : folder / name;
}

}  // namespace

std::vector<std::u16string> compressGzipFiles(const std::vector<std::u16string>& files,
                                              const GzipOutputs& outputs,
                                              const CreateOptions& options,
                                              GzipFailureTable failures) {
    std::vector<std::u16string> written;
    written.reserve(files.size());
    std::unique_ptr<CopyBuffer> buffer;
    std::unique_ptr<ArchiveObjectReader> reader;
    std::unique_ptr<ArchiveCreator> creator;
    HostPath inputPath;
    std::u16string shownOutput;
    // A descriptor's output is the caller's, whatever failed.
    const auto removeOutput = [&](const ArchiveException* failure) {
        if (creator && options.outputDescriptor < 0 &&
            gzipFailureRemovesOutput(failure, failures)) {
            creator->deleteArchiveFile();
        }
    };
    try {
        buffer = std::make_unique<CopyBuffer>();
        for (const std::u16string& file : files) {
            inputPath = HostPath::fromText(file);
            // Gz makes the reader strict: an unreadable input is an error, not a warning.
            reader = std::make_unique<ArchiveObjectReader>(inputPath, ArchiveFormat::Gz);
            const HostPath outputPath = outputPathFor(inputPath, outputs);
            shownOutput = outputs.exactPath ? *outputs.exactPath : outputPath.native();
            // The next output is opened before the previous one is closed (by its
            // creator's destruction).
            creator = std::make_unique<ArchiveCreator>(outputPath, ArchiveFormat::Gz, options);
            std::uint64_t bytesDone = 0;
            if (options.progress &&
                !options.progress(Progress{bytesDone, options.expectedBytes, file, true})) {
                throwInternalError(NullArchiveRule::Cancelled);
            }
            const std::function<bool(std::size_t)> afterChunk =
                options.progress ? std::function<bool(std::size_t)>([&](std::size_t count) {
                    bytesDone += count;
                    return options.progress(
                        Progress{bytesDone, options.expectedBytes, file, false});
                })
                                 : std::function<bool(std::size_t)>();
            ::archive_entry* entry = nullptr;
            // An empty input has no entry: its empty output is closed like the others.
            if (reader->nextHeader(&entry)) {
                creator->writeHeader(entry);
                copyFileContent(*buffer, *creator, entry, kChunkSize, afterChunk);
                written.push_back(shownOutput);
            }
            if (options.reportFinalClose) {
                creator->finish();
            }
        }
        creator.reset();
        return written;
    } catch (const ArchiveException& failure) {
        removeOutput(&failure);
        raiseGzipFailure(failure, failures, {inputPath.native(), shownOutput, options.level});
    } catch (...) {
        removeOutput(nullptr);
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
