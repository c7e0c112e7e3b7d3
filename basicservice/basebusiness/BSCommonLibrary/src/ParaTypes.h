// The one registry of parameter types, one row per enumerator of _PARA_TYPE_
// in type order: the type, its section key, the exported parser, the record
// it fills and the parser's rules, stated by name: what it logs for an empty
// or absent section (.Empty; without it the parser only returns -1) and what
// it logs if reading throws (.Failed). The dispatcher, the exported section parsers, the tools,
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

// X(type, section key, parser, record[, rules])
#define PARA_TYPES(X) \
    X(PARA_ADJUST_TIME, "ATP", ParseAdjustTimeParamJson, tag_MsgAdjustTimeSetting, .Empty("empty param json: ATP\n")) \
    X(PARA_TIME_SETTING, "TIMEP", ParseTimeSettingParamJson, tag_MsgTimeSetting, .Empty("empty param json: TIMEP\n")) \
    X(PARA_AREA_ALARM, "AREA", ParseAreaAlarmParamJson, tag_msgAreaAlarmSetting, .Empty("empty param json : AREA!\n")) \
    X(PARA_PBT_GENERAL, "GS", ParsePBTGeneralParamJson, tag_MsgPBTGeneralSetting, .Empty("empty param json : GS!\n").Failed("failed to parse PBT General param!\n")) \
    X(PARA_GENERAL, "GSP", ParseGeneralParamJson, tag_MsgGeneralSetting, .Empty("empty param json : GSP!\n")) \
    X(PARA_NIGHT, "NIGHT", ParseNightParamJson, tag_MsgNightSetting) \
    X(PARA_SPEED_ALARM, "SAP", ParseSpeedAlarmParamJson, tag_MsgSpeedAlarmSetting) \
    X(PARA_AREA_LIMIT, "ARLM", ParseAreaLimitParamJson, tag_msgAreaLimitSetting) \
    X(PARA_FTP, "FTPS", ParseFtpParamJson, paramFtpSetting_t) \
    X(PARA_FTP_EXTRA, "FTPEX", ParseFtpExtralParamJson, paramFtpSetting_t) \
    X(PARA_MAIN_STREAM, "MAIN", ParseMainStreamParamJson, tag_MsgVideoEncodeSetting) \
    X(PARA_ASSIST_RECORD, "AR", ParseAssistRecordParamJson, tag_MsgAssistRecordSetting) \
    X(PARA_NET_TRANSFER, "SUBSTRNET", ParseNetTransferParamJson, tag_MsgNetTransferSetting) \
    X(PARA_REGISTER, "RIP", ParseRegisterParamJson, tag_MsgRegisterSetting) \
    X(PARA_IO_ALARM, "IOP", ParseIOAlarmParamJson, tag_MsgIOAlarmSetting) \
    X(PARA_ENCODE_OSD, "EOSD", ParseEncodeOSDParamJson, tag_MsgEncodeOsdSetting) \
    X(PARA_RECORD, "RP", ParseRecordParamJson, tag_MsgRecordSetting) \
    X(PARA_3G, "M3G", Parse3GParamJson, tag_Msg3GSetting) \
    X(PARA_CMS, "MCMS", ParseCmsParamJson, tag_MsgCmsSetting) \
    X(PARA_VEHICLE, "VS", ParseVehicleParamJson, tag_MsgVehicleSetting) \
    X(PARA_PRODUCT, "PS", ParseProductParamJson, tag_MsgProductSetting) \
    X(PARA_PLATFORM, "PSI", ParsePlatformParamJson, tag_MsgPlatformSetting) \
    X(PARA_ETHERNET, "ETHERNET", ParseEtherNetParamJson, tag_MsgEtherNetSetting) \
    X(PARA_REMOTE_DEV_NODE, "REDEV", ParseRemoteDevNodeParamJson, tag_MsgRemoteDevNodeSetting) \
    X(PARA_HISTORY_MILEAGE, "HMIP", ParseHistoryMileageParamJson, tag_msgHistoryMileSetting) \
    X(PARA_GREEN_DRIVER, "PGDS", ParseGreenDriverParamJson, tag_MsgGreenDriverSet) \
    X(PARA_VT_FAULT, "VTFS", ParseVTFaultParamJson, tag_msgVTFaultInfoSetting) \
    X(PARA_KEY, "KEYS", ParseKeyParamJson, tag_MsgKeySetting) \
    X(PARA_MAINT_FTP, "MNTFTP", ParseMaintFtpParamJson, tag_msgMaintFtpSetting) \
    X(PARA_ACCEL_ALARM, "ACC", ParseAccelAlarmParamJson, tag_msgAccelAlarmSetting) \
    X(PARA_MD_ALARM, "PMDAS", ParseMDAlarmParamJson, tag_MsgMDAlarmSetting) \
    X(PARA_VS_ALARM, "PVSAS", ParseVSAlarmParamJson, tag_MsgVSAlarmSetting) \
    X(PARA_VL_ALARM, "PVLAS", ParseVLAlarmParamJson, tag_MsgVLAlarmSetting) \
    X(PARA_URGENT_ALARM, "UAP", ParseUrgentAlarmParamJson, tag_MsgUrgentAlarmSetting) \
    X(PARA_SNAP, "PSNAP", ParseSnapParamJson, paramSnapSetting_t) \
    X(PARA_DISTANCE_SNAP, "DSP", ParseDistanceSnapParamJson, paramDistanceSnapSetting_t) \
    X(PARA_VOLTAGE_PROTECT, "VPP", ParseVoltageProtectParamJson, tag_MsgVoltageProtectSetting) \
    X(PARA_COLLIDE_ALARM, "PCAS", ParseCollideAlarmParamJson, tag_MsgCollideAlarmSetting) \
    X(PARA_HIT_ALARM, "PHAS", ParseHitAlarmParamJson, tag_MsgHitAlarmSetting) \
    X(PARA_VEHICLE_STANCE_ALARM, "PVTSAS", ParseVehicleStanceAlarmParamJson, tag_MsgVehicleStanceAlarm) \
    X(PARA_TIRE_PRESSURE, "TPP", ParseTirePressureParamJson, tag_msgWTPMSProperty) \
    X(PARA_STD_TEMP_ALARM, "STMPA", ParseStdTempAlarmParamJson, tag_msgStdTempAlarmSetting) \
    X(PARA_FATIGUE_DRIVE_ALARM, "FDAS", ParseFatigueDriveAlarmParamJson, tag_MsgFatigueDriveAlarmSetting) \
    X(PARA_TIMEOUT_PARK_ALARM, "TPAS", ParseTimeoutParkAlarmParamJson, tag_MsgTimeoutParkAlarmSetting) \
    X(PARA_HARDWARE_MANAGE, "HMP", ParseHardwareManageParamJson, tag_MsgHardwareManageSetting) \
    X(PARA_FUEL_ALARM, "FAS", ParseFuelAlarmParamJson, tag_msgFuelAlarmSetting) \
    X(PARA_POWER_SWITCH, "SSP", ParsePowerSwitchParamJson, tag_MsgSwitchSetting) \
    X(PARA_SERIAL, "PSS", ParseSerialParamJson, tag_MsgSerialSetting) \
    X(PARA_CAN, "CAN", ParseCanParamJson, tag_msgCanSetting) \
    X(PARA_PERIP_ETHERNET, "PEN", ParsePeripEtherNetParamJson, tag_msgPeripEnetSetting) \
    X(PARA_VIEW_OSD, "DOSD", ParseViewOsdParamJson, tag_MsgViewOsdSetting) \
    X(PARA_STD_DSM_ALARM, "DSM", ParseStdDsmAlarmParamJson, tag_msgStdDSMAlarmSetting)

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
    _PARA_TYPE_ type;
    const char* key; // the section's key under "PARAMETER" / "MDVR"
    Parser parser;
};

inline constexpr Type kTypes[] = {
#define PARA_TYPE_ROW(type, key, parser, R, ...) {type, key, {#parser, &Describe<R>::record, Rules() __VA_ARGS__}},
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
static_assert(kTypeCount == PARA_TYPE_RESERVED, "a row for every type below PARA_TYPE_RESERVED");

// Reads type `type`'s section of `doc` into `record` with its parser's rules.
int ParseSection(const Type& type, const Json::Value& doc, void* record);

} // namespace para

#endif
