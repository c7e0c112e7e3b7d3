#ifndef PARA_ALARM_RECORDS_H
#define PARA_ALARM_RECORDS_H

#include "BSCommonExport.h"

#include <json/value.h>

#endif
