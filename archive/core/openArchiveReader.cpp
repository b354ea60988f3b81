#include <archive/core/openArchiveReader.hpp>

#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

std::unique_ptr<ArchiveDiskReader> openArchiveReader(const std::u16string& archivePath,
                                                     ArchiveFormat format,
                                                     const ExtractOptions& options,
                                                     ReadPurpose purpose) {
    // Read from a descriptor, the path only names the archive in messages.
    if (options.inputDescriptor < 0) {
        tessel::host::requireFileSystemName(archivePath, "archivePath");
    }
    return std::make_unique<ArchiveDiskReader>(tessel::host::HostPath::fromText(archivePath),
                                               format, options, purpose);
}

}  // namespace tessel::io::archive::core
