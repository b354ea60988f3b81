#pragma once

#include <archive/core/error/messages/MessageClass.hpp>

namespace TESSEL::io::archive::gzip {

TQ_MESSAGE_CLASS("TESSEL:io:archive:gzip", javaOpenError, 1);        // input path
TQ_MESSAGE_CLASS("TESSEL:io:archive:gzip", javaOutputOpenError, 1);  // output path
TQ_MESSAGE_CLASS("TESSEL:io:archive:gzip", outputDiskFull, 1);       // output path

}  // namespace TESSEL::io::archive::gzip
