#pragma once

#include <string>

#include <archive/core/error/NullArchiveRule.hpp>
#include <archive/core/types/ArchiveFormat.hpp>
#include <host/HostPath.hpp>

struct archive;
struct archive_entry;

namespace tessel::io::archive::core {

// libarchive's current message, or the prefix and the fallback the selector names
// (0: empty, 1: "returned NULL" text, other: invalid-rule text).
std::string libarchiveErrorString(::archive* handle, int fallback);
// archive_errno in decimal, or "NONE" for a null handle.
std::string libarchiveErrnoString(::archive* handle);

// Each logs its evidence at level 512 first, then throws ArchiveException or warns.
[[noreturn]] void throwArchiveError(NullArchiveRule rule, ::archive* handle);
[[noreturn]] void throwArchiveErrorForPath(NullArchiveRule rule, ::archive* handle,
                                           ::archive_entry* entry);
[[noreturn]] void throwInternalError(NullArchiveRule rule);
// The same, the error naming what failed (the path being written).
[[noreturn]] void throwInternalError(NullArchiveRule rule, const std::u16string& message);
[[noreturn]] void throwArchiveErrorWithMessage(NullArchiveRule rule, const std::u16string& message);
void warnArchiveError(NullArchiveRule rule, ::archive* handle, const tessel::host::HostPath& path);
// Only the evidence: libarchive's message and errno, for a warning nobody needs to see.
void logArchiveWarning(::archive* handle);
void warnForPath(NullArchiveRule rule, const tessel::host::HostPath& path, ArchiveFormat format);
void warnForWideName(NullArchiveRule rule, const std::wstring& name);
void warnForName(NullArchiveRule rule, const std::string& name);

// Issues the one host warning the rule stands for (never an error).
void issueArchiveWarning(NullArchiveRule rule, const std::string& subject, ArchiveFormat format);

}  // namespace tessel::io::archive::core
