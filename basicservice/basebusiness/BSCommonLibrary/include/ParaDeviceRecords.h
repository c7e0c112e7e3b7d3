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

// "GS": general settings.
struct tag_MsgPBTGeneralSetting {
    unsigned char CM;
    unsigned char AN;
    unsigned char LCDT;
    unsigned char LS;
    unsigned char EDRV;
    unsigned char LCDG;
    unsigned short DLSM;
    unsigned int AM;
    unsigned int ASMS;
    unsigned int AS;
    unsigned int ASM;
    unsigned int AK;
    unsigned char SEF;
    unsigned char SET[6];
    unsigned char CA;
    unsigned char LSS;
    unsigned char BCOM;
    unsigned char reserved0[2]; // tail padding to the 4-byte alignment
};
BSCOMMON_RECORD_SIZE(tag_MsgPBTGeneralSetting, 40);

// "GSP": volumes, display and language choices.
struct tag_MsgGeneralSetting {
    unsigned int SSS;
    unsigned char VSA;
    unsigned char LANT;
    unsigned char AOPCH;
    unsigned char VOL;
    unsigned char PBVOL;
    unsigned char DDN;
    unsigned char VGA;
    unsigned char TLV;
    unsigned char PAS;
    unsigned char GM;
    unsigned char IMV;
    unsigned char OMV;
    unsigned char HDDH;
    unsigned char CVOL;
    unsigned char TVOL;
    unsigned char PUT;
    unsigned char SVOL;
    unsigned char CPVOL;
    unsigned char ATDLE;
    unsigned char FHKE;
    unsigned short RCI;
    unsigned char FE;
    unsigned char MME;
};
BSCOMMON_RECORD_SIZE(tag_MsgGeneralSetting, 28);

// "NIGHT": three night periods. The third period's flag FEN follows its times.
struct tag_MsgNightSetting {
    unsigned char EN;
    unsigned char SH;
    unsigned char SM;
    unsigned char SS;
    unsigned char EH;
    unsigned char EM;
    unsigned char ES;
    unsigned char TEN;
    unsigned char TSH;
    unsigned char TSM;
    unsigned char TSS;
    unsigned char TEH;
    unsigned char TEM;
    unsigned char TES;
    unsigned char FSH;
    unsigned char FSM;
    unsigned char FSS;
    unsigned char FEH;
    unsigned char FEM;
    unsigned char FES;
    unsigned char FEN;
};
BSCOMMON_RECORD_SIZE(tag_MsgNightSetting, 21);

// "VS": vehicle identity and settings.
struct tag_MsgVehicleSetting {
    unsigned int K;
    unsigned short SI;
    unsigned short XI;
    unsigned char C;
    char VT[32];
    char VIN[32];
    unsigned char LS;
    unsigned char VG;
    unsigned char AL;
    unsigned char TSI;
    unsigned char OLAE;
    unsigned char OS;
    unsigned char EMCP;
    unsigned char ESW;
    unsigned char reserved0[3]; // tail padding to the 4-byte alignment
};
BSCOMMON_RECORD_SIZE(tag_MsgVehicleSetting, 84);

// "PS": product identity, production and install dates.
struct tag_MsgProductSetting {
    unsigned int SN;
    unsigned int E;
    unsigned short A;
    unsigned char Y;
    unsigned char M;
    unsigned char D;
    unsigned char IY;
    unsigned char IM;
    unsigned char ID;
    unsigned char IH;
    unsigned char IMI;
    unsigned char IS;
    char MID[8];
    char CCC[8];
    char PN[32];
    char PT[32];
    char N[128];
    unsigned char BCN;
    unsigned char reserved0[3];
    char VRN[12];
    unsigned char reserved1[1]; // tail padding to the 4-byte alignment
};
BSCOMMON_RECORD_SIZE(tag_MsgProductSetting, 244);

// "HMIP": mileage total and twelve per-period values.
struct tag_msgHistoryMileSetting {
    unsigned int MT;
    unsigned short HM[12];
    unsigned int TM;
};
BSCOMMON_RECORD_SIZE(tag_msgHistoryMileSetting, 32);

// "KEYS": key settings; MAC holds the six bytes of the "MAC" text.
struct tag_MsgKeySetting {
    unsigned char MAC[6];
    unsigned char FL;
    signed char IOS;
    unsigned char IRF;
    unsigned char AUF;
    unsigned char OPM;
    unsigned char GV;
    unsigned char PHM;
};
BSCOMMON_RECORD_SIZE(tag_MsgKeySetting, 13);

// "VPP": voltage protection; LV and UV in hundredths of a volt.
struct tag_MsgVoltageProtectSetting {
    unsigned char SBM;
    unsigned char VPS;
    unsigned short LV;
    unsigned short UV;
    unsigned char CE;
    unsigned char WLV;
    unsigned char WLE;
    unsigned char reserved0[1];
    unsigned short OT;
    unsigned short SDT;
};
BSCOMMON_RECORD_SIZE(tag_MsgVoltageProtectSetting, 14);

// "HMP": hardware management bits.
struct tag_MsgHardwareManageSetting {
    unsigned long long HIO;
};
BSCOMMON_RECORD_SIZE(tag_MsgHardwareManageSetting, 8);

// "SSP": power-on and power-off times and delays.
struct tag_MsgSwitchSetting {
    unsigned char UPT;
    unsigned char UH;
    unsigned char UM;
    unsigned char US;
    unsigned char DH;
    unsigned char DM;
    unsigned char DS;
    unsigned char DAUE;
    unsigned int DDS;
    unsigned int DR;
    unsigned char CPM;
    unsigned char LG;
    unsigned short DAUT;
    unsigned char ENS;
    unsigned char EDL;
    unsigned char reserved0[2];
    unsigned int SPO;
};
BSCOMMON_RECORD_SIZE(tag_MsgSwitchSetting, 28);

BSCOMMON_API int ParsePBTGeneralParamJson(Json::Value const& doc, tag_MsgPBTGeneralSetting& record);
BSCOMMON_API int ParseGeneralParamJson(Json::Value const& doc, tag_MsgGeneralSetting& record);
BSCOMMON_API int ParseNightParamJson(Json::Value const& doc, tag_MsgNightSetting& record);
BSCOMMON_API int ParseVehicleParamJson(Json::Value const& doc, tag_MsgVehicleSetting& record);
BSCOMMON_API int ParseProductParamJson(Json::Value const& doc, tag_MsgProductSetting& record);
BSCOMMON_API int ParseHistoryMileageParamJson(Json::Value const& doc, tag_msgHistoryMileSetting& record);
BSCOMMON_API int ParseKeyParamJson(Json::Value const& doc, tag_MsgKeySetting& record);
BSCOMMON_API int ParseVoltageProtectParamJson(Json::Value const& doc, tag_MsgVoltageProtectSetting& record);
BSCOMMON_API int ParseHardwareManageParamJson(Json::Value const& doc, tag_MsgHardwareManageSetting& record);
BSCOMMON_API int ParsePowerSwitchParamJson(Json::Value const& doc, tag_MsgSwitchSetting& record);

#endif
