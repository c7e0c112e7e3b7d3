// Descriptions of the device and system parameter records.
#ifndef DEVICE_PARAMS_H
#define DEVICE_PARAMS_H

#include "ParaDeviceRecords.h"
#include "ParaDescribe.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace para {

// Two JSON numbers packed into one byte: the first shifted into the high
// nibble (only its low 4 bits survive), the second's low 4 bits below it.
// `keys` lists the keys read, comma-separated, as every step's Keys() does.
struct PackNibbles {
    const char* high;
    const char* low;
    const char* keys;

    void Read(const Json::Value& object, unsigned char& dst) const
    {
        unsigned char hi = 0, lo = 0;
        GetJsonIntegral(Member(object, high), hi, static_cast<unsigned char>(0));
        GetJsonIntegral(Member(object, low), lo, static_cast<unsigned char>(0));
        dst = static_cast<unsigned char>((hi << 4) | (lo & 0x0F));
    }
    const char* Keys() const { return keys; }

    // For the inspector: report(key, what) for each value that loses bits.
    template <class Report> void Check(const Json::Value& object, Report report) const
    {
        for (const char* key : {high, low}) {
            unsigned char v = 0;
            if (GetJsonIntegral(Member(object, key), v, static_cast<unsigned char>(0)) == 0 && v > 0x0F)
                report(key, "only the low 4 bits of " + std::to_string(v) + " are packed: stores " +
                                std::to_string(v & 0x0F));
        }
    }
};

// A text value read into a fixed buffer of N bytes, as the parsers read
// texts, plus one byte that keeps it terminated when the text fills the
// buffer: conversions of it never read past the buffer.
template <size_t N> struct BoundedText {
    char text[N + 1] = {};
    explicit BoundedText(const Json::Value& value) { GetJsonCString(value, text, int(N)); }
};

// Reports a value of another JSON type where a conversion step reads text.
template <class Report> bool ReportIfNotText(const Json::Value& value, const char* key, Report& report,
                                             const char* stores)
{
    if (value.isNull() || value.isString())
        return false;
    report(key, std::string("not text: stores ") + stores);
    return true;
}

// A MAC address given as text, "00:1A:2B:3C:4D:5E" (either case), into six
// bytes. Groups after the first that does not match stay 0; a value that is
// no text gives six zeros.
struct MacText {
    const char* key;

    // The six groups of the text (those not matched stay 0); returns how many matched.
    int Scan(const Json::Value& object, unsigned int (&group)[6]) const
    {
        BoundedText<20> mac(Member(object, key));
        const int matched = std::sscanf(mac.text, "%02X:%02X:%02X:%02X:%02X:%02X", &group[0], &group[1],
                                        &group[2], &group[3], &group[4], &group[5]);
        return matched < 0 ? 0 : matched;
    }

    void Read(const Json::Value& object, unsigned char (&dst)[6]) const
    {
        unsigned int group[6] = {};
        Scan(object, group);
        for (int i = 0; i < 6; ++i)
            dst[i] = static_cast<unsigned char>(group[i] & 0xFFu);
    }
    const char* Keys() const { return key; }

    // For the inspector: report(key, what) where the text loses something.
    template <class Report> void Check(const Json::Value& object, Report report) const
    {
        const Json::Value& value = Member(object, key);
        if (value.isNull() || ReportIfNotText(value, key, report, "six zero bytes"))
            return;
        unsigned int group[6] = {};
        const int matched = Scan(object, group);
        if (matched < 6)
            report(key, "text holds " + std::to_string(matched) + " of 6 hexadecimal groups: the other bytes store 0");
    }
};

// A double truncated toward zero into 32 bits without undefined behaviour:
// negative and NaN give 0, values beyond the range give the largest one.
inline unsigned int TruncateToU32(double value)
{
    if (!(value > 0.0))
        return 0;
    if (value >= 4294967296.0)
        return 0xFFFFFFFFu;
    return static_cast<unsigned int>(value);
}

// A voltage given as decimal text in volts ("11.5"), stored in hundredths
// (1150) and kept to 16 bits. A JSON number is no text and gives 0.
struct VoltageText {
    const char* key;

    unsigned int Hundredths(const Json::Value& object) const
    {
        BoundedText<16> volts(Member(object, key));
        return TruncateToU32(std::atof(volts.text) * 100.0);
    }

    void Read(const Json::Value& object, unsigned short& dst) const
    {
        dst = static_cast<unsigned short>(Hundredths(object) & 0xFFFFu);
    }
    const char* Keys() const { return key; }

    template <class Report> void Check(const Json::Value& object, Report report) const
    {
        const Json::Value& value = Member(object, key);
        if (value.isNull() || ReportIfNotText(value, key, report, "0"))
            return;
        const unsigned int hundredths = Hundredths(object);
        if (hundredths > 0xFFFFu)
            report(key, std::to_string(hundredths) + " hundredths of a volt do not fit 16 bits: stores " +
                            std::to_string(hundredths & 0xFFFFu));
    }
};

