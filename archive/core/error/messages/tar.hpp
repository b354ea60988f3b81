#pragma once

#include <archive/core/error/messages/MessageClass.hpp>

namespace TESSEL::io::archive::tar {

TQ_MESSAGE_CLASS("TESSEL:io:archive:tar", openError, 1);  // archive path

}  // namespace TESSEL::io::archive::tar
