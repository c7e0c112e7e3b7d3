// Alarm sub-records (linkage, weekly schedule, snapshot setting), the area,
// speed, area-limit, IO, urgent, video-analysis, fatigue-driving and
// timeout-parking alarm records, and their parsers. Offsets
// and sizes are those of the 32-bit ARM recorder and are checked at compile
// time; no record has implicit padding.
#ifndef PARA_ALARM_RECORDS_H
#define PARA_ALARM_RECORDS_H

#include "BSCommonExport.h"

#include <json/value.h>

// ---------------------------------------------------------------------------
// Alarm linkage: what the recorder does when an alarm fires ("APR").

// "AR": recording.
struct alarmLinkRecord_t {
    unsigned int CH; // one 32-bit value, unlike the CH array of the linkage
    unsigned short P;
    unsigned short D;
    unsigned char L;
    unsigned char ST;
    unsigned char reserved0[2];
};
BSCOMMON_RECORD_SIZE(alarmLinkRecord_t, 12);

// "SS": snapshot.
struct alarmLinkSnapShot {
    unsigned int EN;
    unsigned char reserved0[4];
};
BSCOMMON_RECORD_SIZE(alarmLinkSnapShot, 8);

// "PS": output.
struct alarmLinkOutput_t {
    unsigned char ID;
    unsigned char reserved0[3];
    unsigned short T;
    unsigned char reserved1[2];
};
BSCOMMON_RECORD_SIZE(alarmLinkOutput_t, 8);

struct alarmLinkProcess_t {
    alarmLinkRecord_t AR;
    alarmLinkSnapShot SS;
    alarmLinkOutput_t PS;
    unsigned char SU;
    unsigned char L;
    unsigned char DA;
    unsigned char SM;
    unsigned char CH[16];
    unsigned short ET;
    unsigned short ST;
    unsigned char ENBZ;
    unsigned char BZTY;
    unsigned char BZTI;
    unsigned char ENSP;
    unsigned char reserved0[12];
};
BSCOMMON_RECORD_SIZE(alarmLinkProcess_t, 68);

// ---------------------------------------------------------------------------
// Weekly schedule ("AP"): 7 days of 16 periods.

struct alarmPlanPeriod_t {
    unsigned int S; // start
    unsigned int E; // end
    unsigned char reserved0[8];
};
BSCOMMON_RECORD_SIZE(alarmPlanPeriod_t, 16);

struct alarmPlan_t {
    alarmPlanPeriod_t I[7][16]; // [day][period]
};
BSCOMMON_RECORD_SIZE(alarmPlan_t, 1792);

// One snapshot setting; snapshot sections hold 16 of them ("CSP").
struct CommonSnapPara_t {
    unsigned char E;
    unsigned char R;
    unsigned char Q;
    unsigned char reserved0[3];
    unsigned short N;
    unsigned int I;
    unsigned int U;
    unsigned char reserved1[8];
};
BSCOMMON_RECORD_SIZE(CommonSnapPara_t, 24);

// ---------------------------------------------------------------------------
// Event alarm records.

// "AREA"
struct tag_msgAreaAlarmSetting {
    unsigned int MASK;
    unsigned short R;
    unsigned char LSTE;
    unsigned char SDT;
    unsigned char IOP;
    unsigned char ODT;
    unsigned short LDAI;
    unsigned char LDAC;
    unsigned char reserved0[3]; // tail, never written
};
BSCOMMON_RECORD_SIZE(tag_msgAreaAlarmSetting, 16);

// "SAP"
struct tag_MsgSpeedAlarmSetting {
    unsigned char EN;
    unsigned char AS;
    unsigned char SV;
    unsigned char UN;
    unsigned char SF;
    unsigned char AT;
    unsigned char VT;
    unsigned char NSV;
    char SPN[32];
    char OD[16];
    alarmLinkProcess_t APR;
    alarmPlan_t AP;
    unsigned char reserved0[16];
    unsigned char NT;
    unsigned char WP;
    unsigned char WNT;
    unsigned char WDT;
    unsigned char reserved1;
    unsigned char SDT;
    unsigned short ANI;
    unsigned char ANC;
    unsigned char WAT;
    unsigned char WNC;
    unsigned char NWNC;
    unsigned short WNI;
    unsigned short NWNI;
    unsigned short NWT;
    unsigned char NWS;
    unsigned char NEN;
    unsigned char LST;
    unsigned char LSD;
    unsigned char SPR;
    unsigned char UI;
    unsigned char LSS;
    unsigned char reserved2[3]; // tail, never written
};
BSCOMMON_RECORD_SIZE(tag_MsgSpeedAlarmSetting, 1960);

