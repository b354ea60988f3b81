#include <stdexcept>

#include <archive/core/archivecore.hpp>

namespace tessel::io::archive::core {

ExtractOptions ExtractOptions::safe() {
    throw std::logic_error("not built yet");
}

}  // namespace tessel::io::archive::core
