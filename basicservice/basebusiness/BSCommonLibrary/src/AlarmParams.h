// Descriptions of the alarm sub-records and the event alarm records.
#ifndef ALARM_PARAMS_H
#define ALARM_PARAMS_H

#include "ParaAlarmRecords.h"
#include "ParaSteps.h"

// ---------------------------------------------------------------------------
// Alarm sub-records, each with the rules of its exported parser: the message
// logged for an empty object and how its result is made.

PARA_RECORD(alarmLinkRecord_t,
    PARA_FIELD(0, CH),
    PARA_FIELD(4, P),
    PARA_FIELD(6, D),
    PARA_FIELD(8, L),
    PARA_FIELD(9, ST),
    PARA_RESERVED(10, reserved0));
PARA_PARSER(ParseAlarmLinkRecord, alarmLinkRecord_t, .Empty("empty json when parse alarm link record!\n"))

PARA_RECORD(alarmLinkSnapShot,
    PARA_FIELD(0, EN),
    PARA_RESERVED(4, reserved0));
PARA_PARSER(ParseAlarmLinkSnapShot, alarmLinkSnapShot, .Empty("empty json when parse alarm link snap shot!\n"))

PARA_RECORD(alarmLinkOutput_t,
    PARA_FIELD(4, T),
    PARA_FIELD(0, ID),
    PARA_RESERVED(1, reserved0),
    PARA_RESERVED(6, reserved1));
PARA_PARSER(ParseAlarmLinkOutput, alarmLinkOutput_t, .Empty("empty json when parse alarm link output!\n"))

PARA_RECORD(alarmLinkProcess_t,
    PARA_FIELD(29, L),
    PARA_FIELD(28, SU),
    PARA_FIELD(31, SM),
    PARA_FIELD(48, ET),
    PARA_FIELD(30, DA),
    PARA_FIELD(50, ST),
    PARA_FIELD(52, ENBZ),
    PARA_FIELD(53, BZTY),
    PARA_FIELD(54, BZTI),
    PARA_FIELD(55, ENSP),
    PARA_ARRAY(32, CH),
    PARA_SUBRECORD(0, AR, ParseAlarmLinkRecord),
    PARA_SUBRECORD(12, SS, ParseAlarmLinkSnapShot),
    PARA_SUBRECORD(20, PS, ParseAlarmLinkOutput),
    PARA_RESERVED(56, reserved0));
// 1 when "AR", "SS" and "PS" are all empty or absent, else 0.
PARA_PARSER(ParseAlarmLinkProcess, alarmLinkProcess_t, .Empty("empty json when parse alarm link process!\n").FromParts())

PARA_RECORD(alarmPlanPeriod_t,
    PARA_FIELD(0, S),
    PARA_FIELD(4, E),
    PARA_RESERVED(8, reserved0));

// "I": up to 7 day arrays of up to 16 periods.
PARA_RECORD(alarmPlan_t,
    PARA_ARRAY(0, I));
// A schedule without "I" is empty too.
PARA_PARSER(ParseAlarmPlan, alarmPlan_t, .Empty("empty json when parse alarm plan!\n").Needs("I"))

PARA_RECORD(CommonSnapPara_t,
    PARA_FIELD(0, E),
    PARA_FIELD(1, R),
    PARA_FIELD(2, Q),
    PARA_RESERVED(3, reserved0),
    PARA_FIELD(6, N),
    PARA_FIELD(8, I),
    PARA_FIELD(12, U),
    PARA_RESERVED(16, reserved1));
// ("comman" is how the recorder has always spelt it.)
PARA_PARSER(ParseCommonSnapPara, CommonSnapPara_t, .Empty("empty json when parse comman snap para!\n"))

// ---------------------------------------------------------------------------
// Event alarm records.

