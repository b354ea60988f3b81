#include <archive/core/archivecore.hpp>
#include <host/HostPath.hpp>

namespace tessel::io::archive::core {

// The input's name without its last extension, whatever that is: a.txt.gz gives a.txt,
// b.tgz gives b, plain gives plain (which the callers then refuse to write over).
std::u16string gunzipOutputName(const std::u16string& inputPath) {
    return tessel::host::HostPath(tessel::host::HostPath(inputPath).stem()).nativeForm().native();
}

}  // namespace tessel::io::archive::core
