/// @file
/// Vehicle-sensor and driving-behaviour alarm parameter records (thresholds, green driving, motion, stance, tyre pressure, temperature, fuel, vehicle-fault and DSM alarms) and their parsers. Offsets and sizes are those of the 32-bit ARM recorder and are checked
/// at compile time.
#ifndef PARA_SENSOR_RECORDS_H
#define PARA_SENSOR_RECORDS_H

#include "BSCommonExport.h"
#include "ParaAlarmRecords.h"

#include <json/value.h>

// ---------------------------------------------------------------------------
// Driving-behaviour thresholds ("PGDS" "ATH1" and "ATH2"). Key families end in
// L, M, H (low, medium, high level), in T, S, R, or in a level number.

/// The first driving-behaviour threshold object, read by ParseGDSAlarmThresh1().
struct paramAlarmThresh1_t {
    short SUXAL;
    short SUXAM;
    short SUXAH;
    short SUVAL;
    short SUVAM;
    short SUVAH;
    short BXAL;
    short BXAM;
    short BXAH;
    short BVAL;
    short BVAM;
    short BVAH;
    short CCFL;
    short CCFM;
    short CCFH;
    short BVL1;
    short BVL2;
    short GV1;
    short GV2;
    short ABV1;
    short ABV2;
    short ITL;
    short ITM;
    short ITH;
    short PLGT;
    short PLGR;
};
BSCOMMON_RECORD_SIZE(paramAlarmThresh1_t, 52);

/// The second driving-behaviour threshold object, read by ParseGDSAlarmThresh2().
struct paramAlarmThresh2_t {
    short EFT;
    short EFS;
    short EFR;
    short NGT;
    short NGS;
    short NGR;
    short CTHR; ///< The CTH and CTL triples lie R, S, T in memory.
    short CTHS;
    short CTHT;
    short CTLR;
    short CTLS;
    short CTLT;
    short CTDT;
    short CTDP1;
    short CTDP2;
    short HSSET;
    short RTL;
    short RRL;
    short RTM;
    short RRM;
    short RTH;
    short RRH;
    char ST;
    char IT;
    char RCL;
    char TTL;
    char TSL;
    char TPL;
    char TTM;
    char TSM;
    char TPM;
    char TTH;
    char TSH;
    char TPH;
    short LGHS;
    short LGHSR;
    short RBT;
    short RBS;
    short CSR;
    short CST;
    short PCET1;
    short PCET2;
    short PCEM;
    short BWTL;
    short BWTM;
    short BWTH;
    short BWSL;
    short BWSM;
    short BWSH;
    short CWTL;
    short CWTM;
    short CWTH;
    short CWSL;
    short CWSM;
    short CWSH;
    char POCT;
    char OSL1;
    char OSL2;
    char OSL3;
    char OSL4;
    char OSL5;
    short RL1;
    short RL2;
    short RL3;
    short RL4;
    short RL5;
    short RL6;
    short RL7;
    short RL8;
    char ST1L1;
    char ST1L2;
    char ST1L3;
    char ST1L4;
    char ST1L5;
    char APL1;
    char APL2;
    char APL3;
    char APL4;
    char APL5;
    char ST2L1;
    char ST2L2;
    char ST2L3;
    char ST2L4;
    char ST2L5;
    char ST2L6;
    char ST2L7;
    char ST2L8;
    char ST2L9;
    char EPLL1;
    char EPLL2;
    char EPLL3;
    char EPLL4;
    char EPLL5;
    char EPLL6;
    char ITL1;
    char ITL2;
    char ITL3;
    char ITL4;
    unsigned char reserved0[1]; ///< Reserved: no parser writes these bytes (tail, never written).
};
BSCOMMON_RECORD_SIZE(paramAlarmThresh2_t, 150);

