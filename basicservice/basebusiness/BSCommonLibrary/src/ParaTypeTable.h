// Every parameter type with a parser: X(type, section key, parser, record).
#ifndef PARA_TYPE_TABLE_H
#define PARA_TYPE_TABLE_H

#include "CommonParaAdapter.h"
#include "AlarmParams.h"
#include "DeviceParams.h"
#include "VideoParams.h"
#include "ServerParams.h"
#include "NetworkParams.h"
#include "SensorParams.h"

#define PARA_TYPES(X)                                                               \
    PARA_TYPES_DEVICE(X) PARA_TYPES_ALARM(X) PARA_TYPES_VIDEO(X) PARA_TYPES_SERVER(X) \
    PARA_TYPES_NETWORK(X) PARA_TYPES_SENSOR(X)

#endif
