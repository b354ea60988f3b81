#pragma once

// Helpers of the additions' tests: archives written by Python at test time, one-line
// outcomes of calls, and listings of folders that show everything a call changed.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <archive/core/archivecore.hpp>
#include <host/MessageIdError.hpp>

#include "../support/TestSupport.hpp"

namespace tqtest::additions {

namespace core = tessel::io::archive::core;
using Paths = std::vector<std::u16string>;

// Skips the current test (from its body) when a tool is missing.
#define REQUIRE_TOOLS(...)                                                            \
    for (const std::string tool_ : std::initializer_list<std::string>{__VA_ARGS__}) { \
        if (!toolAvailable(tool_)) {                                                  \
            GTEST_SKIP() << tool_ << " is not installed";                             \
        }                                                                             \
    }

// Runs a shell command line in a folder; throws with what it printed when it fails.
std::string sh(const fs::path& dir, const std::string& commandLine);

// Runs Python in a folder with helpers for hostile archives: tar(path, *members) writes a
// GNU tar from reg(name, data, mode), folder(name), sym(name, target), hard(name, target),
// node(name, tarfile.BLKTYPE/CHRTYPE/FIFOTYPE, major, minor, mode); names may be bytes
// that are not UTF-8. Members claim uid and gid 1234 (reg takes another as owner).
std::string python(const fs::path& dir, const std::string& code);

// Everything under a folder, sorted, without following links: "name/" for a folder,
// "name->target" for a link, "name=bytes" for a file of up to 32 bytes and
// "name=[size:hash]" for a longer one (hash: five digits). Names that are not UTF-8 show their
// bytes as octal escapes. Paths under skip are left out.
std::string listing(const fs::path& folder, const fs::path& skip = {});

// What a call did, as one line: the paths it returned, "?identifier(arguments)" for each
// warning, "!identifier(arguments)" for the error it raised; arguments joined by ";". The
// folder base reads "~" and the prefix "TESSEL:io:archive:" is left out.
std::string outcome(const std::function<Paths()>& call, const fs::path& base);

// The same text cleaned of base and the common prefix.
std::string shown(std::string text, const fs::path& base);

// "identifier(arguments)" for each error, joined by spaces (not cleaned).
std::string described(const std::vector<tessel::host::MessageIdError>& errors);

// What testArchive found: "read N" and the damage described, or "!identifier" when it raised.
std::string tested(const fs::path& archive, const std::u16string& format, const fs::path& base,
                   const std::string& password = "");

// A password that libarchive refuses at once for the archive in the folder: encryption
// headers are random, so a fixed wrong one passes the header check now and then.
std::string rejectedPassword(const fs::path& dir, const std::string& archive);

// Makes a folder the current one until the guard goes.
std::shared_ptr<void> enter(const fs::path& folder);

}  // namespace tqtest::additions
