// Device and system parameter sections.
#include "DeviceParams.h"
#include "ParaLog.h"

using para::Section;
using para::WalkSection;

int ParseAdjustTimeParamJson(Json::Value const& doc, tag_MsgAdjustTimeSetting& record)
{
    const Json::Value& section = Section(doc, "ATP");
    if (section.empty()) {
        PARA_LOG_ERROR("empty param json: ATP\n");
        return -1;
    }
    return WalkSection(section, record);
}

int ParseTimeSettingParamJson(Json::Value const& doc, tag_MsgTimeSetting& record)
{
    const Json::Value& section = Section(doc, "TIMEP");
    if (section.empty()) {
        PARA_LOG_ERROR("empty param json: TIMEP\n");
        return -1;
    }
    return WalkSection(section, record);
}
