#pragma once

// What calls into the library did, each as one line of text, and listings of folders that
// show everything a call changed.

#include <functional>
#include <string>
#include <vector>

#include <archive/core/archivecore.hpp>
#include <host/MessageIdError.hpp>

#include "TestSupport.hpp"

namespace tqtest {

namespace core = tessel::io::archive::core;
using Paths = std::vector<std::u16string>;

// Everything under a folder, sorted, without following links: "name/" for a folder,
// "name->target" for a link, "name=bytes" for a file of up to 32 bytes and
// "name=[size:hash]" for a longer one (hash: five digits). Names that are not UTF-8 show their
// bytes as octal escapes. Paths under skip are left out; "" when the folder does not exist.
std::string listing(const fs::path& folder, const fs::path& skip = {});

// The same with "name=..." for every file longer than 32 bytes, for output whose length a
// test does not pin (what a failure left half written, say).
std::string shortListing(const fs::path& folder);

// What a call did, as one line: the paths it returned, "?identifier(arguments)" for each
// warning, "!identifier(arguments)" for the error it raised; arguments joined by ";" and the
// parentheses left out when there are none. The folder base reads "~" and the prefix
// "TESSEL:io:archive:" is left out.
std::string outcome(const std::function<Paths()>& call, const fs::path& base);

// The same text cleaned of base and the common prefix.
std::string shown(std::string text, const fs::path& base);

// "identifier(arguments)" for each error, joined by spaces (not cleaned).
std::string described(const std::vector<tessel::host::MessageIdError>& errors);

// What testArchive found: "read N" and the damage described, or "!identifier" when it raised.
std::string tested(const fs::path& archive, const std::u16string& format, const fs::path& base,
                   const std::string& password = "");

}  // namespace tqtest
