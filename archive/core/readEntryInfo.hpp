#pragma once

#include <archive_entry.h>

#include <archive/core/EntryInfo.hpp>

namespace tessel::io::archive::core {

// What an entry header says, as listing and testing show it.
EntryInfo readEntryInfo(::archive_entry* entry);

}  // namespace tessel::io::archive::core
