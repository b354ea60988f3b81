#pragma once

#include <archive/core/error/messages/MessageClass.hpp>

namespace TESSEL::io::archive::gunzip {

TQ_MESSAGE_CLASS("TESSEL:io:archive:gunzip", javaOpenError, 1);        // input path
TQ_MESSAGE_CLASS("TESSEL:io:archive:gunzip", javaOutputOpenError, 1);  // target path
TQ_MESSAGE_CLASS("TESSEL:io:archive:gunzip", javaCopyStreamError, 1);  // output name
TQ_MESSAGE_CLASS("TESSEL:io:archive:gunzip", notGzipFormat, 1);        // input path
TQ_MESSAGE_CLASS("TESSEL:io:archive:gunzip", outputIsInput, 1);        // input path

}  // namespace TESSEL::io::archive::gunzip
