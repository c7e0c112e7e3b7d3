// Device and system parameter sections.
#include "DeviceParams.h"
#include "ParaLog.h"

using para::Section;
using para::WalkSection;

int ParseAdjustTimeParamJson(Json::Value const& doc, tag_MsgAdjustTimeSetting& record)
{
    return PARA_WALK_OR_LOG(Section(doc, "ATP"), record, "empty param json: ATP\n");
}

int ParseTimeSettingParamJson(Json::Value const& doc, tag_MsgTimeSetting& record)
{
    return PARA_WALK_OR_LOG(Section(doc, "TIMEP"), record, "empty param json: TIMEP\n");
}

int ParsePBTGeneralParamJson(Json::Value const& doc, tag_MsgPBTGeneralSetting& record)
{
    const Json::Value& section = Section(doc, "GS");
    if (section.empty()) {
        PARA_LOG_ERROR("empty param json : GS!\n");
        return -1;
    }
    // Nothing in the walk is expected to throw: member lookups never do and
    // the readers catch their own exceptions. The guard stays because this
    // section promises its own failure message, and so that a later change
    // of the description or of the JSON library cannot let an exception out.
    try {
        return WalkSection(section, record);
    } catch (...) {
        PARA_LOG_ERROR("failed to parse PBT General param!\n");
        return -1;
    }
}

int ParseGeneralParamJson(Json::Value const& doc, tag_MsgGeneralSetting& record)
{
    return PARA_WALK_OR_LOG(Section(doc, "GSP"), record, "empty param json : GSP!\n");
}

// The sections below report an empty or absent section only through -1.

int ParseNightParamJson(Json::Value const& doc, tag_MsgNightSetting& record)
{
    return WalkSection(Section(doc, "NIGHT"), record);
}

int ParseVehicleParamJson(Json::Value const& doc, tag_MsgVehicleSetting& record)
{
    return WalkSection(Section(doc, "VS"), record);
}

int ParseProductParamJson(Json::Value const& doc, tag_MsgProductSetting& record)
{
    return WalkSection(Section(doc, "PS"), record);
}

int ParseHistoryMileageParamJson(Json::Value const& doc, tag_msgHistoryMileSetting& record)
{
    return WalkSection(Section(doc, "HMIP"), record);
}

int ParseKeyParamJson(Json::Value const& doc, tag_MsgKeySetting& record)
{
    return WalkSection(Section(doc, "KEYS"), record);
}

int ParseVoltageProtectParamJson(Json::Value const& doc, tag_MsgVoltageProtectSetting& record)
{
    return WalkSection(Section(doc, "VPP"), record);
}

int ParseHardwareManageParamJson(Json::Value const& doc, tag_MsgHardwareManageSetting& record)
{
    return WalkSection(Section(doc, "HMP"), record);
}

int ParsePowerSwitchParamJson(Json::Value const& doc, tag_MsgSwitchSetting& record)
{
    return WalkSection(Section(doc, "SSP"), record);
}
