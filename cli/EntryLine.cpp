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
    // One letter for each EntryType, in the enumeration's order.
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

}  // namespace

std::string EntryLine::jsonString(std::u16string_view text) {
    std::string out = "\"";
    std::size_t plain = 0;  // where the run of characters copied as they are starts
    for (std::size_t at = 0; at <= text.size(); ++at) {
        const char16_t unit = at < text.size() ? text[at] : u'\0';
        const bool pair = unit >= 0xD800 && unit <= 0xDBFF && at + 1 < text.size() &&
                          text[at + 1] >= 0xDC00 && text[at + 1] <= 0xDFFF;
        if (pair) {
            ++at;
            continue;
        }
        const bool lone = unit >= 0xD800 && unit <= 0xDFFF;
        if (at < text.size() && !lone && unit >= 0x20 && unit != 0x7F && unit != u'"' &&
            unit != u'\\') {
            continue;
        }
        out += tessel::host::toUtf8(text.substr(plain, at - plain));
        plain = at + 1;
        if (at == text.size()) {
            break;
        }
        char escape[8];
        if (unit == u'"' || unit == u'\\') {
            std::snprintf(escape, sizeof escape, "\\%c", static_cast<char>(unit));
        } else {
            // Controls, and a lone surrogate: a byte of the name that is not UTF-8.
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(unit));
        }
        out += escape;
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
