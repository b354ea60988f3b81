#pragma once

#include <archive/core/error/messages/MessageClass.hpp>

namespace TESSEL::io::archive::zip {

TQ_MESSAGE_CLASS("TESSEL:io:archive:zip", openError, 1);  // archive path

}  // namespace TESSEL::io::archive::zip
