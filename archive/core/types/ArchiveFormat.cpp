#include <archive/core/types/ArchiveFormat.hpp>

namespace tessel::io::archive::core {

ArchiveFormat archiveFormatFromText(const std::u16string& text) {
    if (text == u"zip") {
        return ArchiveFormat::Zip;
    }
    if (text == u"tar") {
        return ArchiveFormat::Tar;
    }
    if (text == u"gz") {
        return ArchiveFormat::Gz;
    }
    if (text == u"tgz") {
        return ArchiveFormat::Tgz;
    }
    if (text == u"all") {
        return ArchiveFormat::All;
    }
    return ArchiveFormat::Invalid;
}

}  // namespace tessel::io::archive::core
