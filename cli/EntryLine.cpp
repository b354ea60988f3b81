#include "EntryLine.hpp"

#include <cstdio>
#include <ctime>

#include <host/TextConversion.hpp>

namespace tqarchive {

namespace core = tessel::io::archive::core;

namespace {

const char* typeName(core::EntryType type) {
    switch (type) {
        case core::EntryType::File:
            return "file";
        case core::EntryType::Folder:
            return "folder";
        case core::EntryType::SymbolicLink:
            return "symlink";
        case core::EntryType::HardLink:
            return "hardlink";
        case core::EntryType::CharacterDevice:
            return "chardev";
        case core::EntryType::BlockDevice:
            return "blockdev";
        case core::EntryType::Fifo:
            return "fifo";
        case core::EntryType::Socket:
            return "socket";
        case core::EntryType::Unknown:
            break;
    }
    return "unknown";
}

// "drwxr-xr-x", as ls -l shows it.
std::string modeText(const core::EntryInfo& entry) {
    const char* letters = "-dlhcbps?";
    std::string text(1, letters[static_cast<int>(entry.type)]);
    const char* rwx = "rwxrwxrwx";
    for (int bit = 0; bit < 9; ++bit) {
        text += (entry.permissions & (0400u >> bit)) ? rwx[bit] : '-';
    }
    if (entry.permissions & 04000) {
        text[3] = text[3] == 'x' ? 's' : 'S';
    }
    if (entry.permissions & 02000) {
        text[6] = text[6] == 'x' ? 's' : 'S';
    }
    if (entry.permissions & 01000) {
        text[9] = text[9] == 'x' ? 't' : 'T';
    }
    return text;
}

std::string number(const std::optional<std::uint64_t>& value, const char* absent) {
    return value ? std::to_string(*value) : absent;
}

std::string localTime(const std::optional<std::int64_t>& seconds) {
    if (!seconds) {
        return "----------------";
    }
    const std::time_t time = static_cast<std::time_t>(*seconds);
    std::tm parts{};
    char text[32] = "";
    if (::localtime_r(&time, &parts) != nullptr) {
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &parts);
    }
    return text;
}

std::string padLeft(const std::string& text, std::size_t width) {
    return text.size() >= width ? text : std::string(width - text.size(), ' ') + text;
}

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

}  // namespace

std::string EntryLine::jsonString(std::u16string_view text) {
    std::string out = "\"";
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char16_t unit = text[at];
        const bool high = unit >= 0xD800 && unit <= 0xDBFF;
        if (high && at + 1 < text.size() && text[at + 1] >= 0xDC00 && text[at + 1] <= 0xDFFF) {
            appendUtf8(out, 0x10000 + ((unit - 0xD800u) << 10) + (text[++at] - 0xDC00u));
        } else if (unit == u'"' || unit == u'\\') {
            out += '\\';
            out += static_cast<char>(unit);
        } else if (unit == u'\n') {
            out += "\\n";
        } else if (unit == u'\t') {
            out += "\\t";
        } else if (unit < 0x20 || unit == 0x7F || (unit >= 0xD800 && unit <= 0xDFFF)) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(unit));
            out += escape;
        } else {
            appendUtf8(out, unit);
        }
    }
    return out + "\"";
}

std::string EntryLine::format(const core::EntryInfo& entry, Style style) {
    using tessel::host::toDisplayText;
    const bool link =
        entry.type == core::EntryType::SymbolicLink || entry.type == core::EntryType::HardLink;
    if (style == Style::Name) {
        return toDisplayText(entry.name);
    }
    if (style == Style::Long) {
        std::string line =
            modeText(entry) + " " + padLeft(number(entry.size, "-"), 12) + " " +
            padLeft(number(entry.compressedSize, "-"), 12) + " " + localTime(entry.modified) + " " +
            (entry.encrypted ? "encrypted " : "-         ") + toDisplayText(entry.name);
        return link ? line + (entry.type == core::EntryType::HardLink ? " link to " : " -> ") +
                          toDisplayText(entry.linkTarget)
                    : line;
    }
    char mode[8];
    std::snprintf(mode, sizeof mode, "%04o", entry.permissions);
    std::string json =
        "{\"name\":" + jsonString(entry.name) + ",\"type\":\"" + typeName(entry.type) +
        "\",\"size\":" + number(entry.size, "null") +
        ",\"compressedSize\":" + number(entry.compressedSize, "null") +
        ",\"modified\":" + (entry.modified ? std::to_string(*entry.modified) : "null") +
        ",\"encrypted\":" + (entry.encrypted ? "true" : "false") + ",\"mode\":\"" + mode + "\"";
    if (link) {
        json += ",\"linkTarget\":" + jsonString(entry.linkTarget);
    }
    return json + "}";
}

}  // namespace tqarchive
