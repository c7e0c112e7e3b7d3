/// @file
/// Parameter adaptation: JSON parameter documents {"PARAMETER":{"MDVR":{...}}}
/// turned into the fixed-layout binary records shared by the recorder's
/// processes. Includes the readers and every record header.
#ifndef COMMON_PARA_ADAPTER_H
#define COMMON_PARA_ADAPTER_H

#include "BSCommonExport.h"
#include "ParaJsonReader.h"
#include "ParaAlarmRecords.h"
#include "ParaDeviceRecords.h"
#include "ParaVideoRecords.h"
#include "ParaServerRecords.h"
#include "ParaNetworkRecords.h"
#include "ParaSensorRecords.h"

#include <json/value.h>

/// Selects the parser (and so the record type) in AdaptParaJson(). Only the
/// values are part of the interface; 52 to 60 are reserved, 61 and above invalid.
/// Types 8 and 9 fill the same record through two parsers.
enum _PARA_TYPE_ : int {
    PARA_ADJUST_TIME = 0, ///< Section "ATP": ParseAdjustTimeParamJson() into a #tag_MsgAdjustTimeSetting.
    PARA_TIME_SETTING = 1, ///< Section "TIMEP": ParseTimeSettingParamJson() into a #tag_MsgTimeSetting.
    PARA_AREA_ALARM = 2, ///< Section "AREA": ParseAreaAlarmParamJson() into a #tag_msgAreaAlarmSetting.
    PARA_PBT_GENERAL = 3, ///< Section "GS": ParsePBTGeneralParamJson() into a #tag_MsgPBTGeneralSetting.
    PARA_GENERAL = 4, ///< Section "GSP": ParseGeneralParamJson() into a #tag_MsgGeneralSetting.
    PARA_NIGHT = 5, ///< Section "NIGHT": ParseNightParamJson() into a #tag_MsgNightSetting.
    PARA_SPEED_ALARM = 6, ///< Section "SAP": ParseSpeedAlarmParamJson() into a #tag_MsgSpeedAlarmSetting.
    PARA_AREA_LIMIT = 7, ///< Section "ARLM": ParseAreaLimitParamJson() into a #tag_msgAreaLimitSetting.
    PARA_FTP = 8, ///< Section "FTPS": ParseFtpParamJson() into a #paramFtpSetting_t.
    PARA_FTP_EXTRA = 9, ///< Section "FTPEX": ParseFtpExtralParamJson() into a #paramFtpSetting_t.
    PARA_MAIN_STREAM = 10, ///< Section "MAIN": ParseMainStreamParamJson() into a #tag_MsgVideoEncodeSetting.
    PARA_ASSIST_RECORD = 11, ///< Section "AR": ParseAssistRecordParamJson() into a #tag_MsgAssistRecordSetting.
    PARA_NET_TRANSFER = 12, ///< Section "SUBSTRNET": ParseNetTransferParamJson() into a #tag_MsgNetTransferSetting.
    PARA_REGISTER = 13, ///< Section "RIP": ParseRegisterParamJson() into a #tag_MsgRegisterSetting.
    PARA_IO_ALARM = 14, ///< Section "IOP": ParseIOAlarmParamJson() into a #tag_MsgIOAlarmSetting.
    PARA_ENCODE_OSD = 15, ///< Section "EOSD": ParseEncodeOSDParamJson() into a #tag_MsgEncodeOsdSetting.
    PARA_RECORD = 16, ///< Section "RP": ParseRecordParamJson() into a #tag_MsgRecordSetting.
    PARA_3G = 17, ///< Section "M3G": Parse3GParamJson() into a #tag_Msg3GSetting.
    PARA_CMS = 18, ///< Section "MCMS": ParseCmsParamJson() into a #tag_MsgCmsSetting.
    PARA_VEHICLE = 19, ///< Section "VS": ParseVehicleParamJson() into a #tag_MsgVehicleSetting.
    PARA_PRODUCT = 20, ///< Section "PS": ParseProductParamJson() into a #tag_MsgProductSetting.
    PARA_PLATFORM = 21, ///< Section "PSI": ParsePlatformParamJson() into a #tag_MsgPlatformSetting.
    PARA_ETHERNET = 22, ///< Section "ETHERNET": ParseEtherNetParamJson() into a #tag_MsgEtherNetSetting.
    PARA_REMOTE_DEV_NODE = 23, ///< Section "REDEV": ParseRemoteDevNodeParamJson() into a #tag_MsgRemoteDevNodeSetting.
    PARA_HISTORY_MILEAGE = 24, ///< Section "HMIP": ParseHistoryMileageParamJson() into a #tag_msgHistoryMileSetting.
    PARA_GREEN_DRIVER = 25, ///< Section "PGDS": ParseGreenDriverParamJson() into a #tag_MsgGreenDriverSet.
    PARA_VT_FAULT = 26, ///< Section "VTFS": ParseVTFaultParamJson() into a #tag_msgVTFaultInfoSetting.
    PARA_KEY = 27, ///< Section "KEYS": ParseKeyParamJson() into a #tag_MsgKeySetting.
    PARA_MAINT_FTP = 28, ///< Section "MNTFTP": ParseMaintFtpParamJson() into a #tag_msgMaintFtpSetting.
    PARA_ACCEL_ALARM = 29, ///< Section "ACC": ParseAccelAlarmParamJson() into a #tag_msgAccelAlarmSetting.
    PARA_MD_ALARM = 30, ///< Section "PMDAS": ParseMDAlarmParamJson() into a #tag_MsgMDAlarmSetting.
    PARA_VS_ALARM = 31, ///< Section "PVSAS": ParseVSAlarmParamJson() into a #tag_MsgVSAlarmSetting.
    PARA_VL_ALARM = 32, ///< Section "PVLAS": ParseVLAlarmParamJson() into a #tag_MsgVLAlarmSetting.
    PARA_URGENT_ALARM = 33, ///< Section "UAP": ParseUrgentAlarmParamJson() into a #tag_MsgUrgentAlarmSetting.
    PARA_SNAP = 34, ///< Section "PSNAP": ParseSnapParamJson() into a #paramSnapSetting_t.
    PARA_DISTANCE_SNAP = 35, ///< Section "DSP": ParseDistanceSnapParamJson() into a #paramDistanceSnapSetting_t.
    PARA_VOLTAGE_PROTECT = 36, ///< Section "VPP": ParseVoltageProtectParamJson() into a #tag_MsgVoltageProtectSetting.
    PARA_COLLIDE_ALARM = 37, ///< Section "PCAS": ParseCollideAlarmParamJson() into a #tag_MsgCollideAlarmSetting.
    PARA_HIT_ALARM = 38, ///< Section "PHAS": ParseHitAlarmParamJson() into a #tag_MsgHitAlarmSetting.
    PARA_VEHICLE_STANCE_ALARM = 39, ///< Section "PVTSAS": ParseVehicleStanceAlarmParamJson() into a #tag_MsgVehicleStanceAlarm.
    PARA_TIRE_PRESSURE = 40, ///< Section "TPP": ParseTirePressureParamJson() into a #tag_msgWTPMSProperty.
    PARA_STD_TEMP_ALARM = 41, ///< Section "STMPA": ParseStdTempAlarmParamJson() into a #tag_msgStdTempAlarmSetting.
    PARA_FATIGUE_DRIVE_ALARM = 42, ///< Section "FDAS": ParseFatigueDriveAlarmParamJson() into a #tag_MsgFatigueDriveAlarmSetting.
    PARA_TIMEOUT_PARK_ALARM = 43, ///< Section "TPAS": ParseTimeoutParkAlarmParamJson() into a #tag_MsgTimeoutParkAlarmSetting.
    PARA_HARDWARE_MANAGE = 44, ///< Section "HMP": ParseHardwareManageParamJson() into a #tag_MsgHardwareManageSetting.
    PARA_FUEL_ALARM = 45, ///< Section "FAS": ParseFuelAlarmParamJson() into a #tag_msgFuelAlarmSetting.
    PARA_POWER_SWITCH = 46, ///< Section "SSP": ParsePowerSwitchParamJson() into a #tag_MsgSwitchSetting.
    PARA_SERIAL = 47, ///< Section "PSS": ParseSerialParamJson() into a #tag_MsgSerialSetting.
    PARA_CAN = 48, ///< Section "CAN": ParseCanParamJson() into a #tag_msgCanSetting.
    PARA_PERIP_ETHERNET = 49, ///< Section "PEN": ParsePeripEtherNetParamJson() into a #tag_msgPeripEnetSetting.
    PARA_VIEW_OSD = 50, ///< Section "DOSD": ParseViewOsdParamJson() into a #tag_MsgViewOsdSetting.
    PARA_STD_DSM_ALARM = 51, ///< Section "DSM": ParseStdDsmAlarmParamJson() into a #tag_msgStdDSMAlarmSetting.
    PARA_TYPE_RESERVED = 52, ///< 52 to 60: reserved; AdaptParaJson() logs "Unrealized parameter" and returns -1.
    PARA_TYPE_INVALID = 61   ///< 61 and above: invalid; AdaptParaJson() logs "Error parameter type" and returns -1.
};
static_assert(sizeof(_PARA_TYPE_) == 4, "parameter type is passed as 32 bits");

