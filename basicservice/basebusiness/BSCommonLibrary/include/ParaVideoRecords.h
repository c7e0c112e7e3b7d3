// Video, recording and snapshot parameter records and their parsers. Offsets
// and sizes are those of the 32-bit ARM recorder and are checked at compile
// time.
#ifndef PARA_VIDEO_RECORDS_H
#define PARA_VIDEO_RECORDS_H

#include "BSCommonExport.h"
#include "ParaAlarmRecords.h" // CommonSnapPara_t of the snapshot sets

#include <json/value.h>

// Main-stream encoding of one video channel ("MAIN"[i]).
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
    unsigned char reserved0[4];
};
BSCOMMON_RECORD_SIZE(tag_MsgVideoEncodeChannel, 24);

// "MAIN": an array with one object per channel. The parser never writes the
// first 8 bytes.
struct tag_MsgVideoEncodeSetting {
    unsigned char reserved0[8];
    tag_MsgVideoEncodeChannel MAIN[16];
};
BSCOMMON_RECORD_SIZE(tag_MsgVideoEncodeSetting, 392);

// "AR": assist (secondary) recording; "VEC" holds one main-stream style
// encoding entry per channel.
struct tag_MsgAssistRecordSetting {
    unsigned char EN;
    unsigned char HID;
    unsigned char RM;
    unsigned char CM;
    unsigned int MC;
    unsigned int MAC;
    tag_MsgVideoEncodeChannel VEC[16];
    unsigned int SSC;
    unsigned int DC;
    unsigned int HDAE;
    unsigned char ALH;
    unsigned char reserved0[3]; // tail padding to the 4-byte alignment
};
BSCOMMON_RECORD_SIZE(tag_MsgAssistRecordSetting, 412);

// Network (sub-stream) encoding of one channel ("NEC"[i]). Shorter than the
// main-stream entry, and RST, AEN, BRM and ECT sit elsewhere.
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
    unsigned char reserved0[6];
};
BSCOMMON_RECORD_SIZE(tag_MsgNetEncodeChannel, 20);

// "SUBSTRNET": network transfer, a total bandwidth and 16 channels.
struct tag_MsgNetTransferSetting {
    unsigned int TOTALBW;
    unsigned char SM;
    unsigned char SAE;
    unsigned char RLE;
    unsigned char reserved0[9];
    tag_MsgNetEncodeChannel NEC[16];
};
BSCOMMON_RECORD_SIZE(tag_MsgNetTransferSetting, 336);

// One free text overlay of an encoded channel ("COSD"[k]).
struct tag_MsgEncodeOsdItem {
    unsigned char EN;
    unsigned char ID;
    unsigned short X;
    unsigned short Y;
    unsigned char F;
    unsigned char L;
    char T[32];
    unsigned char TP;
    unsigned char reserved0[7];
};
BSCOMMON_RECORD_SIZE(tag_MsgEncodeOsdItem, 48);

// Overlays burnt into one channel's encoded video ("EOSD"[i]): each fixed item
// has an enable flag (xE) and a position (xX, xY).
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
    tag_MsgEncodeOsdItem COSD[4];
    unsigned char NE;
    unsigned char DE;
    unsigned short NX;
    unsigned short NY;
    unsigned short DX;
    unsigned short DY;
    unsigned char DTE;
    unsigned char WME;
    unsigned char reserved0[8];
};
BSCOMMON_RECORD_SIZE(tag_MsgEncodeOsdChannel, 232);

// "EOSD": an array with one object per channel. The parser never writes the
// first 8 bytes.
struct tag_MsgEncodeOsdSetting {
    unsigned char reserved0[8];
    tag_MsgEncodeOsdChannel EOSD[16];
};
BSCOMMON_RECORD_SIZE(tag_MsgEncodeOsdSetting, 3720);

// A position on the display ("OP"[m]).
struct tag_MsgViewOsdPosition {
    unsigned short X;
    unsigned short Y;
};
BSCOMMON_RECORD_SIZE(tag_MsgViewOsdPosition, 4);

// "DOSD": display overlays. The flags run TE, SE, VE, GE here, unlike the
// encoded overlays' TE, SE, GE, VE.
struct tag_MsgViewOsdSetting {
    unsigned char TE;
    unsigned char SE;
    unsigned char VE;
    unsigned char GE;
    unsigned char AE;
    unsigned char NE;
    unsigned char DE;
    char CHN[32][16]; // channel names
    unsigned char ACCE;
    unsigned char SOEM;
    unsigned char COE1;
    unsigned char COE2;
    unsigned char REN;
    tag_MsgViewOsdPosition OP[12];
};
BSCOMMON_RECORD_SIZE(tag_MsgViewOsdSetting, 572);

