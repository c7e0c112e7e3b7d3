// Descriptions of the video, recording and snapshot records.
#ifndef VIDEO_PARAMS_H
#define VIDEO_PARAMS_H

#include "ParaVideoRecords.h"
#include "AlarmParams.h" // the description of CommonSnapPara_t
#include "ParaTable.h"

PARA_RECORD(tag_MsgVideoEncodeChannel,
    PARA_FIELD(0, BR),
    PARA_FIELD(4, VEN),
    PARA_FIELD(10, AEN),
    PARA_FIELD(6, FR),
    PARA_FIELD(7, QLT),
    PARA_FIELD(9, RST),
    PARA_FIELD(11, BRM),
    PARA_FIELD(5, FT),
    PARA_FIELD(8, ALT),
    PARA_FIELD(12, KFI),
    PARA_FIELD(14, LCN),
    PARA_FIELD(15, AFR),
    PARA_FIELD(16, AMT),
    PARA_FIELD(17, AST),
    PARA_FIELD(18, EPV),
    PARA_FIELD(19, ECT),
    PARA_RESERVED(20, reserved0));

// The section itself is the array of channels.
PARA_RECORD(tag_MsgVideoEncodeSetting,
    PARA_RESERVED(0, reserved0),
    PARA_ARRAY_SELF(8, MAIN));

PARA_RECORD(tag_MsgAssistRecordSetting,
    PARA_FIELD(0, EN),
    PARA_FIELD(1, HID),
    PARA_FIELD(2, RM),
    PARA_FIELD(3, CM),
    PARA_FIELD(4, MC),
    PARA_FIELD(8, MAC),
    PARA_FIELD(396, SSC),
    PARA_FIELD(400, DC),
    PARA_FIELD(404, HDAE),
    PARA_FIELD(408, ALH),
    PARA_ARRAY(12, VEC),
    PARA_RESERVED(409, reserved0));

PARA_RECORD(tag_MsgNetEncodeChannel,
    PARA_FIELD(0, BR),
    PARA_FIELD(4, VEN),
    PARA_FIELD(5, FT),
    PARA_FIELD(6, FR),
    PARA_FIELD(7, QLT),
    PARA_FIELD(8, RST),
    PARA_FIELD(9, AEN),
    PARA_FIELD(10, BRM),
    PARA_FIELD(12, KFI),
    PARA_FIELD(11, ECT),
    PARA_RESERVED(14, reserved0));

PARA_RECORD(tag_MsgNetTransferSetting,
    PARA_FIELD(0, TOTALBW),
    PARA_FIELD(4, SM),
    PARA_FIELD(5, SAE),
    PARA_FIELD(6, RLE),
    PARA_RESERVED(7, reserved0),
    PARA_ARRAY(16, NEC));

PARA_RECORD(tag_MsgEncodeOsdItem,
    PARA_FIELD(0, EN),
    PARA_FIELD(1, ID),
    PARA_FIELD(2, X),
    PARA_FIELD(4, Y),
    PARA_FIELD(6, F),
    PARA_TEXT(8, T),
    PARA_FIELD(7, L),
    PARA_FIELD(40, TP),
    PARA_RESERVED(41, reserved0));

PARA_RECORD(tag_MsgEncodeOsdChannel,
    PARA_FIELD(0, TE),
    PARA_FIELD(1, SE),
    PARA_FIELD(2, GE),
    PARA_FIELD(3, VE),
    PARA_FIELD(4, TX),
    PARA_FIELD(6, TY),
    PARA_FIELD(8, SX),
    PARA_FIELD(10, SY),
    PARA_FIELD(12, GX),
    PARA_FIELD(14, GY),
    PARA_FIELD(16, VX),
    PARA_FIELD(18, VY),
    PARA_FIELD(212, NE),
    PARA_FIELD(213, DE),
    PARA_FIELD(214, NX),
    PARA_FIELD(216, NY),
    PARA_FIELD(218, DX),
    PARA_FIELD(220, DY),
    PARA_FIELD(222, DTE),
    PARA_FIELD(223, WME),
    PARA_ARRAY(20, COSD),
    PARA_RESERVED(224, reserved0));

