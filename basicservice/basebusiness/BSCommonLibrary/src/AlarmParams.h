// Descriptions of the alarm sub-records and the event alarm records.
#ifndef ALARM_PARAMS_H
#define ALARM_PARAMS_H

#include "ParaAlarmRecords.h"
#include "ParaSteps.h"

#include <cstdio>
#include <string>

namespace para {

// A region of N bytes given as hexadecimal text under `key`, two digits a
// byte, packed by ParseMDRegion. The text is read as texts are, at most
// 2N + 2 bytes into a zero-filled scratch buffer, and the first 2N positions
// are packed: a shorter text ends in zero bytes (its terminator and the zero
// fill pack as nibble 0), characters after the 2N-th are ignored.
template <size_t N> struct HexRegion {
    static constexpr Kind kind = Kind::Hex; // shown as the text it packs back to
    const char* key;

    void Read(const Json::Value& object, unsigned char (&dst)[N]) const
    {
        char text[2 * N + 20] = {};
        GetJsonCString(Member(object, key), text, int(2 * N + 2));
        ParseMDRegion(text, int(2 * N), reinterpret_cast<char*>(dst), int(N));
    }
    const char* Keys() const { return key; }

    // For the inspector: a text that does not pack back to itself.
    template <class Report> void Check(const Json::Value& object, Report report) const
    {
        const Json::Value& value = Member(object, key);
        if (value.isNull() || ReportIfNotText(value, key, report, std::to_string(N).append(" zero bytes").c_str()))
            return;
        const char* begin = nullptr;
        const char* end = nullptr;
        value.getString(&begin, &end);
        const size_t length = begin ? size_t(end - begin) : 0;
        unsigned char stored[N] = {};
        Read(object, stored);
        const size_t digits = length < 2 * N ? length : 2 * N;
        size_t wrong = 0, first = 0;
        for (size_t i = digits; i-- > 0;)
            if (!IsHexDigit(begin[i])) {
                ++wrong;
                first = i;
            }
        if (wrong)
            report(key, (wrong == 1 ? std::string("character ") : std::to_string(wrong) + " characters are not "
                                                                   "hexadecimal digits, the first ") +
                            Shown(begin[first]) + " at " + std::to_string(first) +
                            (wrong == 1 ? " is not a hexadecimal digit" : "") + ": byte " +
                            std::to_string(first / 2) + " stores " + Byte(stored[first / 2]));
        if (length > 2 * N)
            report(key, "text of " + std::to_string(length) + " characters: only the first " + std::to_string(2 * N) +
                            " digits are packed into the " + std::to_string(N) + "-byte region");
        else if (length % 2)
            report(key, "odd number of digits (" + std::to_string(length) + "): the last one is the high nibble of byte " +
                            std::to_string(length / 2) + ", which stores " + Byte(stored[length / 2]));
    }

    // The inverse: upper-case text of all N bytes, which packs back to them.
    void Write(const unsigned char (&src)[N], Json::Value& object) const
    {
        static const char kDigits[] = "0123456789ABCDEF";
        std::string text;
        for (unsigned char byte : src) {
            text += kDigits[byte >> 4];
            text += kDigits[byte & 0x0F];
        }
        object[key] = text;
    }

private:
    static bool IsHexDigit(char c)
    {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
    }
    static std::string Byte(unsigned char byte)
    {
        char text[8];
        std::snprintf(text, sizeof text, "0x%02X", byte);
        return text;
    }
    static std::string Shown(char c)
    {
        if (c >= 0x20 && c < 0x7F)
            return std::string("'") + c + "'";
        char text[8];
        std::snprintf(text, sizeof text, "\\x%02X", static_cast<unsigned char>(c));
        return text;
    }
};

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

// ---------------------------------------------------------------------------
// Video-analysis alarms.

template <class W> void Describe(W& w, MDAlarmEntry_t& r)
{
    PARA_FIELD(0, S);
    PARA_FIELD(54, KS);
    PARA_FIELD(55, SZ);
    PARA_FIELD(1, MAN);
    PARA_CUSTOM(4, R, HexRegion<50>{"R"});
    PARA_RESERVED(2, reserved0);
}

template <class W> void Describe(W& w, tag_MsgMDAlarmSetting& r)
{
    PARA_FIELD(0, NE);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, VT);
    PARA_FIELD(3, DT);
    PARA_RESERVED(4, reserved0);
    PARA_FIELD(56, CH);
    PARA_FIELD(2832, SDT);
    PARA_TEXT(8, MN);
    PARA_TEXT(40, MO);
    PARA_SUBRECORD(60, APR, ParseAlarmLinkProcess);
    PARA_SUBRECORD(128, AP, ParseAlarmPlan);
    PARA_RESERVED(1920, reserved1);
    PARA_ARRAY(1936, PMD);
    PARA_RESERVED(2833, reserved2);
}

