// Descriptions of the vehicle-sensor and driving-behaviour alarm records.
#ifndef SENSOR_PARAMS_H
#define SENSOR_PARAMS_H

#include "ParaSensorRecords.h"
#include "ParaSteps.h"

namespace para {

} // namespace para

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_SENSOR(X)

#endif
