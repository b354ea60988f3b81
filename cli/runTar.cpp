#include "Commands.hpp"

namespace tqarchive {

int runTar(const CommandLine& commandLine) {
    const std::string& archive = commandLine.operands.front();
    // "all" lets libarchive choose the format and compression by the archive's extension.
    std::u16string format = u"all";
    if (hasSuffix(archive, ".tgz") || hasSuffix(archive, ".tar.gz")) {
        format = u"tgz";
    } else if (hasSuffix(archive, ".tar")) {
        format = u"tar";
    }
    return createArchiveFromInputs(commandLine, format, std::nullopt, std::string());
}

}  // namespace tqarchive
