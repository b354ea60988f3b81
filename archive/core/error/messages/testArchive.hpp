#pragma once

#include <archive/core/error/messages/MessageClass.hpp>

namespace TESSEL::io::archive::testArchive {

TQ_MESSAGE_CLASS("TESSEL:io:archive:testArchive", damagedEntry, 3);   // entry, archive, reason
TQ_MESSAGE_CLASS("TESSEL:io:archive:testArchive", damagedStream, 2);  // archive, reason

}  // namespace TESSEL::io::archive::testArchive
