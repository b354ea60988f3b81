#include <host/HostError.hpp>

#include <host/WarningCapture.hpp>

#include "StandardError.hpp"

namespace tessel::host {

namespace {

// An overriding identifier that the catalogue lacks still shows the text of the error it
// stands for, rather than the unknown-identifier fallback.
std::string textFor(const MessageIdError& error, const std::string& identifier) {
    const std::string& key = catalogueHas(identifier) || !catalogueHas(error.identifier())
                                 ? identifier
                                 : error.identifier();
    return lookupMessageUtf8(key, error.arguments());
}

std::vector<std::string> argumentTexts(const MessageIdError& error) {
    std::vector<std::string> texts;
    texts.reserve(error.arguments().size());
    for (const MessageArgument& argument : error.arguments()) {
        texts.push_back(argumentText(argument));
    }
    return texts;
}

}  // namespace

HostError::HostError(const MessageIdError& error, std::string identifier)
    : base_(error), identifier_(std::move(identifier)), text_(textFor(error, identifier_)) {}

std::vector<std::string> HostError::arguments() const {
    return argumentTexts(base_);
}

void raiseHostError(const MessageIdError& error) {
    throw HostError(error, error.identifier());
}

void raiseHostError(const MessageIdError& error, const std::string& overridingIdentifier) {
    throw HostError(error, overridingIdentifier);
}

void issueHostWarning(const MessageIdError& warning) {
    issueHostWarning(warning, warning.identifier());
}

void issueHostWarning(const MessageIdError& warning, const std::string& overridingIdentifier) {
    IssuedWarning issued{overridingIdentifier, argumentTexts(warning)};
    if (WarningCapture::recordOnThisThread(issued)) {
        return;
    }
    // One write per warning, so lines from several threads do not interleave.
    writeStandardError("Warning: " + textFor(warning, overridingIdentifier) + " [" +
                       overridingIdentifier + "]\n");
}

}  // namespace tessel::host
