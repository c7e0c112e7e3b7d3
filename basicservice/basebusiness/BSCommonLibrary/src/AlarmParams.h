// Descriptions of the alarm sub-records and the event alarm records.
#ifndef ALARM_PARAMS_H
#define ALARM_PARAMS_H

#include "ParaAlarmRecords.h"
#include "ParaDescribe.h"

namespace para {

// ---------------------------------------------------------------------------
// Alarm sub-records. The exported parsers check for an empty object, log and
// compose their results; the descriptions say which key fills which field.

template <class W> void Describe(W& w, alarmLinkRecord_t& r)
{
    PARA_FIELD(0, CH);
    PARA_FIELD(4, P);
    PARA_FIELD(6, D);
    PARA_FIELD(8, L);
    PARA_FIELD(9, ST);
    PARA_RESERVED(10, reserved0);
}

template <class W> void Describe(W& w, alarmLinkSnapShot& r)
{
    PARA_FIELD(0, EN);
    PARA_RESERVED(4, reserved0);
}

template <class W> void Describe(W& w, alarmLinkOutput_t& r)
{
    PARA_FIELD(4, T);
    PARA_FIELD(0, ID);
    PARA_RESERVED(1, reserved0);
    PARA_RESERVED(6, reserved1);
}

template <class W> void Describe(W& w, alarmLinkProcess_t& r)
{
    PARA_FIELD(29, L);
    PARA_FIELD(28, SU);
    PARA_FIELD(31, SM);
    PARA_FIELD(48, ET);
    PARA_FIELD(30, DA);
    PARA_FIELD(50, ST);
    PARA_FIELD(52, ENBZ);
    PARA_FIELD(53, BZTY);
    PARA_FIELD(54, BZTI);
    PARA_FIELD(55, ENSP);
    PARA_ARRAY(32, CH);
    PARA_SUBRECORD(0, AR, ParseAlarmLinkRecord);
    PARA_SUBRECORD(12, SS, ParseAlarmLinkSnapShot);
    PARA_SUBRECORD(20, PS, ParseAlarmLinkOutput);
    PARA_RESERVED(56, reserved0);
}

template <class W> void Describe(W& w, alarmPlanPeriod_t& r)
{
    PARA_FIELD(0, S);
    PARA_FIELD(4, E);
    PARA_RESERVED(8, reserved0);
}

// "I": up to 7 day arrays of up to 16 periods.
template <class W> void Describe(W& w, alarmPlan_t& r) { PARA_ARRAY(0, I); }

template <class W> void Describe(W& w, CommonSnapPara_t& r)
{
    PARA_FIELD(0, E);
    PARA_FIELD(1, R);
    PARA_FIELD(2, Q);
    PARA_RESERVED(3, reserved0);
    PARA_FIELD(6, N);
    PARA_FIELD(8, I);
    PARA_FIELD(12, U);
    PARA_RESERVED(16, reserved1);
}

// ---------------------------------------------------------------------------
// Event alarm records.

template <class W> void Describe(W& w, tag_msgAreaAlarmSetting& r)
{
    PARA_FIELD(0, MASK);
    PARA_FIELD(4, R);
    PARA_FIELD(6, LSTE);
    PARA_FIELD(7, SDT);
    PARA_FIELD(8, IOP);
    PARA_FIELD(9, ODT);
    PARA_FIELD(12, LDAC);
    PARA_FIELD(10, LDAI);
    PARA_RESERVED(13, reserved0);
}

template <class W> void Describe(W& w, tag_MsgSpeedAlarmSetting& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, SV);
    PARA_FIELD(3, UN);
    PARA_FIELD(4, SF);
    PARA_FIELD(5, AT);
    PARA_FIELD(6, VT);
    PARA_FIELD(7, NSV);
    PARA_TEXT(8, SPN);
    PARA_TEXT(40, OD);
    PARA_SUBRECORD(56, APR, ParseAlarmLinkProcess);
    PARA_SUBRECORD(124, AP, ParseAlarmPlan);
    PARA_RESERVED(1916, reserved0);
    PARA_FIELD(1932, NT);
    PARA_FIELD(1933, WP);
    PARA_FIELD(1934, WNT);
    PARA_FIELD(1935, WDT);
    PARA_RESERVED(1936, reserved1);
    PARA_FIELD(1937, SDT);
    PARA_FIELD(1938, ANI);
    PARA_FIELD(1940, ANC);
    PARA_FIELD(1941, WAT);
    PARA_FIELD(1942, WNC);
    PARA_FIELD(1943, NWNC);
    PARA_FIELD(1944, WNI);
    PARA_FIELD(1946, NWNI);
    PARA_FIELD(1948, NWT);
    PARA_FIELD(1950, NWS);
    PARA_FIELD(1951, NEN);
    PARA_FIELD(1952, LST);
    PARA_FIELD(1953, LSD);
    PARA_FIELD(1954, SPR);
    PARA_FIELD(1955, UI);
    PARA_FIELD(1956, LSS);
    PARA_RESERVED(1957, reserved2);
}

template <class W> void Describe(W& w, tag_msgAreaLimitSetting& r)
{
    PARA_TEXT(0, RGVR);
    PARA_FIELD(16, ST);
    PARA_FIELD(17, FV);
    PARA_FIELD(18, LD);
    PARA_FIELD(19, TV);
    PARA_FIELD(20, YE);
    PARA_FIELD(21, MO);
    PARA_FIELD(22, DA);
    PARA_FIELD(23, HO);
    PARA_FIELD(24, MI);
    PARA_FIELD(25, SE);
}

template <class W> void Describe(W& w, IOAlarmInput_t& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, EL);
    PARA_FIELD(3, VT);
    PARA_FIELD(1928, TM);
    PARA_FIELD(1929, UT);
    PARA_FIELD(1930, SDT);
    PARA_TEXT(4, N);
    PARA_TEXT(36, S);
    PARA_SUBRECORD(52, APR, ParseAlarmLinkProcess);
    PARA_SUBRECORD(120, AP, ParseAlarmPlan);
    PARA_RESERVED(1912, reserved0);
    PARA_RESERVED(1931, reserved1);
}

// The "IOP" section is the array of inputs itself.
template <class W> void Describe(W& w, tag_MsgIOAlarmSetting& r)
{
    PARA_RESERVED(0, reserved0);
    PARA_ARRAY_SELF(8, IOP);
}

template <class W> void Describe(W& w, tag_MsgUrgentAlarmSetting& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, T);
    PARA_FIELD(3, VT);
    PARA_RESERVED(4, reserved0);
    PARA_FIELD(1932, SDT);
    PARA_TEXT(8, UN);
    PARA_TEXT(40, UO);
    PARA_SUBRECORD(56, APR, ParseAlarmLinkProcess);
    PARA_SUBRECORD(124, AP, ParseAlarmPlan);
    PARA_RESERVED(1916, reserved1);
    PARA_RESERVED(1933, reserved2);
}

} // namespace para

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_ALARM(X)                                                           \
    X(2, "AREA", ParseAreaAlarmParamJson, tag_msgAreaAlarmSetting)                    \
    X(6, "SAP", ParseSpeedAlarmParamJson, tag_MsgSpeedAlarmSetting)                   \
    X(7, "ARLM", ParseAreaLimitParamJson, tag_msgAreaLimitSetting)                    \
    X(14, "IOP", ParseIOAlarmParamJson, tag_MsgIOAlarmSetting)                        \
    X(33, "UAP", ParseUrgentAlarmParamJson, tag_MsgUrgentAlarmSetting)

#endif
