// The one registry of parameter types, in type order: the type, its section
// key, the exported parser, the record it fills, what the parser logs for an
// empty or absent section (nullptr: it only returns -1) and what it logs if
// reading throws. The dispatcher, the exported section parsers, the tools,
// the example recorder, the fuzz targets and the tests take their types from
// here: para::kTypes[type] for 0 <= type < para::kTypeCount.
#ifndef PARA_TYPES_H
#define PARA_TYPES_H

#include "CommonParaAdapter.h"
#include "AlarmParams.h"
#include "DeviceParams.h"
#include "NetworkParams.h"
#include "SensorParams.h"
#include "ServerParams.h"
#include "VideoParams.h"

// X(type, section key, parser, record, empty message, failure message)
#define PARA_TYPES(X) \
    X(0, "ATP", ParseAdjustTimeParamJson, tag_MsgAdjustTimeSetting, "empty param json: ATP\n", nullptr)                                \
    X(1, "TIMEP", ParseTimeSettingParamJson, tag_MsgTimeSetting, "empty param json: TIMEP\n", nullptr)                                 \
    X(2, "AREA", ParseAreaAlarmParamJson, tag_msgAreaAlarmSetting, "empty param json : AREA!\n", nullptr)                              \
    X(3, "GS", ParsePBTGeneralParamJson, tag_MsgPBTGeneralSetting, "empty param json : GS!\n", "failed to parse PBT General param!\n") \
    X(4, "GSP", ParseGeneralParamJson, tag_MsgGeneralSetting, "empty param json : GSP!\n", nullptr)                                    \
    X(5, "NIGHT", ParseNightParamJson, tag_MsgNightSetting, nullptr, nullptr)                                                          \
    X(6, "SAP", ParseSpeedAlarmParamJson, tag_MsgSpeedAlarmSetting, nullptr, nullptr)                                                  \
    X(7, "ARLM", ParseAreaLimitParamJson, tag_msgAreaLimitSetting, nullptr, nullptr)                                                   \
    X(8, "FTPS", ParseFtpParamJson, paramFtpSetting_t, nullptr, nullptr)                                                               \
    X(9, "FTPEX", ParseFtpExtralParamJson, paramFtpSetting_t, nullptr, nullptr)                                                        \
    X(10, "MAIN", ParseMainStreamParamJson, tag_MsgVideoEncodeSetting, nullptr, nullptr)                                               \
    X(11, "AR", ParseAssistRecordParamJson, tag_MsgAssistRecordSetting, nullptr, nullptr)                                              \
    X(12, "SUBSTRNET", ParseNetTransferParamJson, tag_MsgNetTransferSetting, nullptr, nullptr)                                         \
    X(13, "RIP", ParseRegisterParamJson, tag_MsgRegisterSetting, nullptr, nullptr)                                                     \
    X(14, "IOP", ParseIOAlarmParamJson, tag_MsgIOAlarmSetting, nullptr, nullptr)                                                       \
    X(15, "EOSD", ParseEncodeOSDParamJson, tag_MsgEncodeOsdSetting, nullptr, nullptr)                                                  \
    X(16, "RP", ParseRecordParamJson, tag_MsgRecordSetting, nullptr, nullptr)                                                          \
    X(17, "M3G", Parse3GParamJson, tag_Msg3GSetting, nullptr, nullptr)                                                                 \
    X(18, "MCMS", ParseCmsParamJson, tag_MsgCmsSetting, nullptr, nullptr)                                                              \
    X(19, "VS", ParseVehicleParamJson, tag_MsgVehicleSetting, nullptr, nullptr)                                                        \
    X(20, "PS", ParseProductParamJson, tag_MsgProductSetting, nullptr, nullptr)                                                        \
    X(21, "PSI", ParsePlatformParamJson, tag_MsgPlatformSetting, nullptr, nullptr)                                                     \
    X(22, "ETHERNET", ParseEtherNetParamJson, tag_MsgEtherNetSetting, nullptr, nullptr)                                                \
    X(23, "REDEV", ParseRemoteDevNodeParamJson, tag_MsgRemoteDevNodeSetting, nullptr, nullptr)                                         \
    X(24, "HMIP", ParseHistoryMileageParamJson, tag_msgHistoryMileSetting, nullptr, nullptr)                                           \
    X(25, "PGDS", ParseGreenDriverParamJson, tag_MsgGreenDriverSet, nullptr, nullptr)                                                  \
    X(26, "VTFS", ParseVTFaultParamJson, tag_msgVTFaultInfoSetting, nullptr, nullptr)                                                  \
    X(27, "KEYS", ParseKeyParamJson, tag_MsgKeySetting, nullptr, nullptr)                                                              \
    X(28, "MNTFTP", ParseMaintFtpParamJson, tag_msgMaintFtpSetting, nullptr, nullptr)                                                  \
    X(29, "ACC", ParseAccelAlarmParamJson, tag_msgAccelAlarmSetting, nullptr, nullptr)                                                 \
    X(30, "PMDAS", ParseMDAlarmParamJson, tag_MsgMDAlarmSetting, nullptr, nullptr)                                                     \
    X(31, "PVSAS", ParseVSAlarmParamJson, tag_MsgVSAlarmSetting, nullptr, nullptr)                                                     \
    X(32, "PVLAS", ParseVLAlarmParamJson, tag_MsgVLAlarmSetting, nullptr, nullptr)                                                     \
    X(33, "UAP", ParseUrgentAlarmParamJson, tag_MsgUrgentAlarmSetting, nullptr, nullptr)                                               \
    X(34, "PSNAP", ParseSnapParamJson, paramSnapSetting_t, nullptr, nullptr)                                                           \
    X(35, "DSP", ParseDistanceSnapParamJson, paramDistanceSnapSetting_t, nullptr, nullptr)                                             \
    X(36, "VPP", ParseVoltageProtectParamJson, tag_MsgVoltageProtectSetting, nullptr, nullptr)                                         \
    X(37, "PCAS", ParseCollideAlarmParamJson, tag_MsgCollideAlarmSetting, nullptr, nullptr)                                            \
    X(38, "PHAS", ParseHitAlarmParamJson, tag_MsgHitAlarmSetting, nullptr, nullptr)                                                    \
    X(39, "PVTSAS", ParseVehicleStanceAlarmParamJson, tag_MsgVehicleStanceAlarm, nullptr, nullptr)                                     \
    X(40, "TPP", ParseTirePressureParamJson, tag_msgWTPMSProperty, nullptr, nullptr)                                                   \
    X(41, "STMPA", ParseStdTempAlarmParamJson, tag_msgStdTempAlarmSetting, nullptr, nullptr)                                           \
    X(42, "FDAS", ParseFatigueDriveAlarmParamJson, tag_MsgFatigueDriveAlarmSetting, nullptr, nullptr)                                  \
    X(43, "TPAS", ParseTimeoutParkAlarmParamJson, tag_MsgTimeoutParkAlarmSetting, nullptr, nullptr)                                    \
    X(44, "HMP", ParseHardwareManageParamJson, tag_MsgHardwareManageSetting, nullptr, nullptr)                                         \
    X(45, "FAS", ParseFuelAlarmParamJson, tag_msgFuelAlarmSetting, nullptr, nullptr)                                                   \
    X(46, "SSP", ParsePowerSwitchParamJson, tag_MsgSwitchSetting, nullptr, nullptr)                                                    \
    X(47, "PSS", ParseSerialParamJson, tag_MsgSerialSetting, nullptr, nullptr)                                                         \
    X(48, "CAN", ParseCanParamJson, tag_msgCanSetting, nullptr, nullptr)                                                               \
    X(49, "PEN", ParsePeripEtherNetParamJson, tag_msgPeripEnetSetting, nullptr, nullptr)                                               \
    X(50, "DOSD", ParseViewOsdParamJson, tag_MsgViewOsdSetting, nullptr, nullptr)                                                      \
    X(51, "DSM", ParseStdDsmAlarmParamJson, tag_msgStdDSMAlarmSetting, nullptr, nullptr)                                              

