#pragma once

#include <string>

#include <boost/exception/exception.hpp>

#include <archive/core/error/NullArchiveRule.hpp>
#include <host/HostInternalException.hpp>

namespace tessel::io::archive::core {

// The internal failure of an archive object: which rule failed, and a message (empty,
// a path, or a caller's text) for the code that catches it. Its text is always the
// rule's text.
class ArchiveException : public tessel::host::HostInternalException, public boost::exception {
  public:
    ArchiveException(NullArchiveRule rule, const std::u16string& message);

    ArchiveException* clone() const override;
    [[noreturn]] void rethrow() const override;
    std::u16string messageText() const override;

    NullArchiveRule rule;
    std::u16string message;
};

}  // namespace tessel::io::archive::core
