#include <archive/core/archivecore.hpp>
#include <host/TextConversion.hpp>

#include "Commands.hpp"

namespace tqarchive {

namespace core = tessel::io::archive::core;

std::u16string readFormatFor(const Command& command, const std::string& archive) {
    const auto type = archive == "-"
                          ? std::nullopt
                          : core::archiveTypeFromName(tessel::host::fromFileSystemText(archive));
    // "tgz" reads tar, plain or behind gzip, and reports failures as a tar archive's; "tar"
    // reads every format and filter, for the other compressions and for what the name does
    // not tell (standard input among them).
    const bool tarOrTgz =
        type && (type->format == u"tgz" || (type->format == u"tar" && type->filter.empty()));
    switch (command.format) {
        case Format::Zip:
            return u"zip";
        case Format::Gzip:
            return u"gz";
        case Format::Tar:
            return tarOrTgz ? u"tgz" : u"tar";
        case Format::AsNamed:
            break;
    }
    if (!type || type->format == u"tar") {
        return tarOrTgz ? u"tgz" : u"tar";
    }
    return type->format;  // "zip", "tgz" or "gz"
}

}  // namespace tqarchive
