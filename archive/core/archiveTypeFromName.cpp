#include <stdexcept>

#include <archive/core/archivecore.hpp>

namespace tessel::io::archive::core {

std::optional<ArchiveType> archiveTypeFromName(std::u16string_view) {
    throw std::logic_error("not built yet");
}

}  // namespace tessel::io::archive::core