// "ARLM"
struct tag_msgAreaLimitSetting {
    char RGVR[16];
    unsigned char ST;
    unsigned char FV;
    unsigned char LD;
    unsigned char TV;
    unsigned char YE;
    unsigned char MO;
    unsigned char DA;
    unsigned char HO;
    unsigned char MI;
    unsigned char SE;
};
BSCOMMON_RECORD_SIZE(tag_msgAreaLimitSetting, 26);

// One alarm input of "IOP".
struct IOAlarmInput_t {
    unsigned char EN;
    unsigned char AS;
    unsigned char EL;
    unsigned char VT;
    char N[32]; // input name
    char S[16];
    alarmLinkProcess_t APR;
    alarmPlan_t AP;
    unsigned char reserved0[16];
    unsigned char TM;
    unsigned char UT;
    unsigned char SDT;
    unsigned char reserved1;
};
BSCOMMON_RECORD_SIZE(IOAlarmInput_t, 1932);

// "IOP" (the section is an array, one element per input)
struct tag_MsgIOAlarmSetting {
    unsigned char reserved0[8];
    IOAlarmInput_t IOP[16];
};
BSCOMMON_RECORD_SIZE(tag_MsgIOAlarmSetting, 30920);

// "UAP"
struct tag_MsgUrgentAlarmSetting {
    unsigned char EN;
    unsigned char AS;
    unsigned char T;
    unsigned char VT;
    unsigned char reserved0[4];
    char UN[32];
    char UO[16];
    alarmLinkProcess_t APR;
    alarmPlan_t AP;
    unsigned char reserved1[16];
    unsigned char SDT;
    unsigned char reserved2[3]; // tail, never written
};
BSCOMMON_RECORD_SIZE(tag_MsgUrgentAlarmSetting, 1936);

// ---------------------------------------------------------------------------
// Video-analysis alarms: motion detection ("PMDAS"), video signal ("PVSAS")
// and video loss ("PVLAS"). The three share their head, linkage and schedule.

// One motion-detection setting of "PMD".
struct MDAlarmEntry_t {
    unsigned char S;
    unsigned char MAN;
    unsigned char reserved0[2];
    unsigned char R[50]; // region bitmap, from 100 hexadecimal digits
    unsigned char KS;
    unsigned char SZ;
};
BSCOMMON_RECORD_SIZE(MDAlarmEntry_t, 56);

// "PMDAS"
struct tag_MsgMDAlarmSetting {
    unsigned char NE;
    unsigned char AS;
    unsigned char VT;
    unsigned char DT;
    unsigned char reserved0[4];
    char MN[32]; // name
    char MO[16];
    unsigned int CH;
    alarmLinkProcess_t APR;
    alarmPlan_t AP;
    unsigned char reserved1[16];
    MDAlarmEntry_t PMD[16];
    unsigned char SDT;
    unsigned char reserved2[3]; // tail, never written
};
BSCOMMON_RECORD_SIZE(tag_MsgMDAlarmSetting, 2836);

// One video-signal setting of "PVS".
struct VSAlarmEntry_t {
    unsigned char S;
    unsigned char reserved0[7];
};
BSCOMMON_RECORD_SIZE(VSAlarmEntry_t, 8);

// "PVSAS"
struct tag_MsgVSAlarmSetting {
    unsigned char NE;
    unsigned char AS;
    unsigned char VT;
    unsigned char DT;
    unsigned char AT;
    unsigned char reserved0[3];
    char VN[32]; // name
    char VO[16];
    unsigned int CH;
    alarmLinkProcess_t APR;
    alarmPlan_t AP;
    unsigned char reserved1[16];
    VSAlarmEntry_t PVS[16];
    unsigned char SDT;
    unsigned char reserved2[3]; // tail, never written
};
BSCOMMON_RECORD_SIZE(tag_MsgVSAlarmSetting, 2068);

// "PVLAS"
struct tag_MsgVLAlarmSetting {
    unsigned char NE;
    unsigned char AS;
    unsigned char VT;
    unsigned char reserved0[5];
    char VN[32]; // name
    char LO[16];
    unsigned int CH;
    alarmLinkProcess_t APR;
    alarmPlan_t AP;
    unsigned char reserved1[16];
    unsigned char SDT;
    unsigned char reserved2[3]; // tail, never written
};
BSCOMMON_RECORD_SIZE(tag_MsgVLAlarmSetting, 1940);

