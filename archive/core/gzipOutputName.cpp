#include <archive/core/archivecore.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

// The input's whole name with ".gz" appended: nothing is ever removed or replaced, so
// data.tar gives data.tar.gz and x.gz gives x.gz.gz.
std::u16string gzipOutputName(const std::u16string& inputPath) {
    const tessel::host::HostPath input(inputPath);
    const std::u16string extension = input.extension();
    return extension.empty() ? input.stem() + u".gz" : input.stem() + u"." + extension + u".gz";
}

}  // namespace tessel::io::archive::core
