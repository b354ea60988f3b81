#include <archive_entry.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <archive/core/archivecore.hpp>
#include <archive/core/error/ArchiveException.hpp>
#include <archive/core/error/StatusChecks.hpp>
#include <archive/core/error/messages/createArchive.hpp>
#include <archive/core/objects/ArchiveCreator.hpp>
#include <archive/core/objects/ArchiveFormat.hpp>
#include <archive/core/objects/ArchiveObjectReader.hpp>
#include <archive/core/objects/CopyBuffer.hpp>
#include <archive/core/objects/copyFileContent.hpp>
#include <archive/core/rethrowAsHostError.hpp>
#include <archive/core/translateCreateArchiveFailure.hpp>
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

// The body of both overloads; they differ only in how the creator is constructed.
template <class MakeCreator>
std::vector<std::u16string> createWith(const std::u16string& archivePath,
                                       const std::vector<std::u16string>& files,
                                       const std::vector<std::u16string>& entryNames,
                                       const std::u16string& formatText,
                                       const MakeCreator& makeCreator) {
    const ArchiveFormat format = archiveFormatFromText(formatText);
    // Refused before the archive exists: an input without a name cannot be placed.
    if (entryNames.size() < files.size()) {
        TESSEL::io::archive::createArchive::entryNameCountMismatch(decimalText(files.size()),
                                                                   decimalText(entryNames.size()))
            .raise();
    }

    // Owned outside the guarded region so that they are released while the translated
    // error leaves the call; the creator's release closes the partial archive, which is
    // kept on purpose.
    std::unique_ptr<CopyBuffer> buffer;
    std::unique_ptr<ArchiveCreator> creator;
    std::unique_ptr<ArchiveObjectReader> reader;
    try {
        buffer = std::make_unique<CopyBuffer>();
        creator = makeCreator(HostPath::fromText(archivePath), format);
        for (std::size_t i = 0; i < files.size(); ++i) {
            const std::u16string& entryName = entryNames[i];
            // The next reader exists before the previous one goes, and it is opened even
            // for an input without a name.
            const HostPath input = HostPath::fromText(files[i]);
            reader = std::make_unique<ArchiveObjectReader>(input, format);
            if (entryName.empty()) {
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
            archive_entry_set_pathname(entry, tessel::host::toUtf8(entryName).c_str());
            // A refused header has issued its warning; the data of a non-empty file is then
            // refused too and ends the call.
            creator->writeHeader(entry);
            copyFileContent(*buffer, *creator, entry, kChunkSize);
            creator->addEntryName(entry);
        }
        std::vector<std::u16string> written = creator->getEntryNames();
        // Destroying the creator writes the trailer or central directory and closes the
        // file; a failure of that last close is not reported.
        creator.reset();
        return written;
    } catch (const ArchiveException& failure) {
        translateCreateArchiveFailure(failure, archivePath, format);
        rethrowAsHostError();
    } catch (...) {
        rethrowAsHostError();
    }
}

}  // namespace

std::vector<std::u16string> createArchive(const std::u16string& archivePath,
                                          const std::vector<std::u16string>& files,
                                          const std::vector<std::u16string>& entryNames,
                                          const std::u16string& format) {
    return createWith(archivePath, files, entryNames, format,
                      [](HostPath path, ArchiveFormat archiveFormat) {
                          return std::make_unique<ArchiveCreator>(std::move(path), archiveFormat);
                      });
}

std::vector<std::u16string> createArchive(const std::u16string& archivePath,
                                          const std::vector<std::u16string>& files,
                                          const std::vector<std::u16string>& entryNames,
                                          const std::u16string& format,
                                          const std::u16string& password,
                                          const std::u16string& encryptionMethod) {
    return createWith(archivePath, files, entryNames, format,
                      [&](HostPath path, ArchiveFormat archiveFormat) {
                          return std::make_unique<ArchiveCreator>(std::move(path), password,
                                                                  encryptionMethod, archiveFormat);
                      });
}

}  // namespace tessel::io::archive::core
