#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include <archive/core/archivecore.hpp>
#include <archive/core/compressGzipFiles.hpp>
#include <host/HostPath.hpp>
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
    const GzipOutputs outputs{std::u16string(), outputPath};

    // As gzip does, the output takes the input's permissions and time; until it is complete
    // only its owner may open it, so a private input is never readable through it. When the
    // input or the output cannot be opened here, the loop opens them itself and reports why.
    struct stat input {};
    const std::string output = tessel::host::HostPath::fromText(outputPath).access();
    const bool inputKnown =
        ::stat(tessel::host::HostPath::fromText(file).access().c_str(), &input) == 0 &&
        S_ISREG(input.st_mode);
    const int descriptor =
        options.outputDescriptor < 0 && inputKnown
            ? ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600)
            : -1;
    if (descriptor < 0) {
        compressGzipFiles({file}, outputs, gzip, GzipFailureTable::CompressgzToFile);
        return outputPath;
    }
    gzip.outputDescriptor = descriptor;
    try {
        compressGzipFiles({file}, outputs, gzip, GzipFailureTable::CompressgzToFile);
    } catch (...) {
        ::close(descriptor);
        ::unlink(output.c_str());
        throw;
    }
    const struct timespec times[2] = {{0, UTIME_OMIT}, input.st_mtim};
    ::fchmod(descriptor, input.st_mode & 0777);
    ::futimens(descriptor, times);
    ::close(descriptor);
    return outputPath;
}

}  // namespace tessel::io::archive::core
