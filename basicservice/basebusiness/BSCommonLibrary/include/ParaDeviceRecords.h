// Device and system parameter records and their parsers. Offsets and sizes are
// those of the 32-bit ARM recorder and are checked at compile time.
#ifndef PARA_DEVICE_RECORDS_H
#define PARA_DEVICE_RECORDS_H

#include "BSCommonExport.h"

#include <json/value.h>

// "ATP": time-adjustment sources.
struct tag_MsgAdjustTimeSetting {
    unsigned char GE;
    unsigned char NE;
    unsigned char CE;
    unsigned char SID;
    char NS[64];
    unsigned short NAI;
};
BSCOMMON_RECORD_SIZE(tag_MsgAdjustTimeSetting, 70);

// "TIMEP": date and time display, time zone and daylight-saving rule.
struct tag_MsgTimeSetting {
    unsigned char DATEM;
    unsigned char TIMEM;
    unsigned char reserved0[2];
    char TIMEZ[16];
    unsigned int TIMEOFFSET;
    unsigned char SW;
    unsigned char DSTM;
    unsigned char DSTS;
    unsigned char reserved1[5];
    unsigned char SMON;
    unsigned char SWEEK_SWIND; // week of month in the high nibble, weekday in the low one
    unsigned char EMON;
    unsigned char EWEEK_EWIND;
    unsigned char SH;
    unsigned char SM;
    unsigned char SS;
    unsigned char EH;
    unsigned char EM;
    unsigned char ES;
    unsigned char reserved2[2];
    unsigned int STARTTIME;
    unsigned int ENDTIME;
};
BSCOMMON_RECORD_SIZE(tag_MsgTimeSetting, 52);

BSCOMMON_API int ParseAdjustTimeParamJson(Json::Value const& doc, tag_MsgAdjustTimeSetting& record);
BSCOMMON_API int ParseTimeSettingParamJson(Json::Value const& doc, tag_MsgTimeSetting& record);

#endif
