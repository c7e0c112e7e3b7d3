// Vehicle-sensor and driving-behaviour alarm parameter records (thresholds, green driving, motion, stance, tyre pressure, temperature, fuel, vehicle-fault and DSM alarms) and their parsers. Offsets and sizes are those of the 32-bit ARM recorder and are checked
// at compile time.
#ifndef PARA_SENSOR_RECORDS_H
#define PARA_SENSOR_RECORDS_H

#include "BSCommonExport.h"
#include "ParaAlarmRecords.h"

#include <json/value.h>

#endif
