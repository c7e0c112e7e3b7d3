// Vehicle-sensor and driving-behaviour alarm parameter records (thresholds, green driving, motion, stance, tyre pressure, temperature, fuel, vehicle-fault and DSM alarms) and their parsers. Offsets and sizes are those of the 32-bit ARM recorder and are checked
// at compile time.
#ifndef PARA_SENSOR_RECORDS_H
#define PARA_SENSOR_RECORDS_H

#include "BSCommonExport.h"
#include "ParaAlarmRecords.h"

#include <json/value.h>

// ---------------------------------------------------------------------------
// Driving-behaviour thresholds ("PGDS" "ATH1" and "ATH2"). Key families end in
// L, M, H (low, medium, high level), in T, S, R, or in a level number.

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

struct paramAlarmThresh2_t {
    short EFT;
    short EFS;
    short EFR;
    short NGT;
    short NGS;
    short NGR;
    short CTHR; // the CTH and CTL triples lie R, S, T in memory
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
    unsigned char reserved0[1]; // tail, never written
};
BSCOMMON_RECORD_SIZE(paramAlarmThresh2_t, 150);

// "PGDS": green driving. Groups "PSS", "PCS", "PTS", "PLDS", "PFS" and "PGS"
// flatten into the record.
struct tag_MsgGreenDriverSet {
    unsigned char CM; // "PSS"
    unsigned char S;
    unsigned char POS;
    unsigned char reserved0[29];
    unsigned char AN; // "PCS"
    unsigned char UL;
    unsigned char reserved1[32];
    unsigned char T; // "PTS"
    unsigned char U;
    unsigned char reserved2[32];
    unsigned short VW; // "PLDS"
    unsigned short CH;
    short CD;
    unsigned short LS;
    unsigned short CS;
    unsigned short FD;
    short CA;
    unsigned char NP;
    unsigned char reserved3[1];
    unsigned char SL;
    unsigned char SR;
    unsigned char SB;
    unsigned char LDS;
    unsigned char CSS;
    unsigned char reserved4[29];
    unsigned short FV; // "PFS"
    unsigned short DPT;
    unsigned short FI;
    unsigned char FAH[8];
    unsigned short FM[8];
    unsigned char RM;
    unsigned char reserved5[3];
    float M; // "PGS"
    float F;
    float MC;
    float FC;
    unsigned char WM;
    unsigned char reserved6[11];
    unsigned int ATE;
    unsigned short SUI;
    paramAlarmThresh1_t ATH1;
    unsigned char reserved7[2];
    unsigned int FUI;
    unsigned char FUE;
    unsigned char reserved8[3];
    paramAlarmThresh2_t ATH2;
    unsigned char reserved9[2]; // tail, never written
};
BSCOMMON_RECORD_SIZE(tag_MsgGreenDriverSet, 432);

// ---------------------------------------------------------------------------
// Motion-sensor alarms: three leading bytes, two texts, the linkage at 56.

// "ACC"
struct tag_msgAccelAlarmSetting {
    unsigned char EN;
    unsigned char AS;
    unsigned char VT;
    unsigned char reserved0[5];
    char AN[32];
    char AO[16];
    alarmLinkProcess_t APR;
    unsigned short TX; // "ACP": calibration in tenths, given as decimal text
    unsigned short TY;
    unsigned short TZ;
    unsigned short SX;
    unsigned short SY;
    unsigned short SZ;
    unsigned char ADJACC;
    unsigned char reserved1[11];
    unsigned char SDT;
    unsigned char reserved2[3]; // tail, never written
};
BSCOMMON_RECORD_SIZE(tag_msgAccelAlarmSetting, 152);

// "PCAS"
struct tag_MsgCollideAlarmSetting {
    unsigned char EN;
    unsigned char AS;
    unsigned char VT;
    unsigned char SDT;
    unsigned char reserved0[4];
    char CN[32];
    char CO[16];
    alarmLinkProcess_t APR;
    unsigned char STS;
    unsigned char TTS;
    unsigned char reserved1[2]; // tail, never written
};
BSCOMMON_RECORD_SIZE(tag_MsgCollideAlarmSetting, 128);

// "PHAS"
struct tag_MsgHitAlarmSetting {
    unsigned char EN;
    unsigned char AS;
    unsigned char VT;
    unsigned char SDT;
    unsigned char reserved0[4];
    char HN[32];
    char HO[16];
    alarmLinkProcess_t APR;
    unsigned short HA;
    unsigned char reserved1[2]; // tail, never written
};
BSCOMMON_RECORD_SIZE(tag_MsgHitAlarmSetting, 128);

// One element of "PVTSAS".
struct VehicleStanceAlarm_t {
    unsigned char NE;
    unsigned char AS;
    unsigned char VT;
    unsigned char reserved0[1];
    unsigned char STEN;
    unsigned char TS;
    unsigned char IOTEN;
    unsigned char TIO;
    char AN[32];
    char AO[16];
    alarmLinkProcess_t APR;
    unsigned char SDT;
    unsigned char reserved1[3];
};
BSCOMMON_RECORD_SIZE(VehicleStanceAlarm_t, 128);

// "PVTSAS" (the section is an array, one element per entry)
struct tag_MsgVehicleStanceAlarm {
    unsigned char reserved0[8];
    VehicleStanceAlarm_t PVTSAS[12];
};
BSCOMMON_RECORD_SIZE(tag_MsgVehicleStanceAlarm, 1544);