template <class W> void Describe(W& w, tag_MsgAdjustTimeSetting& r)
{
    PARA_FIELD(0, GE);
    PARA_FIELD(1, NE);
    PARA_FIELD(2, CE);
    PARA_FIELD(3, SID);
    PARA_FIELD(68, NAI);
    PARA_TEXT(4, NS);
}

template <class W> void Describe(W& w, tag_MsgTimeSetting& r)
{
    PARA_FIELD(0, DATEM);
    PARA_FIELD(1, TIMEM);
    PARA_RESERVED(2, reserved0);
    PARA_TEXT(4, TIMEZ);
    PARA_FIELD(20, TIMEOFFSET);
    PARA_GROUP("DST",
        PARA_FIELD(24, SW);
        PARA_FIELD(25, DSTM);
        PARA_FIELD(26, DSTS);
        PARA_RESERVED(27, reserved1);
        PARA_FIELD(32, SMON);
        PARA_CUSTOM(33, SWEEK_SWIND, (PackNibbles{"SWEEK", "SWIND", "SWEEK,SWIND"}));
        PARA_FIELD(36, SH);
        PARA_FIELD(37, SM);
        PARA_FIELD(38, SS);
        PARA_FIELD(34, EMON);
        PARA_CUSTOM(35, EWEEK_EWIND, (PackNibbles{"EWEEK", "EWIND", "EWEEK,EWIND"}));
        PARA_FIELD(39, EH);
        PARA_FIELD(40, EM);
        PARA_FIELD(41, ES);
        PARA_RESERVED(42, reserved2);
        PARA_FIELD(44, STARTTIME);
        PARA_FIELD(48, ENDTIME));
}

template <class W> void Describe(W& w, tag_MsgPBTGeneralSetting& r)
{
    PARA_FIELD(0, CM);
    PARA_FIELD(1, AN);
    PARA_FIELD(2, LCDT);
    PARA_FIELD(3, LS);
    PARA_FIELD(4, EDRV);
    PARA_FIELD(5, LCDG);
    PARA_FIELD(8, AM);
    PARA_FIELD(12, ASMS);
    PARA_FIELD(16, AS);
    PARA_FIELD(20, ASM);
    PARA_FIELD(24, AK);
    PARA_FIELD(28, SEF);
    PARA_FIELD(6, DLSM);
    PARA_FIELD(35, CA);
    PARA_FIELD(36, LSS);
    PARA_FIELD(37, BCOM);
    PARA_ARRAY(29, SET);
    PARA_RESERVED(38, reserved0);
}

template <class W> void Describe(W& w, tag_MsgGeneralSetting& r)
{
    PARA_FIELD(0, SSS);
    PARA_FIELD(4, VSA);
    PARA_FIELD(5, LANT);
    PARA_FIELD(6, AOPCH);
    PARA_FIELD(7, VOL);
    PARA_FIELD(8, PBVOL);
    PARA_FIELD(9, DDN);
    PARA_FIELD(10, VGA);
    PARA_FIELD(11, TLV);
    PARA_FIELD(12, PAS);
    PARA_FIELD(13, GM);
    PARA_FIELD(14, IMV);
    PARA_FIELD(15, OMV);
    PARA_FIELD(16, HDDH);
    PARA_FIELD(17, CVOL);
    PARA_FIELD(18, TVOL);
    PARA_FIELD(19, PUT);
    PARA_FIELD(20, SVOL);
    PARA_FIELD(21, CPVOL);
    PARA_FIELD(22, ATDLE);
    PARA_FIELD(24, RCI);
    PARA_FIELD(23, FHKE);
    PARA_FIELD(26, FE);
    PARA_FIELD(27, MME);
}

template <class W> void Describe(W& w, tag_MsgNightSetting& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, SH);
    PARA_FIELD(2, SM);
    PARA_FIELD(3, SS);
    PARA_FIELD(4, EH);
    PARA_FIELD(5, EM);
    PARA_FIELD(6, ES);
    PARA_FIELD(7, TEN);
    PARA_FIELD(8, TSH);
    PARA_FIELD(9, TSM);
    PARA_FIELD(10, TSS);
    PARA_FIELD(11, TEH);
    PARA_FIELD(12, TEM);
    PARA_FIELD(13, TES);
    PARA_FIELD(20, FEN); // the third period's flag is stored after its times
    PARA_FIELD(14, FSH);
    PARA_FIELD(15, FSM);
    PARA_FIELD(16, FSS);
    PARA_FIELD(17, FEH);
    PARA_FIELD(18, FEM);
    PARA_FIELD(19, FES);
}

