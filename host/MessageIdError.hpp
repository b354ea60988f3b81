#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <host/MessageArgument.hpp>

namespace tessel::host {

// A message-identified error or warning: the identifier is component ":" mnemonic,
// the text comes from the host's message catalogue with the arguments filled in.
class MessageIdError {
  public:
    MessageIdError(std::string component, std::string mnemonic,
                   std::vector<MessageArgument> arguments = {});
    // The generic form: count empty UTF-16 arguments, assigned by the caller in order.
    MessageIdError(std::string component, std::string mnemonic, std::size_t count);
    virtual ~MessageIdError() = default;

    MessageIdError(const MessageIdError&) = default;
    MessageIdError& operator=(const MessageIdError&) = default;

    std::string identifier() const { return component_ + ":" + mnemonic_; }
    const std::string& component() const noexcept { return component_; }
    const std::string& mnemonic() const noexcept { return mnemonic_; }
    const std::vector<MessageArgument>& arguments() const noexcept { return arguments_; }
    std::vector<MessageArgument>& arguments() noexcept { return arguments_; }

    // Raises this error to the host (raiseHostError); never returns.
    [[noreturn]] void raise() const;
    // The same, under an identifier that replaces this object's own.
    [[noreturn]] void raise(const std::string& overridingIdentifier) const;
    // Issues this as a host warning (issueHostWarning).
    void warn() const;
    void warn(const std::string& overridingIdentifier) const;

  private:
    std::vector<MessageArgument> arguments_;
    std::string component_;
    std::string mnemonic_;
};

}  // namespace tessel::host