// ---------------------------------------------------------------------------
// Tyre pressure ("TPP").

// One element of "TSP".
struct WTPMSTsp_t {
    unsigned char RI[3];
    unsigned char HT;
    unsigned short LP;
    unsigned short HP;
};
BSCOMMON_RECORD_SIZE(WTPMSTsp_t, 8);

// One element of "TRP".
struct WTPMSTrp_t {
    unsigned char RI[3];
    unsigned char RP;
    unsigned char EN;
    unsigned char reserved0[3];
};
BSCOMMON_RECORD_SIZE(WTPMSTrp_t, 8);

// One element of "TTR".
struct WTPMSTtr_t {
    char N[15]; // fixed width, not necessarily terminated
    unsigned char P;
};
BSCOMMON_RECORD_SIZE(WTPMSTtr_t, 16);

struct tag_msgWTPMSProperty {
    WTPMSTsp_t TSP[36];
    unsigned char T; // "TTP"
    unsigned char ST1;
    unsigned char ST2;
    unsigned char ST3;
    unsigned char AL;
    unsigned char reserved0[3];
    WTPMSTrp_t TRP[3];
    WTPMSTtr_t TTR[36];
    unsigned char TVC;
    unsigned char UN;
    unsigned char IBL;
    unsigned char SL;
};
BSCOMMON_RECORD_SIZE(tag_msgWTPMSProperty, 900);

// ---------------------------------------------------------------------------
// Temperature, fuel, vehicle-fault and DSM alarms.

// "VTFS": two triples, T and V.
struct tag_msgVTFaultInfoSetting {
    short TP;
    short TV;
    unsigned int TAT;
    short VP;
    short VV;
    unsigned int VAT;
};
BSCOMMON_RECORD_SIZE(tag_msgVTFaultInfoSetting, 16);

// One element of "STMPA".
struct StdTempAlarm_t {
    unsigned char EN;
    unsigned char AS;
    unsigned char VT;
    unsigned char SDT;
    unsigned int UIT;
    char SNM[32];
    char SOD[16];
    alarmLinkProcess_t APR;
    unsigned char HTTD;
    unsigned char IWT;
    unsigned char IWD;
    unsigned char reserved0[29];
};
BSCOMMON_RECORD_SIZE(StdTempAlarm_t, 156);

// "STMPA" (the section is an array, one element per sensor)
struct tag_msgStdTempAlarmSetting {
    StdTempAlarm_t STMPA[5];
};
BSCOMMON_RECORD_SIZE(tag_msgStdTempAlarmSetting, 780);

// "FAS": no alarm linkage.
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
    unsigned char reserved0[1];
    unsigned int BA;
};
BSCOMMON_RECORD_SIZE(tag_msgFuelAlarmSetting, 68);

// One element of "DSM" "DSMA".
struct StdDSMAlarm_t {
    unsigned char EN;
    unsigned char AS;
    unsigned char reserved0[4];
    unsigned char SDT;
    unsigned char reserved1[5];
    alarmLinkProcess_t APR;
};
BSCOMMON_RECORD_SIZE(StdDSMAlarm_t, 80);

// "DSM"
struct tag_msgStdDSMAlarmSetting {
    unsigned char SST;
    unsigned char reserved0[3];
    StdDSMAlarm_t DSMA[12];
};
BSCOMMON_RECORD_SIZE(tag_msgStdDSMAlarmSetting, 964);

// ---------------------------------------------------------------------------
// Threshold parsers: each takes the threshold object itself. -1 without
// writing when it is empty or absent (logged), else 0.
BSCOMMON_API int ParseGDSAlarmThresh1(Json::Value const& object, paramAlarmThresh1_t& record);
BSCOMMON_API int ParseGDSAlarmThresh2(Json::Value const& object, paramAlarmThresh2_t& record);

// Section parsers: they take the whole parameter document. -1 without writing
// when the section is empty or absent (silently), else 0.
BSCOMMON_API int ParseGreenDriverParamJson(Json::Value const& doc, tag_MsgGreenDriverSet& record);
BSCOMMON_API int ParseAccelAlarmParamJson(Json::Value const& doc, tag_msgAccelAlarmSetting& record);
BSCOMMON_API int ParseCollideAlarmParamJson(Json::Value const& doc, tag_MsgCollideAlarmSetting& record);
BSCOMMON_API int ParseHitAlarmParamJson(Json::Value const& doc, tag_MsgHitAlarmSetting& record);
BSCOMMON_API int ParseVehicleStanceAlarmParamJson(Json::Value const& doc, tag_MsgVehicleStanceAlarm& record);
BSCOMMON_API int ParseTirePressureParamJson(Json::Value const& doc, tag_msgWTPMSProperty& record);
BSCOMMON_API int ParseStdTempAlarmParamJson(Json::Value const& doc, tag_msgStdTempAlarmSetting& record);
BSCOMMON_API int ParseVTFaultParamJson(Json::Value const& doc, tag_msgVTFaultInfoSetting& record);
BSCOMMON_API int ParseFuelAlarmParamJson(Json::Value const& doc, tag_msgFuelAlarmSetting& record);
BSCOMMON_API int ParseStdDsmAlarmParamJson(Json::Value const& doc, tag_msgStdDSMAlarmSetting& record);

#endif
