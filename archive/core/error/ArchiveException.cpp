#include <archive/core/error/ArchiveException.hpp>

#include <archive/core/error/ErrorMessageFactory.hpp>

namespace tessel::io::archive::core {

ArchiveException::ArchiveException(NullArchiveRule rule, const std::u16string& message)
    : rule(rule), message(message) {}

ArchiveException* ArchiveException::clone() const {
    return new ArchiveException(*this);
}

void ArchiveException::rethrow() const {
    throw ArchiveException(*this);
}

std::u16string ArchiveException::messageText() const {
    return ErrorMessageFactory::messageFor(rule);
}

}  // namespace tessel::io::archive::core
