#include <stdexcept>

#include <archive/core/archivecore.hpp>

namespace tessel::io::archive::core {

ExtractResult extractArchiveWithOptions(const std::u16string&, const std::u16string&, const std::u16string&, const ExtractOptions&) {
    throw std::logic_error("not built yet");
}

}  // namespace tessel::io::archive::core
