// Descriptions of the mobile network, Ethernet, remote device node, serial and CAN records.
#ifndef NETWORK_PARAMS_H
#define NETWORK_PARAMS_H

#include "ParaNetworkRecords.h"
#include "ParaSteps.h"

namespace para {

} // namespace para

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_NETWORK(X)

#endif
