#include <host/MessageIdError.hpp>

#include <host/HostError.hpp>

namespace tessel::host {

MessageIdError::MessageIdError(std::string component, std::string mnemonic,
                               std::vector<MessageArgument> arguments)
    : arguments_(std::move(arguments)),
      component_(std::move(component)),
      mnemonic_(std::move(mnemonic)) {}

MessageIdError::MessageIdError(std::string component, std::string mnemonic, std::size_t count)
    : MessageIdError(std::move(component), std::move(mnemonic),
                     std::vector<MessageArgument>(count, MessageArgument(std::u16string()))) {}

void MessageIdError::raise() const {
    raiseHostError(*this);
}

void MessageIdError::raise(const std::string& overridingIdentifier) const {
    raiseHostError(*this, overridingIdentifier);
}

void MessageIdError::warn() const {
    issueHostWarning(*this);
}

void MessageIdError::warn(const std::string& overridingIdentifier) const {
    issueHostWarning(*this, overridingIdentifier);
}

}  // namespace tessel::host
