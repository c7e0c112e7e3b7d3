// Logging of the parameter adapter through the support library.
#ifndef PARA_LOG_H
#define PARA_LOG_H

#include "CommonToolkit.h"

#define PARA_SOURCE_FILE "basicservice/basebusiness/BSCommonLibrary/src/CommonParaAdapter"

// Level-0 (error) line with the calling function's name and line.
#define PARA_LOG_ERROR(...) Common::gclDebugPrintf(0, PARA_SOURCE_FILE, __func__, __LINE__, __VA_ARGS__)

#endif
