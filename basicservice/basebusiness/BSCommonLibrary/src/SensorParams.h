// Descriptions of the vehicle-sensor and driving-behaviour alarm records.
#ifndef SENSOR_PARAMS_H
#define SENSOR_PARAMS_H

#include "AlarmParams.h"
#include "ParaSensorRecords.h"
#include "ParaSteps.h"

namespace para {

// A calibration value given as decimal text ("1.5"), stored in tenths (15):
// only the first 16 characters count, the tenths are truncated toward zero
// into 32 bits (negative gives 0) and kept to 16 bits. A JSON number is no
// text and gives 0.
struct TenthsText {
    const char* key;

    double Exact(const Json::Value& object) const
    {
        BoundedText<16> text(Member(object, key));
        return std::atof(text.text) * 10.0;
    }

    void Read(const Json::Value& object, unsigned short& dst) const
    {
        dst = static_cast<unsigned short>(TruncateToU32(Exact(object)) & 0xFFFFu);
    }
    const char* Keys() const { return key; }

    template <class Report> void Check(const Json::Value& object, Report report) const
    {
        const Json::Value& value = Member(object, key);
        if (value.isNull() || ReportIfNotText(value, key, report, "0"))
            return;
        const char* begin = nullptr;
        const char* end = nullptr;
        value.getString(&begin, &end);
        if (end - begin > 16)
            report(key, "text of " + std::to_string(end - begin) + " characters: only the first 16 are converted");
        BoundedText<16> text(value);
        char* after = nullptr;
        std::strtod(text.text, &after);
        if (after == text.text) {
            report(key, "no decimal number in the text: stores 0");
            return;
        }
        if (*after)
            report(key, std::string("\"") + after + "\" after the number is ignored");
        const double exact = Exact(object);
        const unsigned int tenths = TruncateToU32(exact);
        unsigned short stored = 0;
        Read(object, stored);
        if (!(exact >= 0.0))
            report(key, "below zero or not a number: stores 0");
        else if (tenths > 0xFFFFu)
            report(key, std::to_string(tenths) + " tenths do not fit 16 bits: stores " + std::to_string(stored));
        else if (double(tenths) != exact)
            report(key, "finer than tenths: truncated, stores " + std::to_string(stored));
    }

