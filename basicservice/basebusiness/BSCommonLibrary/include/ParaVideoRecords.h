// Video, recording and snapshot parameter records and their parsers. Offsets
// and sizes are those of the 32-bit ARM recorder and are checked at compile
// time.
#ifndef PARA_VIDEO_RECORDS_H
#define PARA_VIDEO_RECORDS_H

#include "BSCommonExport.h"

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

BSCOMMON_API int ParseMainStreamParamJson(Json::Value const& doc, tag_MsgVideoEncodeSetting& record);
BSCOMMON_API int ParseRecordParamJson(Json::Value const& doc, tag_MsgRecordSetting& record);

#endif
