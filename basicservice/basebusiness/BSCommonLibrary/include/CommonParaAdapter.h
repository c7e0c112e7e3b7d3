// Parameter adaptation: JSON parameter documents {"PARAMETER":{"MDVR":{...}}}
// turned into the fixed-layout binary records shared by the recorder's
// processes.
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

// Selects the parser (and so the record type) in AdaptParaJson. Only the
// values are part of the interface; 52 to 60 are reserved, 61 and above invalid.
enum _PARA_TYPE_ : int {
    PARA_ADJUST_TIME = 0,          // tag_MsgAdjustTimeSetting
    PARA_TIME_SETTING = 1,         // tag_MsgTimeSetting
    PARA_AREA_ALARM = 2,           // tag_msgAreaAlarmSetting
    PARA_PBT_GENERAL = 3,          // tag_MsgPBTGeneralSetting
    PARA_GENERAL = 4,              // tag_MsgGeneralSetting
    PARA_NIGHT = 5,                // tag_MsgNightSetting
    PARA_SPEED_ALARM = 6,          // tag_MsgSpeedAlarmSetting
    PARA_AREA_LIMIT = 7,           // tag_msgAreaLimitSetting
    PARA_FTP = 8,                  // paramFtpSetting_t
    PARA_FTP_EXTRA = 9,            // paramFtpSetting_t
    PARA_MAIN_STREAM = 10,         // tag_MsgVideoEncodeSetting
    PARA_ASSIST_RECORD = 11,       // tag_MsgAssistRecordSetting
    PARA_NET_TRANSFER = 12,        // tag_MsgNetTransferSetting
    PARA_REGISTER = 13,            // tag_MsgRegisterSetting
    PARA_IO_ALARM = 14,            // tag_MsgIOAlarmSetting
    PARA_ENCODE_OSD = 15,          // tag_MsgEncodeOsdSetting
    PARA_RECORD = 16,              // tag_MsgRecordSetting
    PARA_3G = 17,                  // tag_Msg3GSetting
    PARA_CMS = 18,                 // tag_MsgCmsSetting
    PARA_VEHICLE = 19,             // tag_MsgVehicleSetting
    PARA_PRODUCT = 20,             // tag_MsgProductSetting
    PARA_PLATFORM = 21,            // tag_MsgPlatformSetting
    PARA_ETHERNET = 22,            // tag_MsgEtherNetSetting
    PARA_REMOTE_DEV_NODE = 23,     // tag_MsgRemoteDevNodeSetting
    PARA_HISTORY_MILEAGE = 24,     // tag_msgHistoryMileSetting
    PARA_GREEN_DRIVER = 25,        // tag_MsgGreenDriverSet
    PARA_VT_FAULT = 26,            // tag_msgVTFaultInfoSetting
    PARA_KEY = 27,                 // tag_MsgKeySetting
    PARA_MAINT_FTP = 28,           // tag_msgMaintFtpSetting
    PARA_ACCEL_ALARM = 29,         // tag_msgAccelAlarmSetting
    PARA_MD_ALARM = 30,            // tag_MsgMDAlarmSetting
    PARA_VS_ALARM = 31,            // tag_MsgVSAlarmSetting
    PARA_VL_ALARM = 32,            // tag_MsgVLAlarmSetting
    PARA_URGENT_ALARM = 33,        // tag_MsgUrgentAlarmSetting
    PARA_SNAP = 34,                // paramSnapSetting_t
    PARA_DISTANCE_SNAP = 35,       // paramDistanceSnapSetting_t
    PARA_VOLTAGE_PROTECT = 36,     // tag_MsgVoltageProtectSetting
    PARA_COLLIDE_ALARM = 37,       // tag_MsgCollideAlarmSetting
    PARA_HIT_ALARM = 38,           // tag_MsgHitAlarmSetting
    PARA_VEHICLE_STANCE_ALARM = 39, // tag_MsgVehicleStanceAlarm
    PARA_TIRE_PRESSURE = 40,       // tag_msgWTPMSProperty
    PARA_STD_TEMP_ALARM = 41,      // tag_msgStdTempAlarmSetting
    PARA_FATIGUE_DRIVE_ALARM = 42, // tag_MsgFatigueDriveAlarmSetting
    PARA_TIMEOUT_PARK_ALARM = 43,  // tag_MsgTimeoutParkAlarmSetting
    PARA_HARDWARE_MANAGE = 44,     // tag_MsgHardwareManageSetting
    PARA_FUEL_ALARM = 45,          // tag_msgFuelAlarmSetting
    PARA_POWER_SWITCH = 46,        // tag_MsgSwitchSetting
    PARA_SERIAL = 47,              // tag_MsgSerialSetting
    PARA_CAN = 48,                 // tag_msgCanSetting
    PARA_PERIP_ETHERNET = 49,      // tag_msgPeripEnetSetting
    PARA_VIEW_OSD = 50,            // tag_MsgViewOsdSetting
    PARA_STD_DSM_ALARM = 51,       // tag_msgStdDSMAlarmSetting
    PARA_TYPE_RESERVED = 52,       // 52 to 60: reserved, no parser
    PARA_TYPE_INVALID = 61         // 61 and above: invalid
};
static_assert(sizeof(_PARA_TYPE_) == 4, "parameter type is passed as 32 bits");

// Runs the parser of `type` on the document `doc` into the record at `record`,
// whose type the parameter type fixes. Returns the parser's result, -1 for a
// type without a parser (or a null record).
BSCOMMON_API int AdaptParaJson(_PARA_TYPE_ type, Json::Value const& doc, void* record);

// Parses the JSON text that follows the 16-byte bus header of a received
// message (`length` counts the whole buffer). Returns 1 when it parsed, else 0.
BSCOMMON_API int ParseJsonMessage(char const* buffer, int length, Json::Value& root);

#endif