    // The text of src tenths, "1.5" for 15.
    void Write(const unsigned short& src, Json::Value& object) const
    {
        object[key] = std::to_string(src / 10) + "." + std::to_string(src % 10);
    }
};

// ---------------------------------------------------------------------------
// Driving-behaviour thresholds. The exported parsers check for an empty
// object and log; the descriptions say which key fills which field.

template <class W> void Describe(W& w, paramAlarmThresh1_t& r)
{
    PARA_FIELD(0, SUXAL);
    PARA_FIELD(2, SUXAM);
    PARA_FIELD(4, SUXAH);
    PARA_FIELD(6, SUVAL);
    PARA_FIELD(8, SUVAM);
    PARA_FIELD(10, SUVAH);
    PARA_FIELD(12, BXAL);
    PARA_FIELD(14, BXAM);
    PARA_FIELD(16, BXAH);
    PARA_FIELD(18, BVAL);
    PARA_FIELD(20, BVAM);
    PARA_FIELD(22, BVAH);
    PARA_FIELD(24, CCFL);
    PARA_FIELD(26, CCFM);
    PARA_FIELD(28, CCFH);
    PARA_FIELD(30, BVL1);
    PARA_FIELD(32, BVL2);
    PARA_FIELD(34, GV1);
    PARA_FIELD(36, GV2);
    PARA_FIELD(38, ABV1);
    PARA_FIELD(40, ABV2);
    PARA_FIELD(42, ITL);
    PARA_FIELD(44, ITM);
    PARA_FIELD(46, ITH);
    PARA_FIELD(48, PLGT);
    PARA_FIELD(50, PLGR);
}

template <class W> void Describe(W& w, paramAlarmThresh2_t& r)
{
    PARA_FIELD(0, EFT);
    PARA_FIELD(2, EFS);
    PARA_FIELD(4, EFR);
    PARA_FIELD(6, NGT);
    PARA_FIELD(8, NGS);
    PARA_FIELD(10, NGR);
    PARA_FIELD(16, CTHT); // read T, S, R; laid out R, S, T
    PARA_FIELD(14, CTHS);
    PARA_FIELD(12, CTHR);
    PARA_FIELD(22, CTLT);
    PARA_FIELD(20, CTLS);
    PARA_FIELD(18, CTLR);
    PARA_FIELD(24, CTDT);
    PARA_FIELD(26, CTDP1);
    PARA_FIELD(28, CTDP2);
    PARA_FIELD(30, HSSET);
    PARA_FIELD(32, RTL);
    PARA_FIELD(34, RRL);
    PARA_FIELD(36, RTM);
    PARA_FIELD(38, RRM);
    PARA_FIELD(40, RTH);
    PARA_FIELD(42, RRH);
    PARA_FIELD(44, ST);
    PARA_FIELD(45, IT);
    PARA_FIELD(46, RCL);
    PARA_FIELD(47, TTL);
    PARA_FIELD(48, TSL);
    PARA_FIELD(49, TPL);
    PARA_FIELD(50, TTM);
    PARA_FIELD(51, TSM);
    PARA_FIELD(52, TPM);
    PARA_FIELD(53, TTH);
    PARA_FIELD(54, TSH);
    PARA_FIELD(55, TPH);
    PARA_FIELD(56, LGHS);
    PARA_FIELD(58, LGHSR);
    PARA_FIELD(60, RBT);
    PARA_FIELD(62, RBS);
    PARA_FIELD(64, CSR);
    PARA_FIELD(66, CST);
    PARA_FIELD(68, PCET1);
    PARA_FIELD(70, PCET2);
    PARA_FIELD(72, PCEM);
    PARA_FIELD(74, BWTL);
    PARA_FIELD(76, BWTM);
    PARA_FIELD(78, BWTH);
    PARA_FIELD(80, BWSL);
    PARA_FIELD(82, BWSM);
    PARA_FIELD(84, BWSH);
    PARA_FIELD(86, CWTL);
    PARA_FIELD(88, CWTM);
    PARA_FIELD(90, CWTH);
    PARA_FIELD(92, CWSL);
    PARA_FIELD(94, CWSM);
    PARA_FIELD(96, CWSH);
    PARA_FIELD(98, POCT);
    PARA_FIELD(99, OSL1);
    PARA_FIELD(100, OSL2);
    PARA_FIELD(101, OSL3);
    PARA_FIELD(102, OSL4);
    PARA_FIELD(103, OSL5);
    PARA_FIELD(104, RL1);
    PARA_FIELD(106, RL2);
    PARA_FIELD(108, RL3);
    PARA_FIELD(110, RL4);
    PARA_FIELD(112, RL5);
    PARA_FIELD(114, RL6);
    PARA_FIELD(116, RL7);
    PARA_FIELD(118, RL8);
    PARA_FIELD(120, ST1L1);
    PARA_FIELD(121, ST1L2);
    PARA_FIELD(122, ST1L3);
    PARA_FIELD(123, ST1L4);
    PARA_FIELD(124, ST1L5);
    PARA_FIELD(125, APL1);
    PARA_FIELD(126, APL2);
    PARA_FIELD(127, APL3);
    PARA_FIELD(128, APL4);
    PARA_FIELD(129, APL5);
    PARA_FIELD(130, ST2L1);
    PARA_FIELD(131, ST2L2);
    PARA_FIELD(132, ST2L3);
    PARA_FIELD(133, ST2L4);
    PARA_FIELD(134, ST2L5);
    PARA_FIELD(135, ST2L6);
    PARA_FIELD(136, ST2L7);
    PARA_FIELD(137, ST2L8);
    PARA_FIELD(138, ST2L9);
    PARA_FIELD(139, EPLL1);
    PARA_FIELD(140, EPLL2);
    PARA_FIELD(141, EPLL3);
    PARA_FIELD(142, EPLL4);
    PARA_FIELD(143, EPLL5);
    PARA_FIELD(144, EPLL6);
    PARA_FIELD(145, ITL1);
    PARA_FIELD(146, ITL2);
    PARA_FIELD(147, ITL3);
    PARA_FIELD(148, ITL4);
    PARA_RESERVED(149, reserved0);
}

// ---------------------------------------------------------------------------
// Green driving. Scalars are always written; the arrays and the two
// threshold records keep the caller's bytes where their JSON is missing.

template <class W> void Describe(W& w, tag_MsgGreenDriverSet& r)
{
    PARA_FIELD(212, ATE);
    PARA_FIELD(216, SUI);
    PARA_FIELD(272, FUI);
    PARA_FIELD(276, FUE);
    PARA_GROUP("PSS",
        PARA_FIELD(0, CM);
        PARA_FIELD(1, S);
        PARA_FIELD(2, POS));
    PARA_RESERVED(3, reserved0);
    PARA_GROUP("PCS",
        PARA_FIELD(32, AN);
        PARA_FIELD(33, UL));
    PARA_RESERVED(34, reserved1);
    PARA_GROUP("PTS",
        PARA_FIELD(66, T);
        PARA_FIELD(67, U));
    PARA_RESERVED(68, reserved2);
    PARA_GROUP("PLDS",
        PARA_FIELD(100, VW);
        PARA_FIELD(102, CH);
        PARA_FIELD(104, CD);
        PARA_FIELD(106, LS);
        PARA_FIELD(108, CS);
        PARA_FIELD(110, FD);
        PARA_FIELD(112, CA);
        PARA_FIELD(114, NP);
        PARA_FIELD(116, SL);
        PARA_FIELD(117, SR);
        PARA_FIELD(118, SB);
        PARA_FIELD(119, LDS);
        PARA_FIELD(120, CSS));
    PARA_RESERVED(115, reserved3);
    PARA_RESERVED(121, reserved4);
    PARA_GROUP("PGS",
        PARA_FIELD(184, M);
        PARA_FIELD(188, F);
        PARA_FIELD(192, MC);
        PARA_FIELD(196, FC);
        PARA_FIELD(200, WM));
    PARA_RESERVED(201, reserved6);
    PARA_GROUP("PFS",
        PARA_FIELD(150, FV);
        PARA_FIELD(152, DPT);
        PARA_FIELD(154, FI);
        PARA_FIELD(180, RM);
        PARA_ARRAY(156, FAH);
        PARA_ARRAY(164, FM));
    PARA_RESERVED(181, reserved5);
    PARA_SUBRECORD(218, ATH1, ParseGDSAlarmThresh1);
    PARA_RESERVED(270, reserved7);
    PARA_RESERVED(277, reserved8);
    PARA_SUBRECORD(280, ATH2, ParseGDSAlarmThresh2);
    PARA_RESERVED(430, reserved9);
}

// ---------------------------------------------------------------------------
// Motion-sensor alarms.

template <class W> void Describe(W& w, tag_msgAccelAlarmSetting& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, VT);
    PARA_RESERVED(3, reserved0);
    PARA_TEXT(8, AN);
    PARA_TEXT(40, AO);
    PARA_GROUP("ACP",
        PARA_CUSTOM(124, TX, (TenthsText{"TX"}));
        PARA_CUSTOM(126, TY, (TenthsText{"TY"}));
        PARA_CUSTOM(128, TZ, (TenthsText{"TZ"}));
        PARA_FIELD(130, SX);
        PARA_FIELD(132, SY);
        PARA_FIELD(134, SZ);
        PARA_FIELD(136, ADJACC));
    PARA_RESERVED(137, reserved1);
    PARA_FIELD(148, SDT);
    PARA_SUBRECORD(56, APR, ParseAlarmLinkProcess);
    PARA_RESERVED(149, reserved2);
}