PARA_RECORD(tag_msgAreaAlarmSetting,
    PARA_FIELD(0, MASK),
    PARA_FIELD(4, R),
    PARA_FIELD(6, LSTE),
    PARA_FIELD(7, SDT),
    PARA_FIELD(8, IOP),
    PARA_FIELD(9, ODT),
    PARA_FIELD(12, LDAC),
    PARA_FIELD(10, LDAI),
    PARA_RESERVED(13, reserved0));

PARA_RECORD(tag_MsgSpeedAlarmSetting,
    PARA_FIELD(0, EN),
    PARA_FIELD(1, AS),
    PARA_FIELD(2, SV),
    PARA_FIELD(3, UN),
    PARA_FIELD(4, SF),
    PARA_FIELD(5, AT),
    PARA_FIELD(6, VT),
    PARA_FIELD(7, NSV),
    PARA_TEXT(8, SPN),
    PARA_TEXT(40, OD),
    PARA_SUBRECORD(56, APR, ParseAlarmLinkProcess),
    PARA_SUBRECORD(124, AP, ParseAlarmPlan),
    PARA_RESERVED(1916, reserved0),
    PARA_FIELD(1932, NT),
    PARA_FIELD(1933, WP),
    PARA_FIELD(1934, WNT),
    PARA_FIELD(1935, WDT),
    PARA_RESERVED(1936, reserved1),
    PARA_FIELD(1937, SDT),
    PARA_FIELD(1938, ANI),
    PARA_FIELD(1940, ANC),
    PARA_FIELD(1941, WAT),
    PARA_FIELD(1942, WNC),
    PARA_FIELD(1943, NWNC),
    PARA_FIELD(1944, WNI),
    PARA_FIELD(1946, NWNI),
    PARA_FIELD(1948, NWT),
    PARA_FIELD(1950, NWS),
    PARA_FIELD(1951, NEN),
    PARA_FIELD(1952, LST),
    PARA_FIELD(1953, LSD),
    PARA_FIELD(1954, SPR),
    PARA_FIELD(1955, UI),
    PARA_FIELD(1956, LSS),
    PARA_RESERVED(1957, reserved2));

PARA_RECORD(tag_msgAreaLimitSetting,
    PARA_TEXT(0, RGVR),
    PARA_FIELD(16, ST),
    PARA_FIELD(17, FV),
    PARA_FIELD(18, LD),
    PARA_FIELD(19, TV),
    PARA_FIELD(20, YE),
    PARA_FIELD(21, MO),
    PARA_FIELD(22, DA),
    PARA_FIELD(23, HO),
    PARA_FIELD(24, MI),
    PARA_FIELD(25, SE));

PARA_RECORD(IOAlarmInput_t,
    PARA_FIELD(0, EN),
    PARA_FIELD(1, AS),
    PARA_FIELD(2, EL),
    PARA_FIELD(3, VT),
    PARA_FIELD(1928, TM),
    PARA_FIELD(1929, UT),
    PARA_FIELD(1930, SDT),
    PARA_TEXT(4, N),
    PARA_TEXT(36, S),
    PARA_SUBRECORD(52, APR, ParseAlarmLinkProcess),
    PARA_SUBRECORD(120, AP, ParseAlarmPlan),
    PARA_RESERVED(1912, reserved0),
    PARA_RESERVED(1931, reserved1));

// The "IOP" section is the array of inputs itself.
PARA_RECORD(tag_MsgIOAlarmSetting,
    PARA_RESERVED(0, reserved0),
    PARA_ARRAY_SELF(8, IOP));

PARA_RECORD(tag_MsgUrgentAlarmSetting,
    PARA_FIELD(0, EN),
    PARA_FIELD(1, AS),
    PARA_FIELD(2, T),
    PARA_FIELD(3, VT),
    PARA_RESERVED(4, reserved0),
    PARA_FIELD(1932, SDT),
    PARA_TEXT(8, UN),
    PARA_TEXT(40, UO),
    PARA_SUBRECORD(56, APR, ParseAlarmLinkProcess),
    PARA_SUBRECORD(124, AP, ParseAlarmPlan),
    PARA_RESERVED(1916, reserved1),
    PARA_RESERVED(1933, reserved2));

