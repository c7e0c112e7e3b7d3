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
