#include <string>

#include <archive/core/archivecore.hpp>
#include <archive/core/compressGzipFiles.hpp>
#include <host/TextConversion.hpp>

namespace tessel::io::archive::core {

// One file, as compressgz compresses each of its inputs, but to the path the caller
// chose, with the options' level, descriptor, progress and final close; whatever fails,
// the output this call opened is removed.
std::u16string compressgzToFile(const std::u16string& file, const std::u16string& outputPath,
                                const CreateOptions& options) {
    tessel::host::requireFileSystemName(file, "file");
    if (options.outputDescriptor < 0) {
        tessel::host::requireFileSystemName(outputPath, "outputPath");
    }
    // A gzip stream is its own compression, and holds no encryption.
    CreateOptions gzip = options;
    gzip.filter.clear();
    gzip.password.reset();
    compressGzipFiles({file}, GzipOutputs{std::u16string(), outputPath}, gzip,
                      GzipFailureTable::CompressgzToFile);
    return outputPath;
}

}  // namespace tessel::io::archive::core