template <class W> void Describe(W& w, VSAlarmEntry_t& r)
{
    PARA_FIELD(0, S);
    PARA_RESERVED(1, reserved0);
}

// The video-signal entries are read before the linkage and the schedule.
template <class W> void Describe(W& w, tag_MsgVSAlarmSetting& r)
{
    PARA_FIELD(0, NE);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, VT);
    PARA_FIELD(3, DT);
    PARA_FIELD(4, AT);
    PARA_RESERVED(5, reserved0);
    PARA_FIELD(56, CH);
    PARA_FIELD(2064, SDT);
    PARA_TEXT(8, VN);
    PARA_TEXT(40, VO);
    PARA_ARRAY(1936, PVS);
    PARA_SUBRECORD(60, APR, ParseAlarmLinkProcess);
    PARA_SUBRECORD(128, AP, ParseAlarmPlan);
    PARA_RESERVED(1920, reserved1);
    PARA_RESERVED(2065, reserved2);
}

template <class W> void Describe(W& w, tag_MsgVLAlarmSetting& r)
{
    PARA_FIELD(0, NE);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, VT);
    PARA_RESERVED(3, reserved0); // no DT, no AT
    PARA_FIELD(56, CH);
    PARA_FIELD(1936, SDT);
    PARA_TEXT(8, VN);
    PARA_TEXT(40, LO);
    PARA_SUBRECORD(60, APR, ParseAlarmLinkProcess);
    PARA_SUBRECORD(128, AP, ParseAlarmPlan);
    PARA_RESERVED(1920, reserved1);
    PARA_RESERVED(1937, reserved2);
}

// ---------------------------------------------------------------------------
// Driving and parking time alarms.

template <class W> void Describe(W& w, tag_MsgFatigueDriveAlarmSetting& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, M);
    PARA_FIELD(4, TT);
    PARA_FIELD(8, RT);
    PARA_FIELD(12, DTT);
    PARA_FIELD(16, AT);
    PARA_FIELD(20, NTT);
    PARA_FIELD(24, NRT);
    PARA_FIELD(28, SS);
    PARA_FIELD(29, VDT);
    PARA_FIELD(2, SDT);
    PARA_FIELD(30, WRT);
    PARA_FIELD(31, ART);
    PARA_FIELD(32, WI);
    PARA_FIELD(34, AI);
    PARA_RESERVED(3, reserved0);
}

template <class W> void Describe(W& w, tag_MsgTimeoutParkAlarmSetting& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(4, AT);
    PARA_FIELD(1, SDT);
    PARA_RESERVED(2, reserved0);
}

} // namespace para

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_ALARM(X)                                                           \
    X(2, "AREA", ParseAreaAlarmParamJson, tag_msgAreaAlarmSetting)                    \
    X(6, "SAP", ParseSpeedAlarmParamJson, tag_MsgSpeedAlarmSetting)                   \
    X(7, "ARLM", ParseAreaLimitParamJson, tag_msgAreaLimitSetting)                    \
    X(14, "IOP", ParseIOAlarmParamJson, tag_MsgIOAlarmSetting)                        \
    X(30, "PMDAS", ParseMDAlarmParamJson, tag_MsgMDAlarmSetting)                      \
    X(31, "PVSAS", ParseVSAlarmParamJson, tag_MsgVSAlarmSetting)                      \
    X(32, "PVLAS", ParseVLAlarmParamJson, tag_MsgVLAlarmSetting)                      \
    X(33, "UAP", ParseUrgentAlarmParamJson, tag_MsgUrgentAlarmSetting)                \
    X(42, "FDAS", ParseFatigueDriveAlarmParamJson, tag_MsgFatigueDriveAlarmSetting)   \
    X(43, "TPAS", ParseTimeoutParkAlarmParamJson, tag_MsgTimeoutParkAlarmSetting)

#endif
