#include <host/HostInternalException.hpp>

#include <host/TextConversion.hpp>

namespace tessel::host {

const char* HostInternalException::what() const noexcept {
    try {
        whatText_ = convert_str(messageText());
    } catch (...) {
        // Out of memory while converting: what() must not throw, so say what we can.
        return "internal error (its message could not be converted)";
    }
    return whatText_.c_str();
}

std::string HostInternalException::convert_str(const std::u16string& text) const {
    return toUtf8(text);
}

std::string HostInternalException::convert_str(const std::string& text) const {
    return text;
}

}  // namespace tessel::host
