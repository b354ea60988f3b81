#pragma once

#include <string>

namespace tqarchive {

// The man page (roff, section 1), made from the same tables as --help.
std::string manPage();
// A bash completion script for tqarchive: commands, each command's options, the values of
// options that take a word from a list, folders and files.
std::string bashCompletion();

}  // namespace tqarchive