template <class W> void Describe(W& w, tag_MsgVehicleSetting& r)
{
    PARA_FIELD(0, K);
    PARA_FIELD(4, SI);
    PARA_FIELD(6, XI);
    PARA_FIELD(8, C);
    PARA_FIELD(73, LS);
    PARA_FIELD(74, VG);
    PARA_FIELD(75, AL);
    PARA_FIELD(76, TSI);
    PARA_FIELD(77, OLAE);
    PARA_FIELD(78, OS);
    PARA_FIELD(79, EMCP);
    PARA_FIELD(80, ESW);
    PARA_TEXT(9, VT);
    PARA_TEXT(41, VIN);
    PARA_RESERVED(81, reserved0);
}

template <class W> void Describe(W& w, tag_MsgProductSetting& r)
{
    PARA_FIELD(0, SN);
    PARA_FIELD(4, E);
    PARA_FIELD(8, A);
    PARA_FIELD(10, Y);
    PARA_FIELD(11, M);
    PARA_FIELD(12, D);
    PARA_FIELD(13, IY);
    PARA_FIELD(14, IM);
    PARA_FIELD(15, ID);
    PARA_FIELD(16, IH);
    PARA_FIELD(17, IMI);
    PARA_FIELD(18, IS);
    PARA_FIELD(227, BCN);
    PARA_TEXT(19, MID);
    PARA_TEXT(27, CCC);
    PARA_TEXT(35, PN);
    PARA_TEXT(67, PT);
    PARA_TEXT(99, N);
    PARA_TEXT(231, VRN);
    PARA_RESERVED(228, reserved0);
    PARA_RESERVED(243, reserved1);
}

template <class W> void Describe(W& w, tag_msgHistoryMileSetting& r)
{
    PARA_FIELD(0, MT);
    PARA_FIELD(28, TM);
    PARA_ARRAY(4, HM);
}

template <class W> void Describe(W& w, tag_MsgKeySetting& r)
{
    PARA_FIELD(6, FL);
    PARA_FIELD(7, IOS);
    PARA_FIELD(8, IRF);
    PARA_FIELD(9, AUF);
    PARA_FIELD(10, OPM);
    PARA_FIELD(11, GV);
    PARA_FIELD(12, PHM);
    PARA_CUSTOM(0, MAC, (MacText{"MAC"}));
}

template <class W> void Describe(W& w, tag_MsgVoltageProtectSetting& r)
{
    PARA_FIELD(0, SBM);
    PARA_FIELD(1, VPS);
    PARA_FIELD(6, CE);
    PARA_FIELD(8, WLE);
    PARA_FIELD(7, WLV);
    PARA_FIELD(10, OT);
    PARA_FIELD(12, SDT);
    PARA_CUSTOM(2, LV, (VoltageText{"LV"}));
    PARA_CUSTOM(4, UV, (VoltageText{"UV"}));
    PARA_RESERVED(9, reserved0);
}

template <class W> void Describe(W& w, tag_MsgHardwareManageSetting& r)
{
    PARA_FIELD(0, HIO);
}

template <class W> void Describe(W& w, tag_MsgSwitchSetting& r)
{
    PARA_FIELD(0, UPT);
    PARA_FIELD(1, UH);
    PARA_FIELD(2, UM);
    PARA_FIELD(3, US);
    PARA_FIELD(4, DH);
    PARA_FIELD(5, DM);
    PARA_FIELD(6, DS);
    PARA_FIELD(8, DDS);
    PARA_FIELD(12, DR);
    PARA_FIELD(16, CPM);
    PARA_FIELD(17, LG);
    PARA_FIELD(18, DAUT);
    PARA_FIELD(7, DAUE);
    PARA_FIELD(20, ENS);
    PARA_FIELD(24, SPO);
    PARA_FIELD(21, EDL);
    PARA_RESERVED(22, reserved0);
}

} // namespace para

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_DEVICE(X)                                                      \
    X(0, "ATP", ParseAdjustTimeParamJson, tag_MsgAdjustTimeSetting)               \
    X(1, "TIMEP", ParseTimeSettingParamJson, tag_MsgTimeSetting)                  \
    X(3, "GS", ParsePBTGeneralParamJson, tag_MsgPBTGeneralSetting)                \
    X(4, "GSP", ParseGeneralParamJson, tag_MsgGeneralSetting)                     \
    X(5, "NIGHT", ParseNightParamJson, tag_MsgNightSetting)                       \
    X(19, "VS", ParseVehicleParamJson, tag_MsgVehicleSetting)                     \
    X(20, "PS", ParseProductParamJson, tag_MsgProductSetting)                     \
    X(24, "HMIP", ParseHistoryMileageParamJson, tag_msgHistoryMileSetting)        \
    X(27, "KEYS", ParseKeyParamJson, tag_MsgKeySetting)                           \
    X(36, "VPP", ParseVoltageProtectParamJson, tag_MsgVoltageProtectSetting)      \
    X(44, "HMP", ParseHardwareManageParamJson, tag_MsgHardwareManageSetting)      \
    X(46, "SSP", ParsePowerSwitchParamJson, tag_MsgSwitchSetting)

#endif
