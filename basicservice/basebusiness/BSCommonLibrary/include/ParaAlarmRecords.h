/// @file
/// Alarm sub-records (linkage, weekly schedule, snapshot setting), the area,
/// speed, area-limit, IO, urgent, video-analysis, fatigue-driving and
/// timeout-parking alarm records, and their parsers. Offsets
/// and sizes are those of the 32-bit ARM recorder and are checked at compile
/// time; no record has implicit padding.
#ifndef PARA_ALARM_RECORDS_H
#define PARA_ALARM_RECORDS_H

#include "BSCommonExport.h"

#include <json/value.h>

// ---------------------------------------------------------------------------
// Alarm linkage: what the recorder does when an alarm fires ("APR").

/// "AR": recording.
struct alarmLinkRecord_t {
    unsigned int CH; ///< One 32-bit value, unlike the CH array of the linkage.
    unsigned short P;
    unsigned short D;
    unsigned char L;
    unsigned char ST;
    unsigned char reserved0[2]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(alarmLinkRecord_t, 12);

/// "SS": snapshot.
struct alarmLinkSnapShot {
    unsigned int EN;
    unsigned char reserved0[4]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(alarmLinkSnapShot, 8);

/// "PS": output.
struct alarmLinkOutput_t {
    unsigned char ID;
    unsigned char reserved0[3]; ///< Reserved: no parser writes these bytes.
    unsigned short T;
    unsigned char reserved1[2]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(alarmLinkOutput_t, 8);

/// Alarm linkage ("APR"): recording, snapshot and output groups, then the linkage's own keys;
/// read by ParseAlarmLinkProcess() and embedded in most alarm records.
struct alarmLinkProcess_t {
    alarmLinkRecord_t AR; ///< From the object AR, by ParseAlarmLinkRecord().
    alarmLinkSnapShot SS; ///< From the object SS, by ParseAlarmLinkSnapShot().
    alarmLinkOutput_t PS; ///< From the object PS, by ParseAlarmLinkOutput().
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
    unsigned char reserved0[12]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(alarmLinkProcess_t, 68);

// ---------------------------------------------------------------------------
// Weekly schedule ("AP"): 7 days of 16 periods.

/// One period of a weekly alarm schedule ("AP" -> "I"[day][period]).
struct alarmPlanPeriod_t {
    unsigned int S; ///< Start.
    unsigned int E; ///< End.
    unsigned char reserved0[8]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(alarmPlanPeriod_t, 16);

/// A weekly alarm schedule ("AP"): 7 days of 16 periods, read by ParseAlarmPlan() and embedded
/// directly behind the linkage in the alarm records.
struct alarmPlan_t {
    alarmPlanPeriod_t I[7][16]; ///< From the array of arrays I, [day][period]: the first 7 x 16 elements are read.
};
BSCOMMON_RECORD_SIZE(alarmPlan_t, 1792);

/// One snapshot setting; snapshot sections hold 16 of them ("CSP").
struct CommonSnapPara_t {
    unsigned char E;
    unsigned char R;
    unsigned char Q;
    unsigned char reserved0[3]; ///< Reserved: no parser writes these bytes.
    unsigned short N;
    unsigned int I;
    unsigned int U;
    unsigned char reserved1[8]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(CommonSnapPara_t, 24);

// ---------------------------------------------------------------------------
// Event alarm records.

/// Section "AREA" (parameter type 2, #PARA_AREA_ALARM), read by ParseAreaAlarmParamJson().
struct tag_msgAreaAlarmSetting {
    unsigned int MASK;
    unsigned short R;
    unsigned char LSTE;
    unsigned char SDT;
    unsigned char IOP;
    unsigned char ODT;
    unsigned short LDAI;
    unsigned char LDAC;
    unsigned char reserved0[3]; ///< Reserved: no parser writes these bytes (tail, never written).
};
BSCOMMON_RECORD_SIZE(tag_msgAreaAlarmSetting, 16);

/// Section "SAP" (parameter type 6, #PARA_SPEED_ALARM), read by ParseSpeedAlarmParamJson().
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
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
    alarmPlan_t AP; ///< From the object AP, by ParseAlarmPlan().
    unsigned char reserved0[16]; ///< Reserved: no parser writes these bytes.
    unsigned char NT;
    unsigned char WP;
    unsigned char WNT;
    unsigned char WDT;
    unsigned char reserved1; ///< Reserved: no parser writes these bytes.
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
    unsigned char reserved2[3]; ///< Reserved: no parser writes these bytes (tail, never written).
};
BSCOMMON_RECORD_SIZE(tag_MsgSpeedAlarmSetting, 1960);

/// Section "ARLM" (parameter type 7, #PARA_AREA_LIMIT), read by ParseAreaLimitParamJson().
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

/// One alarm input of "IOP".
struct IOAlarmInput_t {
    unsigned char EN;
    unsigned char AS;
    unsigned char EL;
    unsigned char VT;
    char N[32]; ///< Input name.
    char S[16];
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
    alarmPlan_t AP; ///< From the object AP, by ParseAlarmPlan().
    unsigned char reserved0[16]; ///< Reserved: no parser writes these bytes.
    unsigned char TM;
    unsigned char UT;
    unsigned char SDT;
    unsigned char reserved1; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(IOAlarmInput_t, 1932);

/// (the section is an array, one element per input). Section "IOP" (parameter type 14,
/// #PARA_IO_ALARM), read by ParseIOAlarmParamJson().
struct tag_MsgIOAlarmSetting {
    unsigned char reserved0[8]; ///< Reserved: no parser writes these bytes.
    IOAlarmInput_t IOP[16]; ///< The elements of the section, which is an array: the first 16 are read.
};
BSCOMMON_RECORD_SIZE(tag_MsgIOAlarmSetting, 30920);

/// Section "UAP" (parameter type 33, #PARA_URGENT_ALARM), read by ParseUrgentAlarmParamJson().
struct tag_MsgUrgentAlarmSetting {
    unsigned char EN;
    unsigned char AS;
    unsigned char T;
    unsigned char VT;
    unsigned char reserved0[4]; ///< Reserved: no parser writes these bytes.
    char UN[32];
    char UO[16];
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
    alarmPlan_t AP; ///< From the object AP, by ParseAlarmPlan().
    unsigned char reserved1[16]; ///< Reserved: no parser writes these bytes.
    unsigned char SDT;
    unsigned char reserved2[3]; ///< Reserved: no parser writes these bytes (tail, never written).
};
BSCOMMON_RECORD_SIZE(tag_MsgUrgentAlarmSetting, 1936);

// ---------------------------------------------------------------------------
// Video-analysis alarms: motion detection ("PMDAS"), video signal ("PVSAS")
// and video loss ("PVLAS"). The three share their head, linkage and schedule.

/// One motion-detection setting of "PMD".
struct MDAlarmEntry_t {
    unsigned char S;
    unsigned char MAN;
    unsigned char reserved0[2]; ///< Reserved: no parser writes these bytes.
    /// Region bitmap from the text of the key of the same name: 100 hexadecimal digits, two a
    /// byte (see ParseMDRegion()).
    unsigned char R[50];
    unsigned char KS;
    unsigned char SZ;
};
BSCOMMON_RECORD_SIZE(MDAlarmEntry_t, 56);

/// Section "PMDAS" (parameter type 30, #PARA_MD_ALARM), read by ParseMDAlarmParamJson().
struct tag_MsgMDAlarmSetting {
    unsigned char NE;
    unsigned char AS;
    unsigned char VT;
    unsigned char DT;
    unsigned char reserved0[4]; ///< Reserved: no parser writes these bytes.
    char MN[32]; ///< Name.
    char MO[16];
    unsigned int CH;
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
    alarmPlan_t AP; ///< From the object AP, by ParseAlarmPlan().
    unsigned char reserved1[16]; ///< Reserved: no parser writes these bytes.
    MDAlarmEntry_t PMD[16]; ///< From the array PMD: the first 16 elements are read.
    unsigned char SDT;
    unsigned char reserved2[3]; ///< Reserved: no parser writes these bytes (tail, never written).
};
BSCOMMON_RECORD_SIZE(tag_MsgMDAlarmSetting, 2836);

/// One video-signal setting of "PVS".
struct VSAlarmEntry_t {
    unsigned char S;
    unsigned char reserved0[7]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(VSAlarmEntry_t, 8);

/// Section "PVSAS" (parameter type 31, #PARA_VS_ALARM), read by ParseVSAlarmParamJson().
struct tag_MsgVSAlarmSetting {
    unsigned char NE;
    unsigned char AS;
    unsigned char VT;
    unsigned char DT;
    unsigned char AT;
    unsigned char reserved0[3]; ///< Reserved: no parser writes these bytes.
    char VN[32]; ///< Name.
    char VO[16];
    unsigned int CH;
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
    alarmPlan_t AP; ///< From the object AP, by ParseAlarmPlan().
    unsigned char reserved1[16]; ///< Reserved: no parser writes these bytes.
    VSAlarmEntry_t PVS[16]; ///< From the array PVS: the first 16 elements are read.
    unsigned char SDT;
    unsigned char reserved2[3]; ///< Reserved: no parser writes these bytes (tail, never written).
};
BSCOMMON_RECORD_SIZE(tag_MsgVSAlarmSetting, 2068);

/// Section "PVLAS" (parameter type 32, #PARA_VL_ALARM), read by ParseVLAlarmParamJson().
struct tag_MsgVLAlarmSetting {
    unsigned char NE;
    unsigned char AS;
    unsigned char VT;
    unsigned char reserved0[5]; ///< Reserved: no parser writes these bytes.
    char VN[32]; ///< Name.
    char LO[16];
    unsigned int CH;
    alarmLinkProcess_t APR; ///< From the object APR, by ParseAlarmLinkProcess().
    alarmPlan_t AP; ///< From the object AP, by ParseAlarmPlan().
    unsigned char reserved1[16]; ///< Reserved: no parser writes these bytes.
    unsigned char SDT;
    unsigned char reserved2[3]; ///< Reserved: no parser writes these bytes (tail, never written).
};
BSCOMMON_RECORD_SIZE(tag_MsgVLAlarmSetting, 1940);

// ---------------------------------------------------------------------------
// Driving and parking time alarms.

/// Section "FDAS" (parameter type 42, #PARA_FATIGUE_DRIVE_ALARM), read by
/// ParseFatigueDriveAlarmParamJson().
struct tag_MsgFatigueDriveAlarmSetting {
    unsigned char EN;
    unsigned char M;
    unsigned char SDT;
    unsigned char reserved0; ///< Reserved: no parser writes these bytes.
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

/// Section "TPAS" (parameter type 43, #PARA_TIMEOUT_PARK_ALARM), read by
/// ParseTimeoutParkAlarmParamJson().
struct tag_MsgTimeoutParkAlarmSetting {
    unsigned char EN;
    unsigned char SDT;
    unsigned char reserved0[2]; ///< Reserved: no parser writes these bytes.
    unsigned int AT;
};
BSCOMMON_RECORD_SIZE(tag_MsgTimeoutParkAlarmSetting, 8);

// ---------------------------------------------------------------------------
// Sub-record parsers: each takes the object itself. -1 without writing when it
// is empty or absent (logged), else 0.
/// Reads the recording group "AR" of an alarm linkage from the object itself into @p record.
/// @param object the object (not the whole document)
/// @param record the sub-record; reserved bytes and unread array elements keep their values
/// @return 0 when read; -1, with nothing written, when the object is empty or absent (logged at
///        level 0).
BSCOMMON_API int ParseAlarmLinkRecord(Json::Value const& object, alarmLinkRecord_t& record);
/// Reads the snapshot group "SS" of an alarm linkage from the object itself into @p record.
/// @param object the object (not the whole document)
/// @param record the sub-record; reserved bytes and unread array elements keep their values
/// @return 0 when read; -1, with nothing written, when the object is empty or absent (logged at
///        level 0).
BSCOMMON_API int ParseAlarmLinkSnapShot(Json::Value const& object, alarmLinkSnapShot& record);
/// Reads the output group "PS" of an alarm linkage from the object itself into @p record.
/// @param object the object (not the whole document)
/// @param record the sub-record; reserved bytes and unread array elements keep their values
/// @return 0 when read; -1, with nothing written, when the object is empty or absent (logged at
///        level 0).
BSCOMMON_API int ParseAlarmLinkOutput(Json::Value const& object, alarmLinkOutput_t& record);
// -1 for an empty object; otherwise 1 when none of "AR", "SS", "PS" was
// there to read, else 0.
/// Reads an alarm linkage object ("APR"), with its groups "AR", "SS" and "PS" from the object itself into @p record.
/// @param object the object (not the whole document)
/// @param record the sub-record; reserved bytes and unread array elements keep their values
/// @return 0 when read; 1 when none of "AR", "SS" and "PS" was there to read (the other keys are
///        still read); -1, with nothing written, for an empty or absent object (logged at level 0).
BSCOMMON_API int ParseAlarmLinkProcess(Json::Value const& object, alarmLinkProcess_t& record);
/// Reads a weekly alarm schedule ("AP"): 7 days of 16 periods from the object itself into @p record.
/// @param object the object (not the whole document)
/// @param record the sub-record; reserved bytes and unread array elements keep their values
/// @return 0 when read; -1, with nothing written, when the object is empty or absent (logged at
///        level 0).
BSCOMMON_API int ParseAlarmPlan(Json::Value const& object, alarmPlan_t& record);
/// Reads one snapshot setting from the object itself into @p record.
/// @param object the object (not the whole document)
/// @param record the sub-record; reserved bytes and unread array elements keep their values
/// @return 0 when read; -1, with nothing written, when the object is empty or absent (logged at
///        level 0).
BSCOMMON_API int ParseCommonSnapPara(Json::Value const& object, CommonSnapPara_t& record);

/// @{
/// Reads the first N elements of an array of snapshot objects into @p paras, each with
/// ParseCommonSnapPara(); missing elements, and all of them when @p list is not an array, keep
/// the caller's bytes. The library provides N = 16.
/// @param list  the JSON array of snapshot objects
/// @param paras the N snapshot settings
/// @return 0 always.
template <int N> BSCOMMON_API int ParseNCommonSnapPara(Json::Value const& list, CommonSnapPara_t (&paras)[N]);
extern template int ParseNCommonSnapPara<16>(Json::Value const& list, CommonSnapPara_t (&paras)[16]);
/// @}

// Section parsers: they take the whole parameter document. -1 without writing
// when the section is empty or absent, else 0.
/// Reads section "AREA" of @p doc into @p record (parameter type 2, #PARA_AREA_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseAreaAlarmParamJson(Json::Value const& doc, tag_msgAreaAlarmSetting& record);
/// Reads section "SAP" of @p doc into @p record (parameter type 6, #PARA_SPEED_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseSpeedAlarmParamJson(Json::Value const& doc, tag_MsgSpeedAlarmSetting& record);
/// Reads section "ARLM" of @p doc into @p record (parameter type 7, #PARA_AREA_LIMIT).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseAreaLimitParamJson(Json::Value const& doc, tag_msgAreaLimitSetting& record);
/// Reads section "IOP" of @p doc into @p record (parameter type 14, #PARA_IO_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseIOAlarmParamJson(Json::Value const& doc, tag_MsgIOAlarmSetting& record);
/// Reads section "UAP" of @p doc into @p record (parameter type 33, #PARA_URGENT_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseUrgentAlarmParamJson(Json::Value const& doc, tag_MsgUrgentAlarmSetting& record);
/// Reads section "PMDAS" of @p doc into @p record (parameter type 30, #PARA_MD_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseMDAlarmParamJson(Json::Value const& doc, tag_MsgMDAlarmSetting& record);
/// Reads section "PVSAS" of @p doc into @p record (parameter type 31, #PARA_VS_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseVSAlarmParamJson(Json::Value const& doc, tag_MsgVSAlarmSetting& record);
/// Reads section "PVLAS" of @p doc into @p record (parameter type 32, #PARA_VL_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseVLAlarmParamJson(Json::Value const& doc, tag_MsgVLAlarmSetting& record);
/// Reads section "FDAS" of @p doc into @p record (parameter type 42, #PARA_FATIGUE_DRIVE_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseFatigueDriveAlarmParamJson(Json::Value const& doc, tag_MsgFatigueDriveAlarmSetting& record);
/// Reads section "TPAS" of @p doc into @p record (parameter type 43, #PARA_TIMEOUT_PARK_ALARM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseTimeoutParkAlarmParamJson(Json::Value const& doc, tag_MsgTimeoutParkAlarmSetting& record);

/// Packs hexadecimal text into bytes, two digits a byte: out[i] takes the
/// digits at 2i (high nibble) and 2i + 1 (low nibble) while 2i < textLength - 1
/// and i < outLength. Nothing is validated: either case of a letter gives its
/// digit, and any other character gives the low 4 bits of the same arithmetic
/// (a NUL gives 0). An odd textLength drops the last character.
/// @param text       the hexadecimal text (only read)
/// @param textLength the number of characters of @p text to use
/// @param out        receives min(@p textLength / 2, @p outLength) bytes
/// @param outLength  the size of @p out
/// @return 1 always; null pointers, and lengths that leave no pair or no byte, write nothing.
BSCOMMON_API int ParseMDRegion(char const* text, int textLength, char* out, int outLength);

#endif
