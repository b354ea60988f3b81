#include <archive/core/error/StaticTexts.hpp>

namespace tessel::io::archive::core {

const std::string& libarchiveMessagePrefix() {
    static const std::string* const text = new std::string("[LIBARCHIVE_MESSAGE]: ");
    return *text;
}

const std::string& fallbackText0() {
    static const std::string* const text = new std::string();
    return *text;
}

const std::string& fallbackText1() {
    static const std::string* const text =
        new std::string("The libarchive archive_error_string function returned NULL.");
    return *text;
}

const std::string& fallbackText2() {
    static const std::string* const text = new std::string(
        "An invalid NullArchiveRule value was supplied to the ErrorMessageFactory.");
    return *text;
}

}  // namespace tessel::io::archive::core