// One recording period of a day ("RSI"[d][p]).
struct tag_MsgRecordPeriod {
    unsigned int S;
    unsigned int E;
    unsigned char T;
    unsigned char reserved0[7];
};
BSCOMMON_RECORD_SIZE(tag_MsgRecordPeriod, 16);

// Recording of one channel ("RCP"[i]): a weekly table of 7 days x 16 periods.
struct tag_MsgRecordChannel {
    tag_MsgRecordPeriod RSI[7][16];
    unsigned char RM;
    unsigned char reserved0[1];
    unsigned short RP;
    unsigned char reserved1[8];
};
BSCOMMON_RECORD_SIZE(tag_MsgRecordChannel, 1804);

// One entry of the "MP" list.
struct tag_MsgRecordMPEntry {
    unsigned char OLD;
    unsigned char OT;
    unsigned char OVD;
    unsigned char reserved0[5];
};
BSCOMMON_RECORD_SIZE(tag_MsgRecordMPEntry, 8);

// "RP": recording of 16 channels.
struct tag_MsgRecordSetting {
    tag_MsgRecordChannel RCP[16];
    tag_MsgRecordMPEntry MP[4];
    unsigned int PRS;
    unsigned char PRE;
    unsigned char reserved0[1];
    unsigned short AUPRT;
    unsigned short AUPOT;
    unsigned char reserved1[2]; // tail padding to the 4-byte alignment
};
BSCOMMON_RECORD_SIZE(tag_MsgRecordSetting, 28908);

// One timed snapshot period ("TSP"[k]): start and end time of day, interval
// and the snapshot set of each channel.
struct paramSnapTimedPeriod_t {
    unsigned char SH;
    unsigned char SM;
    unsigned char SS;
    unsigned char EH;
    unsigned char EM;
    unsigned char ES;
    unsigned char reserved0[2];
    unsigned short I;
    unsigned char reserved1[6];
    CommonSnapPara_t CSP[16];
};
BSCOMMON_RECORD_SIZE(paramSnapTimedPeriod_t, 400);

// "PSNAP": manual ("MSP"), timed ("TSP") and interval ("ASP") snapshots.
struct paramSnapSetting_t {
    unsigned char NE;
    unsigned char ITN;
    unsigned char reserved0[30];
    CommonSnapPara_t MSP_CSP[16];
    paramSnapTimedPeriod_t TSP[8];
    unsigned short ASP_I;
    unsigned char ST; // "ASP"."ST"
    unsigned char reserved1[1];
    CommonSnapPara_t ASP_CSP[16];
};
BSCOMMON_RECORD_SIZE(paramSnapSetting_t, 4004);

// "DSP": distance-triggered snapshots.
struct paramDistanceSnapSetting_t {
    unsigned int SD;
    unsigned char SU;
    unsigned char reserved0[31];
    CommonSnapPara_t CSP[16];
};
BSCOMMON_RECORD_SIZE(paramDistanceSnapSetting_t, 420);

// Section parsers: they take the whole parameter document. -1 without writing
// or logging when the section is empty or absent, else 0.
BSCOMMON_API int ParseMainStreamParamJson(Json::Value const& doc, tag_MsgVideoEncodeSetting& record);
BSCOMMON_API int ParseAssistRecordParamJson(Json::Value const& doc, tag_MsgAssistRecordSetting& record);
BSCOMMON_API int ParseNetTransferParamJson(Json::Value const& doc, tag_MsgNetTransferSetting& record);
BSCOMMON_API int ParseEncodeOSDParamJson(Json::Value const& doc, tag_MsgEncodeOsdSetting& record);
BSCOMMON_API int ParseRecordParamJson(Json::Value const& doc, tag_MsgRecordSetting& record);
BSCOMMON_API int ParseSnapParamJson(Json::Value const& doc, paramSnapSetting_t& record);
BSCOMMON_API int ParseDistanceSnapParamJson(Json::Value const& doc, paramDistanceSnapSetting_t& record);
BSCOMMON_API int ParseViewOsdParamJson(Json::Value const& doc, tag_MsgViewOsdSetting& record);

#endif