/// Runs the section parser of @p type on a parameter document.
/// @param type   the parameter type; it fixes the parser and the record type (see #_PARA_TYPE_)
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the caller's record of the type's record type; neither its size nor its type is
///               checked, and reserved bytes and unread array elements keep their values
/// @return the parser's result: 0 when the section was read, -1 when it is empty or absent
///         (nothing written). -1 without writing for a null @p record (not logged) and for a
///         type without a parser, logged at level 0: "Unrealized parameter: %d!!!" for 52 to 60
///         and for negative values, "Error parameter type: %d!!!" for 61 and above. No
///         exception leaves it.
BSCOMMON_API int AdaptParaJson(_PARA_TYPE_ type, Json::Value const& doc, void* record);

/// Parses the JSON body of a bus message into @p root.
/// @param buffer the whole message: the 16-byte Common::SMessageHead, then the JSON text. The
///               header is skipped unread, so a JSON text alone needs 16 bytes in front of it.
/// @param length the length of the whole buffer, header included: the text is bytes 16 to
///               @p length
/// @param root   receives the document; after a failed parse it holds whatever the JSON reader
///               left
/// @return 1 when the text parsed; 0 on a syntax error (not logged), for a null @p buffer or a
///         @p length below 16 (not logged, @p root untouched), and on an exception from the JSON
///         reader (logged at level 0 as "Failed to parse json msg!").
BSCOMMON_API int ParseJsonMessage(char const* buffer, int length, Json::Value& root);

#endif