// The exported parsers of embedded records, which take the object itself:
// X(parser, record). Their rules are the PARA_PARSER beside each record.
#define PARA_SUB_PARSERS(X)                     \
    X(ParseAlarmLinkRecord, alarmLinkRecord_t)  \
    X(ParseAlarmLinkSnapShot, alarmLinkSnapShot) \
    X(ParseAlarmLinkOutput, alarmLinkOutput_t)  \
    X(ParseAlarmLinkProcess, alarmLinkProcess_t) \
    X(ParseAlarmPlan, alarmPlan_t)              \
    X(ParseCommonSnapPara, CommonSnapPara_t)    \
    X(ParseBoHaoParamJson, paramBoHaoParam_t)   \
    X(ParseGDSAlarmThresh1, paramAlarmThresh1_t) \
    X(ParseGDSAlarmThresh2, paramAlarmThresh2_t)

namespace para {

struct Type {
    int type;
    const char* key; // the section's key under "PARAMETER" / "MDVR"
    Parser parser;
};

inline constexpr Type kTypes[] = {
#define PARA_TYPE_ROW(type, key, parser, R, empty, failed) \
    {type, key, {#parser, &Describe<R>::record, empty, failed, nullptr, false}},
    PARA_TYPES(PARA_TYPE_ROW)
#undef PARA_TYPE_ROW
};

inline constexpr int kTypeCount = int(sizeof kTypes / sizeof kTypes[0]);

constexpr bool InTypeOrder()
{
    for (int i = 0; i < kTypeCount; ++i)
        if (kTypes[i].type != i)
            return false;
    return true;
}
static_assert(InTypeOrder(), "one row per type, in type order from 0");

// The row of a section key, nullptr for none.
inline const Type* TypeOfKey(const char* key)
{
    for (const Type& t : kTypes)
        if (std::strcmp(t.key, key) == 0)
            return &t;
    return nullptr;
}

// Reads type `type`'s section of `doc` into `record` with its parser's rules.
int ParseSection(const Type& type, const Json::Value& doc, void* record);

} // namespace para

#endif
