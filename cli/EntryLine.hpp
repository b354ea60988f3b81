#pragma once

#include <string>

#include <archive/core/EntryInfo.hpp>

namespace tqarchive {

// One line of 'tqarchive list' for an entry.
class EntryLine {
  public:
    enum class Style {
        Name,  // the name, shown readably
        Long,  // type and permissions, size, compressed size, time, encryption, name
        Json,  // one JSON object
    };
    static std::string format(const tessel::io::archive::core::EntryInfo& entry, Style style);

    // A JSON string: quotes, backslashes and control characters escaped; a lone surrogate
    // (a byte of the name that is not UTF-8) as \udcXX.
    static std::string jsonString(std::u16string_view text);
};

}  // namespace tqarchive
