/// @file
/// Video, recording and snapshot parameter records and their parsers. Offsets
/// and sizes are those of the 32-bit ARM recorder and are checked at compile
/// time.
#ifndef PARA_VIDEO_RECORDS_H
#define PARA_VIDEO_RECORDS_H

#include "BSCommonExport.h"
#include "ParaAlarmRecords.h" // CommonSnapPara_t of the snapshot sets

#include <json/value.h>

/// Main-stream encoding of one video channel ("MAIN"[i]).
struct tag_MsgVideoEncodeChannel {
    unsigned int BR;
    unsigned char VEN;
    unsigned char FT;
    unsigned char FR;
    unsigned char QLT;
    unsigned char ALT;
    unsigned char RST;
    unsigned char AEN;
    unsigned char BRM;
    unsigned short KFI;
    unsigned char LCN;
    unsigned char AFR;
    unsigned char AMT;
    unsigned char AST;
    unsigned char EPV;
    unsigned char ECT;
    unsigned char reserved0[4]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(tag_MsgVideoEncodeChannel, 24);

/// An array with one object per channel. The parser never writes the first 8 bytes. Section "MAIN"
/// (parameter type 10, #PARA_MAIN_STREAM), read by ParseMainStreamParamJson().
struct tag_MsgVideoEncodeSetting {
    unsigned char reserved0[8]; ///< Reserved: no parser writes these bytes.
    tag_MsgVideoEncodeChannel MAIN[16]; ///< The elements of the section, which is an array: the first 16 are read.
};
BSCOMMON_RECORD_SIZE(tag_MsgVideoEncodeSetting, 392);

/// Assist (secondary) recording; "VEC" holds one main-stream style encoding entry per channel.
/// Section "AR" (parameter type 11, #PARA_ASSIST_RECORD), read by ParseAssistRecordParamJson().
struct tag_MsgAssistRecordSetting {
    unsigned char EN;
    unsigned char HID;
    unsigned char RM;
    unsigned char CM;
    unsigned int MC;
    unsigned int MAC;
    tag_MsgVideoEncodeChannel VEC[16]; ///< From the array VEC: the first 16 elements are read.
    unsigned int SSC;
    unsigned int DC;
    unsigned int HDAE;
    unsigned char ALH;
    unsigned char reserved0[3]; ///< Reserved: no parser writes these bytes (tail padding to the 4-byte alignment).
};
BSCOMMON_RECORD_SIZE(tag_MsgAssistRecordSetting, 412);

/// Network (sub-stream) encoding of one channel ("NEC"[i]). Shorter than the main-stream entry, and
/// RST, AEN, BRM and ECT sit elsewhere.
struct tag_MsgNetEncodeChannel {
    unsigned int BR;
    unsigned char VEN;
    unsigned char FT;
    unsigned char FR;
    unsigned char QLT;
    unsigned char RST;
    unsigned char AEN;
    unsigned char BRM;
    unsigned char ECT;
    unsigned short KFI;
    unsigned char reserved0[6]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(tag_MsgNetEncodeChannel, 20);

/// Network transfer, a total bandwidth and 16 channels. Section "SUBSTRNET" (parameter type 12,
/// #PARA_NET_TRANSFER), read by ParseNetTransferParamJson().
struct tag_MsgNetTransferSetting {
    unsigned int TOTALBW;
    unsigned char SM;
    unsigned char SAE;
    unsigned char RLE;
    unsigned char reserved0[9]; ///< Reserved: no parser writes these bytes.
    tag_MsgNetEncodeChannel NEC[16]; ///< From the array NEC: the first 16 elements are read.
};
BSCOMMON_RECORD_SIZE(tag_MsgNetTransferSetting, 336);

/// One free text overlay of an encoded channel ("COSD"[k]).
struct tag_MsgEncodeOsdItem {
    unsigned char EN;
    unsigned char ID;
    unsigned short X;
    unsigned short Y;
    unsigned char F;
    unsigned char L;
    char T[32];
    unsigned char TP;
    unsigned char reserved0[7]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(tag_MsgEncodeOsdItem, 48);

/// Overlays burnt into one channel's encoded video ("EOSD"[i]): each fixed item has an enable flag
/// (xE) and a position (xX, xY).
struct tag_MsgEncodeOsdChannel {
    unsigned char TE;
    unsigned char SE;
    unsigned char GE;
    unsigned char VE;
    unsigned short TX;
    unsigned short TY;
    unsigned short SX;
    unsigned short SY;
    unsigned short GX;
    unsigned short GY;
    unsigned short VX;
    unsigned short VY;
    tag_MsgEncodeOsdItem COSD[4]; ///< From the array COSD: the first 4 elements are read.
    unsigned char NE;
    unsigned char DE;
    unsigned short NX;
    unsigned short NY;
    unsigned short DX;
    unsigned short DY;
    unsigned char DTE;
    unsigned char WME;
    unsigned char reserved0[8]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(tag_MsgEncodeOsdChannel, 232);

/// An array with one object per channel. The parser never writes the first 8 bytes. Section "EOSD"
/// (parameter type 15, #PARA_ENCODE_OSD), read by ParseEncodeOSDParamJson().
struct tag_MsgEncodeOsdSetting {
    unsigned char reserved0[8]; ///< Reserved: no parser writes these bytes.
    tag_MsgEncodeOsdChannel EOSD[16]; ///< The elements of the section, which is an array: the first 16 are read.
};
BSCOMMON_RECORD_SIZE(tag_MsgEncodeOsdSetting, 3720);

/// A position on the display ("OP"[m]).
struct tag_MsgViewOsdPosition {
    unsigned short X;
    unsigned short Y;
};
BSCOMMON_RECORD_SIZE(tag_MsgViewOsdPosition, 4);

/// Display overlays. The flags run TE, SE, VE, GE here, unlike the encoded overlays' TE, SE, GE,
/// VE. Section "DOSD" (parameter type 50, #PARA_VIEW_OSD), read by ParseViewOsdParamJson().
struct tag_MsgViewOsdSetting {
    unsigned char TE;
    unsigned char SE;
    unsigned char VE;
    unsigned char GE;
    unsigned char AE;
    unsigned char NE;
    unsigned char DE;
    char CHN[32][16]; ///< Channel names.
    unsigned char ACCE;
    unsigned char SOEM;
    unsigned char COE1;
    unsigned char COE2;
    unsigned char REN;
    tag_MsgViewOsdPosition OP[12]; ///< From the array OP: the first 12 elements are read.
};
BSCOMMON_RECORD_SIZE(tag_MsgViewOsdSetting, 572);

/// One recording period of a day ("RSI"[d][p]).
struct tag_MsgRecordPeriod {
    unsigned int S;
    unsigned int E;
    unsigned char T;
    unsigned char reserved0[7]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(tag_MsgRecordPeriod, 16);

/// Recording of one channel ("RCP"[i]): a weekly table of 7 days x 16 periods.
struct tag_MsgRecordChannel {
    tag_MsgRecordPeriod RSI[7][16]; ///< From the array RSI: the first 7 x 16 elements are read.
    unsigned char RM;
    unsigned char reserved0[1]; ///< Reserved: no parser writes these bytes.
    unsigned short RP;
    unsigned char reserved1[8]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(tag_MsgRecordChannel, 1804);

/// One entry of the "MP" list.
struct tag_MsgRecordMPEntry {
    unsigned char OLD;
    unsigned char OT;
    unsigned char OVD;
    unsigned char reserved0[5]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(tag_MsgRecordMPEntry, 8);

/// Recording of 16 channels. Section "RP" (parameter type 16, #PARA_RECORD), read by
/// ParseRecordParamJson().
struct tag_MsgRecordSetting {
    tag_MsgRecordChannel RCP[16]; ///< From the array RCP: the first 16 elements are read.
    tag_MsgRecordMPEntry MP[4]; ///< From the array MP: the first 4 elements are read.
    unsigned int PRS;
    unsigned char PRE;
    unsigned char reserved0[1]; ///< Reserved: no parser writes these bytes.
    unsigned short AUPRT;
    unsigned short AUPOT;
    unsigned char reserved1[2]; ///< Reserved: no parser writes these bytes (tail padding to the 4-byte alignment).
};
BSCOMMON_RECORD_SIZE(tag_MsgRecordSetting, 28908);

/// One timed snapshot period ("TSP"[k]): start and end time of day, interval and the snapshot set
/// of each channel.
struct paramSnapTimedPeriod_t {
    unsigned char SH;
    unsigned char SM;
    unsigned char SS;
    unsigned char EH;
    unsigned char EM;
    unsigned char ES;
    unsigned char reserved0[2]; ///< Reserved: no parser writes these bytes.
    unsigned short I;
    unsigned char reserved1[6]; ///< Reserved: no parser writes these bytes.
    CommonSnapPara_t CSP[16]; ///< From the array CSP: the first 16 elements are read, by ParseCommonSnapPara().
};
BSCOMMON_RECORD_SIZE(paramSnapTimedPeriod_t, 400);

/// Manual ("MSP"), timed ("TSP") and interval ("ASP") snapshots. Section "PSNAP" (parameter type
/// 34, #PARA_SNAP), read by ParseSnapParamJson().
struct paramSnapSetting_t {
    unsigned char NE;
    unsigned char ITN;
    unsigned char reserved0[30]; ///< Reserved: no parser writes these bytes.
    CommonSnapPara_t MSP_CSP[16]; ///< From the array MSP.CSP: the first 16 elements are read, by ParseCommonSnapPara().
    paramSnapTimedPeriod_t TSP[8]; ///< From the array TSP: the first 8 elements are read.
    unsigned short ASP_I; ///< From ASP.I.
    unsigned char ST; ///< From ASP.ST. "ASP"."ST".
    unsigned char reserved1[1]; ///< Reserved: no parser writes these bytes.
    CommonSnapPara_t ASP_CSP[16]; ///< From the array ASP.CSP: the first 16 elements are read, by ParseCommonSnapPara().
};
BSCOMMON_RECORD_SIZE(paramSnapSetting_t, 4004);

/// Distance-triggered snapshots. Section "DSP" (parameter type 35, #PARA_DISTANCE_SNAP), read by
/// ParseDistanceSnapParamJson().
struct paramDistanceSnapSetting_t {
    unsigned int SD;
    unsigned char SU;
    unsigned char reserved0[31]; ///< Reserved: no parser writes these bytes.
    CommonSnapPara_t CSP[16]; ///< From the array CSP: the first 16 elements are read, by ParseCommonSnapPara().
};
BSCOMMON_RECORD_SIZE(paramDistanceSnapSetting_t, 420);

// Section parsers: they take the whole parameter document. -1 without writing
// or logging when the section is empty or absent, else 0.
/// Reads section "MAIN" of @p doc into @p record (parameter type 10, #PARA_MAIN_STREAM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseMainStreamParamJson(Json::Value const& doc, tag_MsgVideoEncodeSetting& record);
/// Reads section "AR" of @p doc into @p record (parameter type 11, #PARA_ASSIST_RECORD).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseAssistRecordParamJson(Json::Value const& doc, tag_MsgAssistRecordSetting& record);
/// Reads section "SUBSTRNET" of @p doc into @p record (parameter type 12, #PARA_NET_TRANSFER).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseNetTransferParamJson(Json::Value const& doc, tag_MsgNetTransferSetting& record);
/// Reads section "EOSD" of @p doc into @p record (parameter type 15, #PARA_ENCODE_OSD).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseEncodeOSDParamJson(Json::Value const& doc, tag_MsgEncodeOsdSetting& record);
/// Reads section "RP" of @p doc into @p record (parameter type 16, #PARA_RECORD).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseRecordParamJson(Json::Value const& doc, tag_MsgRecordSetting& record);
/// Reads section "PSNAP" of @p doc into @p record (parameter type 34, #PARA_SNAP).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseSnapParamJson(Json::Value const& doc, paramSnapSetting_t& record);
/// Reads section "DSP" of @p doc into @p record (parameter type 35, #PARA_DISTANCE_SNAP).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseDistanceSnapParamJson(Json::Value const& doc, paramDistanceSnapSetting_t& record);
/// Reads section "DOSD" of @p doc into @p record (parameter type 50, #PARA_VIEW_OSD).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseViewOsdParamJson(Json::Value const& doc, tag_MsgViewOsdSetting& record);

#endif
