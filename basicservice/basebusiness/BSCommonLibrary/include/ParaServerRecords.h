// FTP, registration, centre-server and platform parameter records and their parsers. Offsets and sizes are those of the 32-bit ARM recorder and are checked
// at compile time.
#ifndef PARA_SERVER_RECORDS_H
#define PARA_SERVER_RECORDS_H

#include "BSCommonExport.h"
#include "ParaAlarmRecords.h"

#include <json/value.h>

#endif
