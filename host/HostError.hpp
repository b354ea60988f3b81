#pragma once

#include <exception>
#include <string>
#include <vector>

#include <host/MessageArgument.hpp>
#include <host/MessageIdError.hpp>

namespace tessel::host {

// The message-identified exception the host raises to its user (its user-error interface).
class HostError : public std::exception {
  public:
    HostError(const MessageIdError& error, std::string identifier);

    // The identifier the error was raised under (the overriding one where one was given).
    std::string GetID() const { return identifier_; }
    // The arguments in order, as UTF-8.
    std::vector<std::string> arguments() const;
    // The catalogue text with the arguments filled in.
    const char* what() const noexcept override { return text_.c_str(); }
    const MessageIdError& GetBaseMsgIDObj() const noexcept { return base_; }

    virtual HostError* clone() const { return new HostError(*this); }
    [[noreturn]] virtual void rethrow() const { throw *this; }

  private:
    MessageIdError base_;
    std::string identifier_;
    std::string text_;
};

// Throws HostError built from the error (arguments copied); never returns.
[[noreturn]] void raiseHostError(const MessageIdError& error);
[[noreturn]] void raiseHostError(const MessageIdError& error,
                                 const std::string& overridingIdentifier);

// Issues a warning: recorded by the innermost WarningCapture of the calling thread,
// otherwise printed on standard error as "Warning: <text> [<identifier>]".
void issueHostWarning(const MessageIdError& warning);
void issueHostWarning(const MessageIdError& warning, const std::string& overridingIdentifier);

// The catalogue text of an identifier in the host's global locale, with positional
// placeholders {1}, {2}, ... filled from the arguments. An identifier missing from the
// catalogue yields a fallback text that names it.
std::u16string lookupMessage(const std::string& identifier,
                             const std::vector<MessageArgument>& arguments = {});
// The same, UTF-8.
std::string lookupMessageUtf8(const std::string& identifier,
                              const std::vector<MessageArgument>& arguments = {});
// Whether the catalogue holds the identifier.
bool catalogueHas(const std::string& identifier);
// Every identifier the catalogue holds, in catalogue order.
std::vector<std::string> catalogueIdentifiers();

}  // namespace tessel::host
