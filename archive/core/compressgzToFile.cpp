#include <stdexcept>

#include <archive/core/archivecore.hpp>

namespace tessel::io::archive::core {

std::u16string compressgzToFile(const std::u16string&, const std::u16string&, const CreateOptions&) {
    throw std::logic_error("not built yet");
}

}  // namespace tessel::io::archive::core