/// Green driving. Groups "PSS", "PCS", "PTS", "PLDS", "PFS" and "PGS" flatten into the record.
/// Section "PGDS" (parameter type 25, #PARA_GREEN_DRIVER), read by ParseGreenDriverParamJson().
struct tag_MsgGreenDriverSet {
    unsigned char CM; ///< From PSS.CM. "PSS".
    unsigned char S; ///< From PSS.S.
    unsigned char POS; ///< From PSS.POS.
    unsigned char reserved0[29]; ///< Reserved: no parser writes these bytes.
    unsigned char AN; ///< From PCS.AN. "PCS".
    unsigned char UL; ///< From PCS.UL.
    unsigned char reserved1[32]; ///< Reserved: no parser writes these bytes.
    unsigned char T; ///< From PTS.T. "PTS".
    unsigned char U; ///< From PTS.U.
    unsigned char reserved2[32]; ///< Reserved: no parser writes these bytes.
    unsigned short VW; ///< From PLDS.VW. "PLDS".
    unsigned short CH; ///< From PLDS.CH.
    short CD; ///< From PLDS.CD.
    unsigned short LS; ///< From PLDS.LS.
    unsigned short CS; ///< From PLDS.CS.
    unsigned short FD; ///< From PLDS.FD.
    short CA; ///< From PLDS.CA.
    unsigned char NP; ///< From PLDS.NP.
    unsigned char reserved3[1]; ///< Reserved: no parser writes these bytes.
    unsigned char SL; ///< From PLDS.SL.
    unsigned char SR; ///< From PLDS.SR.
    unsigned char SB; ///< From PLDS.SB.
    unsigned char LDS; ///< From PLDS.LDS.
    unsigned char CSS; ///< From PLDS.CSS.
    unsigned char reserved4[29]; ///< Reserved: no parser writes these bytes.
    unsigned short FV; ///< From PFS.FV. "PFS".
    unsigned short DPT; ///< From PFS.DPT.
    unsigned short FI; ///< From PFS.FI.
    unsigned char FAH[8]; ///< From PFS.FAH.
    unsigned short FM[8]; ///< From PFS.FM.
    unsigned char RM; ///< From PFS.RM.
    unsigned char reserved5[3]; ///< Reserved: no parser writes these bytes.
    float M; ///< From PGS.M. "PGS".
    float F; ///< From PGS.F.
    float MC; ///< From PGS.MC.
    float FC; ///< From PGS.FC.
    unsigned char WM; ///< From PGS.WM.
    unsigned char reserved6[11]; ///< Reserved: no parser writes these bytes.
    unsigned int ATE;
    unsigned short SUI;
    paramAlarmThresh1_t ATH1; ///< From the object ATH1, by ParseGDSAlarmThresh1().
    unsigned char reserved7[2]; ///< Reserved: no parser writes these bytes.
    unsigned int FUI;
    unsigned char FUE;
    unsigned char reserved8[3]; ///< Reserved: no parser writes these bytes.
    paramAlarmThresh2_t ATH2; ///< From the object ATH2, by ParseGDSAlarmThresh2().
    unsigned char reserved9[2]; ///< Reserved: no parser writes these bytes (tail, never written).
};
BSCOMMON_RECORD_SIZE(tag_MsgGreenDriverSet, 432);

// ---------------------------------------------------------------------------
// Motion-sensor alarms: three leading bytes, two texts, the linkage at 56.

/// Section "ACC" (parameter type 29, #PARA_ACCEL_ALARM), read by ParseAccelAlarmParamJson().
struct tag_msgAccelAlarmSetting {
    unsigned char EN;
    unsigned char AS;
    unsigned char VT;
    unsigned char reserved0[5]; ///< Reserved: no parser writes these bytes.
    char AN[32];
    char AO[16];
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
    unsigned short TX; ///< From the decimal text ACP.TX, in tenths ("6553.5" stores 65535).
    unsigned short TY; ///< From the decimal text ACP.TY, in tenths.
    unsigned short TZ; ///< From the decimal text ACP.TZ, in tenths.
    unsigned short SX; ///< From ACP.SX.
    unsigned short SY; ///< From ACP.SY.
    unsigned short SZ; ///< From ACP.SZ.
    unsigned char ADJACC; ///< From ACP.ADJACC.
    unsigned char reserved1[11]; ///< Reserved: no parser writes these bytes.
    unsigned char SDT;
    unsigned char reserved2[3]; ///< Reserved: no parser writes these bytes (tail, never written).
};
BSCOMMON_RECORD_SIZE(tag_msgAccelAlarmSetting, 152);

/// Section "PCAS" (parameter type 37, #PARA_COLLIDE_ALARM), read by ParseCollideAlarmParamJson().
struct tag_MsgCollideAlarmSetting {
    unsigned char EN;
    unsigned char AS;
    unsigned char VT;
    unsigned char SDT;
    unsigned char reserved0[4]; ///< Reserved: no parser writes these bytes.
    char CN[32];
    char CO[16];
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
    unsigned char STS;
    unsigned char TTS;
    unsigned char reserved1[2]; ///< Reserved: no parser writes these bytes (tail, never written).
};
BSCOMMON_RECORD_SIZE(tag_MsgCollideAlarmSetting, 128);

/// Section "PHAS" (parameter type 38, #PARA_HIT_ALARM), read by ParseHitAlarmParamJson().
struct tag_MsgHitAlarmSetting {
    unsigned char EN;
    unsigned char AS;
    unsigned char VT;
    unsigned char SDT;
    unsigned char reserved0[4]; ///< Reserved: no parser writes these bytes.
    char HN[32];
    char HO[16];
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
    unsigned short HA;
    unsigned char reserved1[2]; ///< Reserved: no parser writes these bytes (tail, never written).
};
BSCOMMON_RECORD_SIZE(tag_MsgHitAlarmSetting, 128);