template <class W> void Describe(W& w, tag_MsgCollideAlarmSetting& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, VT);
    PARA_FIELD(3, SDT);
    PARA_RESERVED(4, reserved0);
    PARA_TEXT(8, CN);
    PARA_TEXT(40, CO);
    PARA_FIELD(124, STS);
    PARA_FIELD(125, TTS);
    PARA_SUBRECORD(56, APR, ParseAlarmLinkProcess);
    PARA_RESERVED(126, reserved1);
}

template <class W> void Describe(W& w, tag_MsgHitAlarmSetting& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, VT);
    PARA_FIELD(3, SDT);
    PARA_RESERVED(4, reserved0);
    PARA_TEXT(8, HN);
    PARA_TEXT(40, HO);
    PARA_FIELD(124, HA);
    PARA_SUBRECORD(56, APR, ParseAlarmLinkProcess);
    PARA_RESERVED(126, reserved1);
}

template <class W> void Describe(W& w, VehicleStanceAlarm_t& r)
{
    PARA_FIELD(0, NE);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, VT);
    PARA_RESERVED(3, reserved0);
    PARA_FIELD(124, SDT);
    PARA_FIELD(4, STEN);
    PARA_FIELD(5, TS);
    PARA_FIELD(6, IOTEN);
    PARA_FIELD(7, TIO);
    PARA_TEXT(8, AN);
    PARA_TEXT(40, AO);
    PARA_SUBRECORD(56, APR, ParseAlarmLinkProcess);
    PARA_RESERVED(125, reserved1);
}

// The "PVTSAS" section is the array of entries itself.
template <class W> void Describe(W& w, tag_MsgVehicleStanceAlarm& r)
{
    PARA_RESERVED(0, reserved0);
    PARA_ARRAY_SELF(8, PVTSAS);
}

// ---------------------------------------------------------------------------
// Tyre pressure.

template <class W> void Describe(W& w, WTPMSTsp_t& r)
{
    PARA_FIELD(4, LP);
    PARA_FIELD(6, HP);
    PARA_FIELD(3, HT);
    PARA_ARRAY(0, RI);
}