// The section itself is the array of channels.
PARA_RECORD(tag_MsgEncodeOsdSetting,
    PARA_RESERVED(0, reserved0),
    PARA_ARRAY_SELF(8, EOSD));

PARA_RECORD(tag_MsgViewOsdPosition,
    PARA_FIELD(0, X),
    PARA_FIELD(2, Y));

PARA_RECORD(tag_MsgViewOsdSetting,
    PARA_FIELD(0, TE),
    PARA_FIELD(1, SE),
    PARA_FIELD(2, VE),
    PARA_FIELD(3, GE),
    PARA_FIELD(4, AE),
    PARA_FIELD(5, NE),
    PARA_FIELD(6, DE),
    PARA_FIELD(519, ACCE),
    PARA_FIELD(520, SOEM),
    PARA_FIELD(523, REN),
    PARA_FIELD(521, COE1),
    PARA_FIELD(522, COE2),
    PARA_TEXTS(7, CHN), // each element is the name itself
    PARA_ARRAY(524, OP));

// A snapshot set ("CSP") is an array of 16 objects, each read by the
// snapshot parser: what ParseNCommonSnapPara<16> does.
PARA_RECORD(paramSnapTimedPeriod_t,
    PARA_FIELD(0, SH),
    PARA_FIELD(1, SM),
    PARA_FIELD(2, SS),
    PARA_FIELD(3, EH),
    PARA_FIELD(4, EM),
    PARA_FIELD(5, ES),
    PARA_RESERVED(6, reserved0),
    PARA_FIELD(8, I),
    PARA_RESERVED(10, reserved1),
    PARA_SUBRECORD(16, CSP, ParseCommonSnapPara));

PARA_RECORD(paramSnapSetting_t,
    PARA_FIELD(0, NE),
    PARA_FIELD(1, ITN),
    PARA_RESERVED(2, reserved0),
    PARA_GROUP("MSP"),
        PARA_SUBRECORD_KEY(32, MSP_CSP, "CSP", ParseCommonSnapPara),
    PARA_END_GROUP(),
    PARA_ARRAY(416, TSP),
    PARA_GROUP("ASP"),
        PARA_FIELD_KEY(3616, ASP_I, "I"),
        PARA_FIELD(3618, ST),
        PARA_SUBRECORD_KEY(3620, ASP_CSP, "CSP", ParseCommonSnapPara),
    PARA_END_GROUP(),
    PARA_RESERVED(3619, reserved1));

PARA_RECORD(paramDistanceSnapSetting_t,
    PARA_FIELD(0, SD),
    PARA_FIELD(4, SU),
    PARA_RESERVED(5, reserved0),
    PARA_SUBRECORD(36, CSP, ParseCommonSnapPara));


PARA_RECORD(tag_MsgRecordPeriod,
    PARA_FIELD(0, S),
    PARA_FIELD(4, E),
    PARA_FIELD(8, T),
    PARA_RESERVED(9, reserved0));

PARA_RECORD(tag_MsgRecordChannel,
    PARA_FIELD(1792, RM),
    PARA_RESERVED(1793, reserved0),
    PARA_FIELD(1794, RP),
    PARA_ARRAY(0, RSI),
    PARA_RESERVED(1796, reserved1));

PARA_RECORD(tag_MsgRecordMPEntry,
    PARA_FIELD(0, OLD),
    PARA_FIELD(1, OT),
    PARA_FIELD(2, OVD),
    PARA_RESERVED(3, reserved0));

PARA_RECORD(tag_MsgRecordSetting,
    PARA_FIELD(28896, PRS),
    PARA_FIELD(28900, PRE),
    PARA_RESERVED(28901, reserved0),
    PARA_FIELD(28902, AUPRT),
    PARA_FIELD(28904, AUPOT),
    PARA_ARRAY(0, RCP),
    PARA_ARRAY(28864, MP),
    PARA_RESERVED(28906, reserved1));

#endif
