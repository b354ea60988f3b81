#include <host/TextConversion.hpp>

#include <boost/locale/encoding_utf.hpp>

namespace tessel::host {

namespace {

// Invalid input (a lone surrogate, a broken UTF-8 sequence) is dropped rather than
// reported: text from the file system or a caller must never stop a conversion.
template <typename Out, typename In>
std::basic_string<Out> convert(std::basic_string_view<In> text) {
    return boost::locale::conv::utf_to_utf<Out, In>(text.data(), text.data() + text.size(),
                                                    boost::locale::conv::skip);
}

}  // namespace

std::string toUtf8(std::u16string_view text) {
    return convert<char>(text);
}

std::u16string fromUtf8(std::string_view text) {
    return convert<char16_t>(text);
}

std::string toNarrow(std::u16string_view text) {
    return toUtf8(text);
}

std::u16string fromFileSystemText(std::string_view text) {
    return fromUtf8(text);
}

}  // namespace tessel::host
