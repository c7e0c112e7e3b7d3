/// @file
/// Device and system parameter records and their parsers. Offsets and sizes are
/// those of the 32-bit ARM recorder and are checked at compile time.
#ifndef PARA_DEVICE_RECORDS_H
#define PARA_DEVICE_RECORDS_H

#include "BSCommonExport.h"

#include <json/value.h>

/// Time-adjustment sources. Section "ATP" (parameter type 0, #PARA_ADJUST_TIME), read by
/// ParseAdjustTimeParamJson().
struct tag_MsgAdjustTimeSetting {
    unsigned char GE;
    unsigned char NE;
    unsigned char CE;
    unsigned char SID;
    char NS[64];
    unsigned short NAI;
};
BSCOMMON_RECORD_SIZE(tag_MsgAdjustTimeSetting, 70);

/// Date and time display, time zone and daylight-saving rule. Section "TIMEP" (parameter type 1,
/// #PARA_TIME_SETTING), read by ParseTimeSettingParamJson().
struct tag_MsgTimeSetting {
    unsigned char DATEM;
    unsigned char TIMEM;
    unsigned char reserved0[2]; ///< Reserved: no parser writes these bytes.
    char TIMEZ[16];
    unsigned int TIMEOFFSET;
    unsigned char SW; ///< From DST.SW.
    unsigned char DSTM; ///< From DST.DSTM.
    unsigned char DSTS; ///< From DST.DSTS.
    unsigned char reserved1[5]; ///< Reserved: no parser writes these bytes.
    unsigned char SMON; ///< From DST.SMON.
    /// From DST.SWEEK, the week of the month, in the high nibble and DST.SWIND, the weekday, in
    /// the low one; only the low 4 bits of each are kept.
    unsigned char SWEEK_SWIND;
    unsigned char EMON; ///< From DST.EMON.
    /// From DST.EWEEK in the high nibble and DST.EWIND in the low one, as SWEEK_SWIND.
    unsigned char EWEEK_EWIND;
    unsigned char SH; ///< From DST.SH.
    unsigned char SM; ///< From DST.SM.
    unsigned char SS; ///< From DST.SS.
    unsigned char EH; ///< From DST.EH.
    unsigned char EM; ///< From DST.EM.
    unsigned char ES; ///< From DST.ES.
    unsigned char reserved2[2]; ///< Reserved: no parser writes these bytes.
    unsigned int STARTTIME; ///< From DST.STARTTIME.
    unsigned int ENDTIME; ///< From DST.ENDTIME.
};
BSCOMMON_RECORD_SIZE(tag_MsgTimeSetting, 52);

/// Reads section "ATP" of @p doc into @p record (parameter type 0, #PARA_ADJUST_TIME).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseAdjustTimeParamJson(Json::Value const& doc, tag_MsgAdjustTimeSetting& record);
/// Reads section "TIMEP" of @p doc into @p record (parameter type 1, #PARA_TIME_SETTING).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseTimeSettingParamJson(Json::Value const& doc, tag_MsgTimeSetting& record);

/// General settings. Section "GS" (parameter type 3, #PARA_PBT_GENERAL), read by
/// ParsePBTGeneralParamJson().
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
    unsigned char reserved0[2]; ///< Reserved: no parser writes these bytes (tail padding to the 4-byte alignment).
};
BSCOMMON_RECORD_SIZE(tag_MsgPBTGeneralSetting, 40);

/// Volumes, display and language choices. Section "GSP" (parameter type 4, #PARA_GENERAL), read by
/// ParseGeneralParamJson().
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

/// Three night periods. The third period's flag FEN follows its times. Section "NIGHT" (parameter
/// type 5, #PARA_NIGHT), read by ParseNightParamJson().
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

/// Vehicle identity and settings. Section "VS" (parameter type 19, #PARA_VEHICLE), read by
/// ParseVehicleParamJson().
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
    unsigned char reserved0[3]; ///< Reserved: no parser writes these bytes (tail padding to the 4-byte alignment).
};
BSCOMMON_RECORD_SIZE(tag_MsgVehicleSetting, 84);

/// Product identity, production and install dates. Section "PS" (parameter type 20, #PARA_PRODUCT),
/// read by ParseProductParamJson().
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
    unsigned char reserved0[3]; ///< Reserved: no parser writes these bytes.
    char VRN[12];
    unsigned char reserved1[1]; ///< Reserved: no parser writes these bytes (tail padding to the 4-byte alignment).
};
BSCOMMON_RECORD_SIZE(tag_MsgProductSetting, 244);

