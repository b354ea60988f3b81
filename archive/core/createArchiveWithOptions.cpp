#include <stdexcept>

#include <archive/core/archivecore.hpp>

namespace tessel::io::archive::core {

std::vector<std::u16string> createArchiveWithOptions(const std::u16string&, const std::vector<std::u16string>&, const std::vector<std::u16string>&, const std::u16string&, const CreateOptions&) {
    throw std::logic_error("not built yet");
}

}  // namespace tessel::io::archive::core
