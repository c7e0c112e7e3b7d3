// Mobile network, dial-up, Ethernet, remote device node, serial and CAN parameter records and their parsers. Offsets and sizes are those of the 32-bit ARM recorder and are checked
// at compile time.
#ifndef PARA_NETWORK_RECORDS_H
#define PARA_NETWORK_RECORDS_H

#include "BSCommonExport.h"
#include "ParaAlarmRecords.h"

#include <json/value.h>

#endif
