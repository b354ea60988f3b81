#include <archive/core/openArchiveReader.hpp>

#include <host/HostPath.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

std::unique_ptr<ArchiveDiskReader> openArchiveReader(const std::u16string& archivePath,
                                                     ArchiveFormat format,
                                                     const ExtractOptions& options,
                                                     ReaderSetup setup) {
    // Read from a descriptor, the path only names the archive in messages.
    if (options.inputDescriptor < 0) {
        tessel::host::requireFileSystemName(archivePath, "archivePath");
    }
    setup.inputDescriptor = options.inputDescriptor;
    return std::make_unique<ArchiveDiskReader>(tessel::host::HostPath::fromText(archivePath),
                                               format, options.password, std::move(setup));
}

}  // namespace tessel::io::archive::core
