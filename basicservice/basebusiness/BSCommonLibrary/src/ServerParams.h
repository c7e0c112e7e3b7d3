// Descriptions of the FTP, registration, centre-server and platform records.
#ifndef SERVER_PARAMS_H
#define SERVER_PARAMS_H

#include "ParaServerRecords.h"
#include "ParaSteps.h"

namespace para {

} // namespace para

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_SERVER(X)

#endif
