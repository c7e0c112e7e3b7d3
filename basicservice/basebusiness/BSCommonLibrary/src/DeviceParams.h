// Descriptions of the device and system parameter records.
#ifndef DEVICE_PARAMS_H
#define DEVICE_PARAMS_H

#include "ParaDeviceRecords.h"
#include "ParaSteps.h"

namespace para {

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
