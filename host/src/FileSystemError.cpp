#include <host/FileSystemError.hpp>

namespace tessel::host {

FileSystemError::FileSystemError(int kind, const std::string& what)
    : std::runtime_error(what), kind_(kind) {}

}  // namespace tessel::host
