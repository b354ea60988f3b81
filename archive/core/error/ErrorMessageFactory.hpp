#pragma once

#include <string>

#include <archive/core/error/NullArchiveRule.hpp>

namespace tessel::io::archive::core {

class ErrorMessageFactory {
  public:
    // The rule's text; rules without a text of their own, and values out of range,
    // give the unknown-error text.
    static std::u16string messageFor(NullArchiveRule rule);
};

}  // namespace tessel::io::archive::core