/// One element of "PVTSAS".
struct VehicleStanceAlarm_t {
    unsigned char NE;
    unsigned char AS;
    unsigned char VT;
    unsigned char reserved0[1]; ///< Reserved: no parser writes these bytes.
    unsigned char STEN;
    unsigned char TS;
    unsigned char IOTEN;
    unsigned char TIO;
    char AN[32];
    char AO[16];
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
    unsigned char SDT;
    unsigned char reserved1[3]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(VehicleStanceAlarm_t, 128);

/// (the section is an array, one element per entry). Section "PVTSAS" (parameter type 39,
/// #PARA_VEHICLE_STANCE_ALARM), read by ParseVehicleStanceAlarmParamJson().
struct tag_MsgVehicleStanceAlarm {
    unsigned char reserved0[8]; ///< Reserved: no parser writes these bytes.
    VehicleStanceAlarm_t PVTSAS[12]; ///< The elements of the section, which is an array: the first 12 are read.
};
BSCOMMON_RECORD_SIZE(tag_MsgVehicleStanceAlarm, 1544);

// ---------------------------------------------------------------------------
// Tyre pressure ("TPP").

/// One element of "TSP".
struct WTPMSTsp_t {
    unsigned char RI[3];
    unsigned char HT;
    unsigned short LP;
    unsigned short HP;
};
BSCOMMON_RECORD_SIZE(WTPMSTsp_t, 8);

/// One element of "TRP".
struct WTPMSTrp_t {
    unsigned char RI[3];
    unsigned char RP;
    unsigned char EN;
    unsigned char reserved0[3]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(WTPMSTrp_t, 8);

/// One element of "TTR".
struct WTPMSTtr_t {
    char N[15]; ///< Fixed width, not necessarily terminated.
    unsigned char P;
};
BSCOMMON_RECORD_SIZE(WTPMSTtr_t, 16);

/// Section "TPP" (parameter type 40, #PARA_TIRE_PRESSURE), read by ParseTirePressureParamJson().
struct tag_msgWTPMSProperty {
    WTPMSTsp_t TSP[36]; ///< From the array TSP: the first 36 elements are read.
    unsigned char T; ///< From TTP.T. "TTP".
    unsigned char ST1; ///< From TTP.ST1.
    unsigned char ST2; ///< From TTP.ST2.
    unsigned char ST3; ///< From TTP.ST3.
    unsigned char AL; ///< From TTP.AL.
    unsigned char reserved0[3]; ///< Reserved: no parser writes these bytes.
    WTPMSTrp_t TRP[3]; ///< From the array TRP: the first 3 elements are read.
    WTPMSTtr_t TTR[36]; ///< From the array TTR: the first 36 elements are read.
    unsigned char TVC;
    unsigned char UN;
    unsigned char IBL;
    unsigned char SL;
};
BSCOMMON_RECORD_SIZE(tag_msgWTPMSProperty, 900);

// ---------------------------------------------------------------------------
// Temperature, fuel, vehicle-fault and DSM alarms.

/// Two triples, T and V. Section "VTFS" (parameter type 26, #PARA_VT_FAULT), read by
/// ParseVTFaultParamJson().
struct tag_msgVTFaultInfoSetting {
    short TP;
    short TV;
    unsigned int TAT;
    short VP;
    short VV;
    unsigned int VAT;
};
BSCOMMON_RECORD_SIZE(tag_msgVTFaultInfoSetting, 16);

/// One element of "STMPA".
struct StdTempAlarm_t {
    unsigned char EN;
    unsigned char AS;
    unsigned char VT;
    unsigned char SDT;
    unsigned int UIT;
    char SNM[32];
    char SOD[16];
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
    unsigned char HTTD;
    unsigned char IWT;
    unsigned char IWD;
    unsigned char reserved0[29]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(StdTempAlarm_t, 156);

/// (the section is an array, one element per sensor). Section "STMPA" (parameter type 41,
/// #PARA_STD_TEMP_ALARM), read by ParseStdTempAlarmParamJson().
struct tag_msgStdTempAlarmSetting {
    StdTempAlarm_t STMPA[5]; ///< The elements of the section, which is an array: the first 5 are read.
};
BSCOMMON_RECORD_SIZE(tag_msgStdTempAlarmSetting, 780);

/// No alarm linkage. Section "FAS" (parameter type 45, #PARA_FUEL_ALARM), read by
/// ParseFuelAlarmParamJson().
struct tag_msgFuelAlarmSetting {
    unsigned char EN;
    unsigned char AS;
    unsigned short TS;
    char FN[32];
    char FO[16];
    unsigned short FV;
    unsigned char VT;
    unsigned char SP;
    unsigned short FH;
    unsigned short EH;
    unsigned short CF;
    unsigned char SDT;
    unsigned char reserved0[1]; ///< Reserved: no parser writes these bytes.
    unsigned int BA;
};
BSCOMMON_RECORD_SIZE(tag_msgFuelAlarmSetting, 68);

/// One element of "DSM" "DSMA".
struct StdDSMAlarm_t {
    unsigned char EN;
    unsigned char AS;
    unsigned char reserved0[4]; ///< Reserved: no parser writes these bytes.
    unsigned char SDT;
    unsigned char reserved1[5]; ///< Reserved: no parser writes these bytes.
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
};
BSCOMMON_RECORD_SIZE(StdDSMAlarm_t, 80);

/// Section "DSM" (parameter type 51, #PARA_STD_DSM_ALARM), read by ParseStdDsmAlarmParamJson().
struct tag_msgStdDSMAlarmSetting {
    unsigned char SST;
    unsigned char reserved0[3]; ///< Reserved: no parser writes these bytes.
    StdDSMAlarm_t DSMA[12]; ///< From the array DSMA: the first 12 elements are read.
};
BSCOMMON_RECORD_SIZE(tag_msgStdDSMAlarmSetting, 964);

// ---------------------------------------------------------------------------
// Threshold parsers: each takes the threshold object itself. -1 without
// writing when it is empty or absent (logged), else 0.
/// Reads the first driving-behaviour threshold object from the object itself into @p record.
/// @param object the object (not the whole document)
/// @param record the sub-record; reserved bytes and unread array elements keep their values
/// @return 0 when read; -1, with nothing written, when the object is empty or absent (logged at
///        level 0).
BSCOMMON_API int ParseGDSAlarmThresh1(Json::Value const& object, paramAlarmThresh1_t& record);
/// Reads the second driving-behaviour threshold object from the object itself into @p record.
/// @param object the object (not the whole document)
/// @param record the sub-record; reserved bytes and unread array elements keep their values
/// @return 0 when read; -1, with nothing written, when the object is empty or absent (logged at
///        level 0).
BSCOMMON_API int ParseGDSAlarmThresh2(Json::Value const& object, paramAlarmThresh2_t& record);

// Section parsers: they take the whole parameter document. -1 without writing
// when the section is empty or absent (silently), else 0.
/// Reads section "PGDS" of @p doc into @p record (parameter type 25, #PARA_GREEN_DRIVER).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseGreenDriverParamJson(Json::Value const& doc, tag_MsgGreenDriverSet& record);
/// Reads section "ACC" of @p doc into @p record (parameter type 29, #PARA_ACCEL_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseAccelAlarmParamJson(Json::Value const& doc, tag_msgAccelAlarmSetting& record);
/// Reads section "PCAS" of @p doc into @p record (parameter type 37, #PARA_COLLIDE_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseCollideAlarmParamJson(Json::Value const& doc, tag_MsgCollideAlarmSetting& record);
/// Reads section "PHAS" of @p doc into @p record (parameter type 38, #PARA_HIT_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseHitAlarmParamJson(Json::Value const& doc, tag_MsgHitAlarmSetting& record);
/// Reads section "PVTSAS" of @p doc into @p record (parameter type 39, #PARA_VEHICLE_STANCE_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseVehicleStanceAlarmParamJson(Json::Value const& doc, tag_MsgVehicleStanceAlarm& record);
/// Reads section "TPP" of @p doc into @p record (parameter type 40, #PARA_TIRE_PRESSURE).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseTirePressureParamJson(Json::Value const& doc, tag_msgWTPMSProperty& record);
/// Reads section "STMPA" of @p doc into @p record (parameter type 41, #PARA_STD_TEMP_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseStdTempAlarmParamJson(Json::Value const& doc, tag_msgStdTempAlarmSetting& record);
/// Reads section "VTFS" of @p doc into @p record (parameter type 26, #PARA_VT_FAULT).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseVTFaultParamJson(Json::Value const& doc, tag_msgVTFaultInfoSetting& record);
/// Reads section "FAS" of @p doc into @p record (parameter type 45, #PARA_FUEL_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseFuelAlarmParamJson(Json::Value const& doc, tag_msgFuelAlarmSetting& record);
/// Reads section "DSM" of @p doc into @p record (parameter type 51, #PARA_STD_DSM_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseStdDsmAlarmParamJson(Json::Value const& doc, tag_msgStdDSMAlarmSetting& record);

#endif
