#pragma once

#include <archive/core/error/messages/MessageClass.hpp>

namespace TESSEL::io::archive::untar {

TQ_MESSAGE_CLASS("TESSEL:io:archive:untar", invalidTarFile, 1);  // archive path

}  // namespace TESSEL::io::archive::untar