// ---------------------------------------------------------------------------
// Video-analysis alarms.

PARA_RECORD(MDAlarmEntry_t,
    PARA_FIELD(0, S),
    PARA_FIELD(54, KS),
    PARA_FIELD(55, SZ),
    PARA_FIELD(1, MAN),
    PARA_STEP(4, R, HexRegion, "R"),
    PARA_RESERVED(2, reserved0));

PARA_RECORD(tag_MsgMDAlarmSetting,
    PARA_FIELD(0, NE),
    PARA_FIELD(1, AS),
    PARA_FIELD(2, VT),
    PARA_FIELD(3, DT),
    PARA_RESERVED(4, reserved0),
    PARA_FIELD(56, CH),
    PARA_FIELD(2832, SDT),
    PARA_TEXT(8, MN),
    PARA_TEXT(40, MO),
    PARA_SUBRECORD(60, APR, ParseAlarmLinkProcess),
    PARA_SUBRECORD(128, AP, ParseAlarmPlan),
    PARA_RESERVED(1920, reserved1),
    PARA_ARRAY(1936, PMD),
    PARA_RESERVED(2833, reserved2));

PARA_RECORD(VSAlarmEntry_t,
    PARA_FIELD(0, S),
    PARA_RESERVED(1, reserved0));

// The video-signal entries are read before the linkage and the schedule.
PARA_RECORD(tag_MsgVSAlarmSetting,
    PARA_FIELD(0, NE),
    PARA_FIELD(1, AS),
    PARA_FIELD(2, VT),
    PARA_FIELD(3, DT),
    PARA_FIELD(4, AT),
    PARA_RESERVED(5, reserved0),
    PARA_FIELD(56, CH),
    PARA_FIELD(2064, SDT),
    PARA_TEXT(8, VN),
    PARA_TEXT(40, VO),
    PARA_ARRAY(1936, PVS),
    PARA_SUBRECORD(60, APR, ParseAlarmLinkProcess),
    PARA_SUBRECORD(128, AP, ParseAlarmPlan),
    PARA_RESERVED(1920, reserved1),
    PARA_RESERVED(2065, reserved2));

PARA_RECORD(tag_MsgVLAlarmSetting,
    PARA_FIELD(0, NE),
    PARA_FIELD(1, AS),
    PARA_FIELD(2, VT),
    PARA_RESERVED(3, reserved0), // no DT, no AT
    PARA_FIELD(56, CH),
    PARA_FIELD(1936, SDT),
    PARA_TEXT(8, VN),
    PARA_TEXT(40, LO),
    PARA_SUBRECORD(60, APR, ParseAlarmLinkProcess),
    PARA_SUBRECORD(128, AP, ParseAlarmPlan),
    PARA_RESERVED(1920, reserved1),
    PARA_RESERVED(1937, reserved2));

// ---------------------------------------------------------------------------
// Driving and parking time alarms.

PARA_RECORD(tag_MsgFatigueDriveAlarmSetting,
    PARA_FIELD(0, EN),
    PARA_FIELD(1, M),
    PARA_FIELD(4, TT),
    PARA_FIELD(8, RT),
    PARA_FIELD(12, DTT),
    PARA_FIELD(16, AT),
    PARA_FIELD(20, NTT),
    PARA_FIELD(24, NRT),
    PARA_FIELD(28, SS),
    PARA_FIELD(29, VDT),
    PARA_FIELD(2, SDT),
    PARA_FIELD(30, WRT),
    PARA_FIELD(31, ART),
    PARA_FIELD(32, WI),
    PARA_FIELD(34, AI),
    PARA_RESERVED(3, reserved0));

PARA_RECORD(tag_MsgTimeoutParkAlarmSetting,
    PARA_FIELD(0, EN),
    PARA_FIELD(4, AT),
    PARA_FIELD(1, SDT),
    PARA_RESERVED(2, reserved0));

#endif
