#pragma once

#include <optional>
#include <string>
#include <vector>

#include "CommandLine.hpp"

namespace tqarchive {

// One function per command; each returns the exit status of a successful run and raises
// a message-identified error otherwise.
int runZip(const CommandLine& commandLine);
int runTar(const CommandLine& commandLine);
int runUnzip(const CommandLine& commandLine);
int runUntar(const CommandLine& commandLine);
// gzip and gunzip: every input, and every file beneath a folder input, through the gateway.
int runGzipBatch(const CommandLine& commandLine, bool decompress);

// Shared by zip and tar: walks the inputs and packs them through createArchiveBuiltin.
int createArchiveFromInputs(const CommandLine& commandLine, const std::u16string& format,
                            const std::optional<std::string>& password,
                            const std::string& encryption);
// Shared by unzip and untar: the safety pass, then extractArchiveBuiltin.
int extractArchiveToFolder(const CommandLine& commandLine, const std::string& format,
                           const std::optional<std::string>& password);

// Whether the name ends in the suffix (lower case), ignoring ASCII case.
bool hasSuffix(std::string name, const std::string& suffix);

// The names a gateway returned, one a line on standard output, unless quiet.
void printNames(const std::vector<std::u16string>& names, bool quiet);

}  // namespace tqarchive
