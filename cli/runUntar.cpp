#include "Commands.hpp"

namespace tqarchive {

int runUntar(const CommandLine& commandLine) {
    const std::string& archive = commandLine.operands.front();
    // "tgz" reads tar behind gzip or uncompressed and names the archive in its errors;
    // other compressions (.tar.xz, .tar.bz2, ...) need every format and filter ("tar").
    const bool tarOrTgz =
        hasSuffix(archive, ".tar") || hasSuffix(archive, ".tgz") || hasSuffix(archive, ".tar.gz");
    return extractArchiveToFolder(commandLine, tarOrTgz ? "tgz" : "tar", std::nullopt);
}

}  // namespace tqarchive
