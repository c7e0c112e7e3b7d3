// Descriptions of the video, recording and snapshot records.
#ifndef VIDEO_PARAMS_H
#define VIDEO_PARAMS_H

#include "ParaVideoRecords.h"
#include "ParaDescribe.h"

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_VIDEO(X)

#endif
