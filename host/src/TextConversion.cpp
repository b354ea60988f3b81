#include <host/TextConversion.hpp>

#include <cstdint>
#include <cstdio>

#include <boost/locale/utf.hpp>

#include <host/MessageIdError.hpp>

namespace tessel::host {

namespace {

namespace utf = boost::locale::utf;

constexpr char32_t kReplacement = 0xFFFD;

bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}
// A lone surrogate that stands for one byte of a name that is not UTF-8.
bool isEscapedByte(char16_t unit) {
    return unit >= 0xDC80 && unit <= 0xDCFF;
}

// What one step through UTF-16 text yields: a code point, or an escaped byte, or a lone
// surrogate that stands for nothing.
struct Unit16 {
    enum Kind { CodePoint, EscapedByte, Lone } kind;
    char32_t value;
};

Unit16 next16(std::u16string_view text, std::size_t& i) {
    const char16_t unit = text[i++];
    if (isHighSurrogate(unit) && i < text.size() && isLowSurrogate(text[i])) {
        const char16_t low = text[i++];
        return {Unit16::CodePoint, 0x10000 + ((char32_t(unit) - 0xD800) << 10) + (low - 0xDC00)};
    }
    if (isEscapedByte(unit)) {
        return {Unit16::EscapedByte, char32_t(unit - 0xDC00)};
    }
    if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
        return {Unit16::Lone, unit};
    }
    return {Unit16::CodePoint, unit};
}

// One step through bytes: a code point of valid UTF-8 (Boost.Locale's decoder decides what
// is valid: no overlong forms, no encoded surrogates, nothing beyond U+10FFFF), or else the
// single byte it starts with.
struct Unit8 {
    bool valid;
    char32_t value;  // the code point, or the byte
};

Unit8 next8(std::string_view text, std::size_t& i) {
    const char* start = text.data() + i;
    const char* p = start;
    const utf::code_point c = utf::utf_traits<char>::decode(p, text.data() + text.size());
    if (c == utf::illegal || c == utf::incomplete) {
        ++i;
        return {false, char32_t(static_cast<unsigned char>(*start))};
    }
    i += static_cast<std::size_t>(p - start);
    return {true, char32_t(c)};
}

void appendUtf8(std::string& out, char32_t c) {
    utf::utf_traits<char>::encode(c, std::back_inserter(out));
}

void appendUtf16(std::u16string& out, char32_t c) {
    if (c >= 0x10000) {
        c -= 0x10000;
        out.push_back(char16_t(0xD800 + (c >> 10)));
        out.push_back(char16_t(0xDC00 + (c & 0x3FF)));
    } else {
        out.push_back(char16_t(c));
    }
}

void appendOctal(std::string& out, unsigned byte) {
    char text[5];
    std::snprintf(text, sizeof text, "\\%03o", byte & 0xFFu);
    out += text;
}

// The display form of one code point: printable text as it is, everything that could
// move the cursor or break a line as an escape.
void appendDisplay(std::string& out, char32_t c) {
    switch (c) {
        case '\\':
            out += "\\\\";
            return;
        case '\a':
            out += "\\a";
            return;
        case '\b':
            out += "\\b";
            return;
        case '\t':
            out += "\\t";
            return;
        case '\n':
            out += "\\n";
            return;
        case '\v':
            out += "\\v";
            return;
        case '\f':
            out += "\\f";
            return;
        case '\r':
            out += "\\r";
            return;
        default:
            break;
    }
    // C0 and C1 control characters and DEL: shown as the octal bytes of their UTF-8 form.
    if (c < 0x20 || c == 0x7F || (c >= 0x80 && c <= 0x9F)) {
        std::string bytes;
        appendUtf8(bytes, c);
        for (const char byte : bytes) {
            appendOctal(out, static_cast<unsigned char>(byte));
        }
        return;
    }
    appendUtf8(out, c);
}

}  // namespace

std::string toUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] < 0x80) {  // most names are ASCII
            out.push_back(static_cast<char>(text[i++]));
            continue;
        }
        const Unit16 unit = next16(text, i);
        switch (unit.kind) {
            case Unit16::CodePoint:
                appendUtf8(out, unit.value);
                break;
            case Unit16::EscapedByte:
                out.push_back(static_cast<char>(unit.value));
                break;
            case Unit16::Lone:
                appendUtf8(out, kReplacement);
                break;
        }
    }
    return out;
}

std::u16string fromUtf8(std::string_view text) {
    // Most names are ASCII throughout: widened in one pass.
    std::size_t ascii = 0;
    while (ascii < text.size() && static_cast<unsigned char>(text[ascii]) < 0x80) {
        ++ascii;
    }
    std::u16string out(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(ascii));
    if (ascii == text.size()) {
        return out;
    }
    out.reserve(text.size());
    for (std::size_t i = ascii; i < text.size();) {
        if (static_cast<unsigned char>(text[i]) < 0x80) {
            out.push_back(static_cast<char16_t>(text[i++]));
            continue;
        }
        const Unit8 unit = next8(text, i);
        appendUtf16(out, unit.valid ? unit.value : char32_t(0xDC00 + unit.value));
    }
    return out;
}

bool isValidUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        if (!next8(text, i).valid) {
            return false;
        }
    }
    return true;
}

std::string toNarrow(std::u16string_view text) {
    return toUtf8(text);
}

std::u16string fromFileSystemText(std::string_view text) {
    return fromUtf8(text);
}

std::optional<PathTextFault> findPathTextFault(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t position = i;
        const Unit16 unit = next16(text, i);
        if (unit.kind == Unit16::Lone) {
            return PathTextFault{PathTextProblem::LoneSurrogate, position};
        }
        if (unit.kind == Unit16::CodePoint && unit.value == 0) {
            return PathTextFault{PathTextProblem::NulCharacter, position};
        }
    }
    return std::nullopt;
}

void requireFileSystemName(std::u16string_view text, std::string_view argument) {
    const std::optional<PathTextFault> fault = findPathTextFault(text);
    if (!fault) {
        return;
    }
    const char* mnemonic = fault->problem == PathTextProblem::NulCharacter ? "pathHasNulCharacter"
                                                                           : "pathHasLoneSurrogate";
    MessageIdError("TESSEL:host", mnemonic,
                   {MessageArgument(std::string(argument)), MessageArgument(toDisplayText(text))})
        .raise();
}

std::string toFileSystemName(std::u16string_view text, std::string_view argument) {
    requireFileSystemName(text, argument);
    return toUtf8(text);
}

std::string toDisplayText(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const Unit16 unit = next16(text, i);
        switch (unit.kind) {
            case Unit16::CodePoint:
                appendDisplay(out, unit.value);
                break;
            case Unit16::EscapedByte:
                appendOctal(out, unit.value);
                break;
            case Unit16::Lone: {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\u%04X", unsigned(unit.value));
                out += escape;
                break;
            }
        }
    }
    return out;
}

std::string toDisplayText(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        const Unit8 unit = next8(bytes, i);
        if (unit.valid) {
            appendDisplay(out, unit.value);
        } else {
            appendOctal(out, unit.value);
        }
    }
    return out;
}

}  // namespace tessel::host
