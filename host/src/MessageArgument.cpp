#include <host/MessageArgument.hpp>

#include <host/TextConversion.hpp>

namespace tessel::host {

std::string argumentText(const MessageArgument& argument) {
    if (const auto* wide = std::get_if<std::u16string>(&argument)) {
        return toUtf8(*wide);
    }
    return std::get<std::string>(argument);
}

}  // namespace tessel::host
