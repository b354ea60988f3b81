#include <archive/core/createEntries.hpp>

#include <archive.h>
#include <archive_entry.h>

#include <cstddef>
#include <memory>
#include <string>

#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/error/messages/createArchive.hpp>
#include <archive/core/objects/ArchiveCreator.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <archive/core/objects/ArchiveObjectReader.hpp>
#include <archive/core/objects/CopyBuffer.hpp>
#include <archive/core/objects/ReadDiskHandlePool.hpp>
#include <archive/core/objects/copyFileContent.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

using tessel::host::HostPath;

namespace {

constexpr std::streamsize kChunkSize = 16384;

std::u16string decimalText(std::size_t value) {
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

std::string indexed(const char* name, std::size_t index) {
    return std::string(name) + "[" + std::to_string(index) + "]";
}

// Every path and name is checked before the archive exists: text that cannot name a file
// as written is refused rather than cut or altered on its way to the file system.
void requireNames(const std::u16string& archivePath, const std::vector<std::u16string>& files,
                  const std::vector<std::u16string>& entryNames, bool toDescriptor) {
    if (!toDescriptor) {
        tessel::host::requireFileSystemName(archivePath, "archivePath");
    }
    for (std::size_t i = 0; i < files.size(); ++i) {
        tessel::host::requireFileSystemName(files[i], indexed("files", i));
        tessel::host::requireFileSystemName(entryNames[i], indexed("entryNames", i));
    }
}

}  // namespace

std::vector<std::u16string> createEntries(const std::u16string& archivePath,
                                          const std::vector<std::u16string>& files,
                                          const std::vector<std::u16string>& entryNames,
                                          const std::u16string& formatText,
                                          const CreateOptions& options,
                                          const CreateFailurePolicy& failures) {
    const ArchiveFormat format = archiveFormatFromText(formatText);
    // Refused before the archive exists: an input without a name cannot be placed.
    if (entryNames.size() < files.size()) {
        TESSEL::io::archive::createArchive::entryNameCountMismatch(decimalText(files.size()),
                                                                   decimalText(entryNames.size()))
            .raise();
    }
    requireNames(archivePath, files, entryNames, options.outputDescriptor >= 0);

    // Owned outside the guarded region so that they are released while the translated
    // error leaves the call; the creator's release closes the partial archive, which is
    // kept on purpose.
    std::unique_ptr<CopyBuffer> buffer;
    std::unique_ptr<ArchiveCreator> creator;
    ReadDiskHandlePool readHandles;  // outlives the readers that borrow from it
    std::unique_ptr<ArchiveObjectReader> reader;
    try {
        buffer = std::make_unique<CopyBuffer>();
        creator =
            std::make_unique<ArchiveCreator>(HostPath::fromText(archivePath), format, options);
        std::uint64_t bytesDone = 0;
        std::u16string_view current;
        const auto report = [&](bool started) {
            if (options.progress &&
                !options.progress(Progress{bytesDone, options.expectedBytes, current, started})) {
                throwInternalError(NullArchiveRule::Cancelled);
            }
        };
        const std::function<bool(std::size_t)> afterChunk =
            options.progress ? std::function<bool(std::size_t)>([&](std::size_t count) {
                bytesDone += count;
                return options.progress(Progress{bytesDone, options.expectedBytes, current, false});
            })
                             : std::function<bool(std::size_t)>();
        for (std::size_t i = 0; i < files.size(); ++i) {
            const std::u16string& entryName = entryNames[i];
            // The next reader exists before the previous one goes, and it is opened even
            // for an input without a name.
            const HostPath input = HostPath::fromText(files[i]);
            reader = std::make_unique<ArchiveObjectReader>(input, format, readHandles);
            if (entryName.empty()) {
                // Skipped without a word, but a missing input still fails the call.
                if (!reader->exists()) {
                    throwArchiveErrorWithMessage(NullArchiveRule::CouldNotOpenFile, input.native());
                }
                continue;
            }
            ::archive_entry* entry = nullptr;
            if (!reader->nextHeader(&entry)) {
                continue;  // unreadable input, already warned about
            }
            // Readers take a name ending in a slash for a folder: a file stored under such
            // a name loses its content and, in tar, corrupts the archive.
            if (entryName.back() == HostPath::genericSeparator() &&
                archive_entry_filetype(entry) != AE_IFDIR) {
                warnForPath(NullArchiveRule::InvalidEntryHeader, input, format);
                continue;
            }
            current = entryName;
            report(true);
            const std::string storedName = tessel::host::toUtf8(entryName);
            // The calls with options name the cause rather than the data's refusal that
            // would follow the header's.
            if (failures.table == CreateFailureTable::OptionCalls && !options.skipRefusedEntries &&
                !creator->holdsName(storedName.size())) {
                throwArchiveErrorWithMessage(NullArchiveRule::EntryNameTooLong,
                                             decimalText(storedName.size()));
            }
            archive_entry_set_pathname(entry, storedName.c_str());
            // A refused header has issued its warning; the data of a non-empty file is then
            // refused too and ends the call, unless the options ask to leave the entry out.
            if (!creator->writeHeader(entry, failures.headerWarnings) &&
                options.skipRefusedEntries) {
                continue;
            }
            copyFileContent(*buffer, *creator, entry, kChunkSize, afterChunk);
            creator->addEntryName(entry);
        }
        std::vector<std::u16string> written = creator->getEntryNames();
        if (options.reportFinalClose) {
            creator->finish();
        }
        // Destroying the creator writes the trailer or central directory and closes the
        // file; a failure of that last close is not reported.
        creator.reset();
        return written;
    } catch (const ArchiveException& failure) {
        raiseCreateFailure(failure, failures.table, {archivePath, format, options});
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace tessel::io::archive::core
