// Descriptions of the alarm sub-records and the event alarm records.
#ifndef ALARM_PARAMS_H
#define ALARM_PARAMS_H

#include "ParaAlarmRecords.h"
#include "ParaDescribe.h"

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_ALARM(X)

#endif
