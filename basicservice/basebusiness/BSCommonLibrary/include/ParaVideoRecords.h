#ifndef PARA_VIDEO_RECORDS_H
#define PARA_VIDEO_RECORDS_H

#include "BSCommonExport.h"

#include <json/value.h>

#endif
