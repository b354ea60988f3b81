#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include <host/HostError.hpp>
#include <host/TextConversion.hpp>

namespace tessel::host {

namespace {

using Entry = std::pair<std::string_view, std::string_view>;

constexpr std::string_view kDiskSpaceFull =
    "The disk is full: the archive '{1}' could not be written completely.";
constexpr std::string_view kOpenEntryError =
    "Unable to read '{1}'; it was left out of the archive.";

// Every message the host can show, in English: the only language the host ships, so any
// locale reads these texts. {n} is replaced by the n-th argument.
// In the order the README's table lists them.
// clang-format off
constexpr Entry kCatalogue[] = {
#include "catalogue/library.inc"
#include "catalogue/options.inc"
#include "catalogue/host.inc"
#include "catalogue/cli.inc"
};
// clang-format on

const std::string_view* findText(const std::string& identifier) {
    const auto found = std::find_if(std::begin(kCatalogue), std::end(kCatalogue),
                                    [&](const Entry& entry) { return entry.first == identifier; });
    return found == std::end(kCatalogue) ? nullptr : &found->second;
}

// Arguments are shown readably: a name holding control characters or bytes that are not
// UTF-8 must neither drive the terminal nor vanish from the message.
std::string displayText(const MessageArgument& argument) {
    if (const auto* wide = std::get_if<std::u16string>(&argument)) {
        return toDisplayText(*wide);
    }
    return toDisplayText(std::get<std::string>(argument));
}

// Replaces each {n} that has an n-th argument; anything else is copied as written, so a
// placeholder without its argument stays visible.
std::string fillPlaceholders(std::string_view text, const std::vector<MessageArgument>& arguments) {
    std::string result;
    result.reserve(text.size());
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t open = text.find('{', at);
        const std::size_t close = open == std::string_view::npos ? open : text.find('}', open);
        if (close == std::string_view::npos) {
            result.append(text.substr(at));
            break;
        }
        const std::string_view digits = text.substr(open + 1, close - open - 1);
        // At most four digits, so the position cannot overflow.
        const bool numeric =
            !digits.empty() && digits.size() <= 4 &&
            std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
        std::size_t position = 0;
        if (numeric) {
            for (const char c : digits) {
                position = position * 10 + static_cast<std::size_t>(c - '0');
            }
        }
        result.append(text.substr(at, open - at));
        if (numeric && position >= 1 && position <= arguments.size()) {
            result.append(displayText(arguments[position - 1]));
            at = close + 1;
        } else {
            result.push_back('{');
            at = open + 1;
        }
    }
    return result;
}

std::string unknownIdentifierText(const std::string& identifier,
                                  const std::vector<MessageArgument>& arguments) {
    std::string text = "Unknown message identifier '" + identifier + "'";
    if (arguments.empty()) {
        return text + " (no arguments)";
    }
    text += " (arguments: ";
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        text += (i == 0 ? "" : ", ") + displayText(arguments[i]);
    }
    return text + ")";
}

}  // namespace

std::string lookupMessageUtf8(const std::string& identifier,
                              const std::vector<MessageArgument>& arguments) {
    const std::string_view* text = findText(identifier);
    return text ? fillPlaceholders(*text, arguments) : unknownIdentifierText(identifier, arguments);
}

std::u16string lookupMessage(const std::string& identifier,
                             const std::vector<MessageArgument>& arguments) {
    return fromUtf8(lookupMessageUtf8(identifier, arguments));
}

bool catalogueHas(const std::string& identifier) {
    return findText(identifier) != nullptr;
}

std::vector<std::string> catalogueIdentifiers() {
    std::vector<std::string> identifiers;
    identifiers.reserve(std::size(kCatalogue));
    for (const Entry& entry : kCatalogue) {
        identifiers.emplace_back(entry.first);
    }
    return identifiers;
}

}  // namespace tessel::host