/// Mileage total and twelve per-period values. Section "HMIP" (parameter type 24,
/// #PARA_HISTORY_MILEAGE), read by ParseHistoryMileageParamJson().
struct tag_msgHistoryMileSetting {
    unsigned int MT;
    unsigned short HM[12];
    unsigned int TM;
};
BSCOMMON_RECORD_SIZE(tag_msgHistoryMileSetting, 32);

/// Key settings; MAC holds the six bytes of the "MAC" text. Section "KEYS" (parameter type 27,
/// #PARA_KEY), read by ParseKeyParamJson().
struct tag_MsgKeySetting {
    /// From the text of the key of the same name, six hexadecimal groups such as
    /// "00:1A:2B:3C:4D:5E"; a group that is missing stores 0.
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

/// Voltage protection; LV and UV in hundredths of a volt. Section "VPP" (parameter type 36,
/// #PARA_VOLTAGE_PROTECT), read by ParseVoltageProtectParamJson().
struct tag_MsgVoltageProtectSetting {
    unsigned char SBM;
    unsigned char VPS;
    unsigned short LV; ///< From the decimal text of the key of the same name, in hundredths of a volt ("11.50").
    unsigned short UV; ///< From the decimal text of the key of the same name, in hundredths of a volt.
    unsigned char CE;
    unsigned char WLV;
    unsigned char WLE;
    unsigned char reserved0[1]; ///< Reserved: no parser writes these bytes.
    unsigned short OT;
    unsigned short SDT;
};
BSCOMMON_RECORD_SIZE(tag_MsgVoltageProtectSetting, 14);

/// Hardware management bits. Section "HMP" (parameter type 44, #PARA_HARDWARE_MANAGE), read by
/// ParseHardwareManageParamJson().
struct tag_MsgHardwareManageSetting {
    unsigned long long HIO;
};
BSCOMMON_RECORD_SIZE(tag_MsgHardwareManageSetting, 8);

/// Power-on and power-off times and delays. Section "SSP" (parameter type 46, #PARA_POWER_SWITCH),
/// read by ParsePowerSwitchParamJson().
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
    unsigned char reserved0[2]; ///< Reserved: no parser writes these bytes.
    unsigned int SPO;
};
BSCOMMON_RECORD_SIZE(tag_MsgSwitchSetting, 28);

/// Reads section "GS" of @p doc into @p record (parameter type 3, #PARA_PBT_GENERAL).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParsePBTGeneralParamJson(Json::Value const& doc, tag_MsgPBTGeneralSetting& record);
/// Reads section "GSP" of @p doc into @p record (parameter type 4, #PARA_GENERAL).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseGeneralParamJson(Json::Value const& doc, tag_MsgGeneralSetting& record);
/// Reads section "NIGHT" of @p doc into @p record (parameter type 5, #PARA_NIGHT).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseNightParamJson(Json::Value const& doc, tag_MsgNightSetting& record);
/// Reads section "VS" of @p doc into @p record (parameter type 19, #PARA_VEHICLE).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseVehicleParamJson(Json::Value const& doc, tag_MsgVehicleSetting& record);
/// Reads section "PS" of @p doc into @p record (parameter type 20, #PARA_PRODUCT).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseProductParamJson(Json::Value const& doc, tag_MsgProductSetting& record);
/// Reads section "HMIP" of @p doc into @p record (parameter type 24, #PARA_HISTORY_MILEAGE).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseHistoryMileageParamJson(Json::Value const& doc, tag_msgHistoryMileSetting& record);
/// Reads section "KEYS" of @p doc into @p record (parameter type 27, #PARA_KEY).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseKeyParamJson(Json::Value const& doc, tag_MsgKeySetting& record);
/// Reads section "VPP" of @p doc into @p record (parameter type 36, #PARA_VOLTAGE_PROTECT).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseVoltageProtectParamJson(Json::Value const& doc, tag_MsgVoltageProtectSetting& record);
/// Reads section "HMP" of @p doc into @p record (parameter type 44, #PARA_HARDWARE_MANAGE).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseHardwareManageParamJson(Json::Value const& doc, tag_MsgHardwareManageSetting& record);
/// Reads section "SSP" of @p doc into @p record (parameter type 46, #PARA_POWER_SWITCH).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParsePowerSwitchParamJson(Json::Value const& doc, tag_MsgSwitchSetting& record);

#endif
