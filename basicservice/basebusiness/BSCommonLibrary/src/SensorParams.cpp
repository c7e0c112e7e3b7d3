// Driving-behaviour thresholds, green driving, motion and stance alarms, tyre
// pressure, temperature, fuel, vehicle-fault and DSM alarm sections.
#include "SensorParams.h"
#include "ParaLog.h"

using para::Section;
using para::WalkSection;

// ---------------------------------------------------------------------------
// Threshold records: called on "PGDS" "ATH1" and "ATH2", and by clients.

int ParseGDSAlarmThresh1(Json::Value const& object, paramAlarmThresh1_t& record)
{
    return PARA_WALK_OR_LOG(object, record, "empty json when parse paramAlarmThresh1_t!\n");
}

int ParseGDSAlarmThresh2(Json::Value const& object, paramAlarmThresh2_t& record)
{
    return PARA_WALK_OR_LOG(object, record, "empty json when parse paramAlarmThresh2_t!\n");
}

// ---------------------------------------------------------------------------
// Sections. None of them logs an empty or absent section.

// The threshold records' results do not change the section's.
int ParseGreenDriverParamJson(Json::Value const& doc, tag_MsgGreenDriverSet& record)
{
    return WalkSection(Section(doc, "PGDS"), record);
}

int ParseAccelAlarmParamJson(Json::Value const& doc, tag_msgAccelAlarmSetting& record)
{
    return WalkSection(Section(doc, "ACC"), record);
}

int ParseCollideAlarmParamJson(Json::Value const& doc, tag_MsgCollideAlarmSetting& record)
{
    return WalkSection(Section(doc, "PCAS"), record);
}

int ParseHitAlarmParamJson(Json::Value const& doc, tag_MsgHitAlarmSetting& record)
{
    return WalkSection(Section(doc, "PHAS"), record);
}

// A non-array "PVTSAS" passes the empty test but has no element to read.
int ParseVehicleStanceAlarmParamJson(Json::Value const& doc, tag_MsgVehicleStanceAlarm& record)
{
    return WalkSection(Section(doc, "PVTSAS"), record);
}

int ParseTirePressureParamJson(Json::Value const& doc, tag_msgWTPMSProperty& record)
{
    return WalkSection(Section(doc, "TPP"), record);
}

// A non-array "STMPA" passes the empty test but has no element to read.
int ParseStdTempAlarmParamJson(Json::Value const& doc, tag_msgStdTempAlarmSetting& record)
{
    return WalkSection(Section(doc, "STMPA"), record);
}

int ParseVTFaultParamJson(Json::Value const& doc, tag_msgVTFaultInfoSetting& record)
{
    return WalkSection(Section(doc, "VTFS"), record);
}

int ParseFuelAlarmParamJson(Json::Value const& doc, tag_msgFuelAlarmSetting& record)
{
    return WalkSection(Section(doc, "FAS"), record);
}

int ParseStdDsmAlarmParamJson(Json::Value const& doc, tag_msgStdDSMAlarmSetting& record)
{
    return WalkSection(Section(doc, "DSM"), record);
}