template <class W> void Describe(W& w, WTPMSTrp_t& r)
{
    PARA_FIELD(4, EN);
    PARA_FIELD(3, RP);
    PARA_ARRAY(0, RI);
    PARA_RESERVED(5, reserved0);
}

template <class W> void Describe(W& w, WTPMSTtr_t& r)
{
    PARA_FIELD(15, P);
    PARA_TEXT(0, N);
}

template <class W> void Describe(W& w, tag_msgWTPMSProperty& r)
{
    PARA_FIELD(896, TVC);
    PARA_FIELD(897, UN);
    PARA_FIELD(898, IBL);
    PARA_FIELD(899, SL);
    PARA_ARRAY(0, TSP);
    PARA_GROUP("TTP",
        PARA_FIELD(288, T);
        PARA_FIELD(289, ST1);
        PARA_FIELD(290, ST2);
        PARA_FIELD(291, ST3);
        PARA_FIELD(292, AL));
    PARA_RESERVED(293, reserved0);
    PARA_ARRAY(296, TRP);
    PARA_ARRAY(320, TTR);
}

// ---------------------------------------------------------------------------
// Temperature, fuel, vehicle-fault and DSM alarms.

template <class W> void Describe(W& w, tag_msgVTFaultInfoSetting& r)
{
    PARA_FIELD(4, TAT);
    PARA_FIELD(12, VAT);
    PARA_FIELD(0, TP);
    PARA_FIELD(2, TV);
    PARA_FIELD(8, VP);
    PARA_FIELD(10, VV);
}

template <class W> void Describe(W& w, StdTempAlarm_t& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, VT);
    PARA_FIELD(3, SDT);
    PARA_FIELD(4, UIT);
    PARA_FIELD(124, HTTD);
    PARA_FIELD(125, IWT);
    PARA_FIELD(126, IWD);
    PARA_TEXT(8, SNM);
    PARA_TEXT(40, SOD);
    PARA_SUBRECORD(56, APR, ParseAlarmLinkProcess);
    PARA_RESERVED(127, reserved0);
}

// The "STMPA" section is the array of entries itself.
template <class W> void Describe(W& w, tag_msgStdTempAlarmSetting& r) { PARA_ARRAY_SELF(0, STMPA); }

template <class W> void Describe(W& w, tag_msgFuelAlarmSetting& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, AS);
    PARA_FIELD(2, TS);
    PARA_FIELD(52, FV);
    PARA_FIELD(54, VT);
    PARA_FIELD(55, SP);
    PARA_FIELD(56, FH);
    PARA_FIELD(58, EH);
    PARA_FIELD(60, CF);
    PARA_FIELD(62, SDT);
    PARA_FIELD(64, BA);
    PARA_TEXT(4, FN);
    PARA_TEXT(36, FO);
    PARA_RESERVED(63, reserved0);
}

template <class W> void Describe(W& w, StdDSMAlarm_t& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, AS);
    PARA_RESERVED(2, reserved0);
    PARA_FIELD(6, SDT);
    PARA_RESERVED(7, reserved1);
    PARA_SUBRECORD(12, APR, ParseAlarmLinkProcess);
}

template <class W> void Describe(W& w, tag_msgStdDSMAlarmSetting& r)
{
    PARA_FIELD(0, SST);
    PARA_RESERVED(1, reserved0);
    PARA_ARRAY(4, DSMA);
}

} // namespace para

// The parameter types of this subsystem: X(type, section key, parser, record).
#define PARA_TYPES_SENSOR(X)                                                      \
    X(25, "PGDS", ParseGreenDriverParamJson, tag_MsgGreenDriverSet)               \
    X(29, "ACC", ParseAccelAlarmParamJson, tag_msgAccelAlarmSetting)              \
    X(37, "PCAS", ParseCollideAlarmParamJson, tag_MsgCollideAlarmSetting)         \
    X(38, "PHAS", ParseHitAlarmParamJson, tag_MsgHitAlarmSetting)                 \
    X(39, "PVTSAS", ParseVehicleStanceAlarmParamJson, tag_MsgVehicleStanceAlarm) \
    X(40, "TPP", ParseTirePressureParamJson, tag_msgWTPMSProperty)                \
    X(41, "STMPA", ParseStdTempAlarmParamJson, tag_msgStdTempAlarmSetting)        \
    X(26, "VTFS", ParseVTFaultParamJson, tag_msgVTFaultInfoSetting)               \
    X(45, "FAS", ParseFuelAlarmParamJson, tag_msgFuelAlarmSetting)                \
    X(51, "DSM", ParseStdDsmAlarmParamJson, tag_msgStdDSMAlarmSetting)

#endif
