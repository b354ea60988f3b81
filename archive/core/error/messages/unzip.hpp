#pragma once

#include <archive/core/error/messages/MessageClass.hpp>

namespace TESSEL::io::archive::unzip {

TQ_MESSAGE_CLASS("TESSEL:io:archive:unzip", invalidZipFile, 1);  // archive path

}  // namespace TESSEL::io::archive::unzip