// ---------------------------------------------------------------------------
// Driving and parking time alarms.

// "FDAS"
struct tag_MsgFatigueDriveAlarmSetting {
    unsigned char EN;
    unsigned char M;
    unsigned char SDT;
    unsigned char reserved0;
    unsigned int TT;
    unsigned int RT;
    unsigned int DTT;
    unsigned int AT;
    unsigned int NTT;
    unsigned int NRT;
    unsigned char SS;
    unsigned char VDT;
    unsigned char WRT;
    unsigned char ART;
    unsigned short WI;
    unsigned short AI;
};
BSCOMMON_RECORD_SIZE(tag_MsgFatigueDriveAlarmSetting, 36);

// "TPAS"
struct tag_MsgTimeoutParkAlarmSetting {
    unsigned char EN;
    unsigned char SDT;
    unsigned char reserved0[2];
    unsigned int AT;
};
BSCOMMON_RECORD_SIZE(tag_MsgTimeoutParkAlarmSetting, 8);

// ---------------------------------------------------------------------------
// Sub-record parsers: each takes the object itself. -1 without writing when it
// is empty or absent (logged), else 0.
BSCOMMON_API int ParseAlarmLinkRecord(Json::Value const& object, alarmLinkRecord_t& record);
BSCOMMON_API int ParseAlarmLinkSnapShot(Json::Value const& object, alarmLinkSnapShot& record);
BSCOMMON_API int ParseAlarmLinkOutput(Json::Value const& object, alarmLinkOutput_t& record);
// -1 for an empty object; otherwise 1 when none of "AR", "SS", "PS" was
// there to read, else 0.
BSCOMMON_API int ParseAlarmLinkProcess(Json::Value const& object, alarmLinkProcess_t& record);
BSCOMMON_API int ParseAlarmPlan(Json::Value const& object, alarmPlan_t& record);
BSCOMMON_API int ParseCommonSnapPara(Json::Value const& object, CommonSnapPara_t& record);

// Reads the first N elements of an array of snapshot objects into `paras`;
// missing elements keep the caller's bytes. Always 0. The library provides N = 16.
template <int N> BSCOMMON_API int ParseNCommonSnapPara(Json::Value const& list, CommonSnapPara_t (&paras)[N]);
extern template int ParseNCommonSnapPara<16>(Json::Value const& list, CommonSnapPara_t (&paras)[16]);

// Section parsers: they take the whole parameter document. -1 without writing
// when the section is empty or absent, else 0.
BSCOMMON_API int ParseAreaAlarmParamJson(Json::Value const& doc, tag_msgAreaAlarmSetting& record);
BSCOMMON_API int ParseSpeedAlarmParamJson(Json::Value const& doc, tag_MsgSpeedAlarmSetting& record);
BSCOMMON_API int ParseAreaLimitParamJson(Json::Value const& doc, tag_msgAreaLimitSetting& record);
BSCOMMON_API int ParseIOAlarmParamJson(Json::Value const& doc, tag_MsgIOAlarmSetting& record);
BSCOMMON_API int ParseUrgentAlarmParamJson(Json::Value const& doc, tag_MsgUrgentAlarmSetting& record);
BSCOMMON_API int ParseMDAlarmParamJson(Json::Value const& doc, tag_MsgMDAlarmSetting& record);
BSCOMMON_API int ParseVSAlarmParamJson(Json::Value const& doc, tag_MsgVSAlarmSetting& record);
BSCOMMON_API int ParseVLAlarmParamJson(Json::Value const& doc, tag_MsgVLAlarmSetting& record);
BSCOMMON_API int ParseFatigueDriveAlarmParamJson(Json::Value const& doc, tag_MsgFatigueDriveAlarmSetting& record);
BSCOMMON_API int ParseTimeoutParkAlarmParamJson(Json::Value const& doc, tag_MsgTimeoutParkAlarmSetting& record);

// Packs hexadecimal text into bytes, two digits a byte: out[i] takes the
// digits at 2i (high nibble) and 2i + 1 (low nibble) while 2i < textLength - 1
// and i < outLength. Nothing is validated: either case of a letter gives its
// digit, and any other character gives the low 4 bits of the same arithmetic
// (a NUL gives 0). An odd textLength drops the last character. Null pointers,
// and lengths that leave no pair or no byte, write nothing. Always 1.
BSCOMMON_API int ParseMDRegion(char const* text, int textLength, char* out, int outLength);

#endif
