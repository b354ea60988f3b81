#pragma once

#include <exception>
#include <string>

namespace tessel::host {

// The host's exception interface: copyable through clone, rethrowable by type.
class HostExceptionInterface {
  public:
    virtual ~HostExceptionInterface() = default;
    virtual HostExceptionInterface* clone() const = 0;
    [[noreturn]] virtual void rethrow() const = 0;
};

// Base of internal (not user-facing) exceptions: what() is the UTF-8 of messageText().
class HostInternalException : public HostExceptionInterface, public std::exception {
  public:
    const char* what() const noexcept override;
    virtual std::string convert_str(const std::u16string& text) const;
    virtual std::string convert_str(const std::string& text) const;
    virtual std::u16string messageText() const = 0;

  private:
    mutable std::string whatText_;
};

}  // namespace tessel::host
