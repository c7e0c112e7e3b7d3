// Alarm sub-records and the area, speed, area-limit, IO and urgent alarm
// sections.
#include "AlarmParams.h"
#include "ParaLog.h"

using para::Member;
using para::Section;
using para::WalkSection;

namespace {

// Reads like the parsers' walk and notes whether any embedded record was
// there to read (its parser returned 0).
struct NoteSubRecords : para::ReadLeaf {
    bool anyRead = false;

    template <class S, class Parser, class Walk> void Sub(const Json::Value& value, S& s, Parser parser, Walk&)
    {
        if (parser(value, s) == 0)
            anyRead = true;
    }
};

} // namespace

// ---------------------------------------------------------------------------
// Sub-records

int ParseAlarmLinkRecord(Json::Value const& object, alarmLinkRecord_t& record)
{
    return PARA_WALK_OR_LOG(object, record, "empty json when parse alarm link record!\n");
}

int ParseAlarmLinkSnapShot(Json::Value const& object, alarmLinkSnapShot& record)
{
    return PARA_WALK_OR_LOG(object, record, "empty json when parse alarm link snap shot!\n");
}

int ParseAlarmLinkOutput(Json::Value const& object, alarmLinkOutput_t& record)
{
    return PARA_WALK_OR_LOG(object, record, "empty json when parse alarm link output!\n");
}

int ParseAlarmLinkProcess(Json::Value const& object, alarmLinkProcess_t& record)
{
    if (object.empty()) {
        PARA_LOG_ERROR("empty json when parse alarm link process!\n");
        return -1;
    }
    para::BasicJsonWalk<NoteSubRecords> walk(object);
    para::Describe(walk, record);
    // 1 only when "AR", "SS" and "PS" were all empty or absent.
    return walk.leaf().anyRead ? 0 : 1;
}

int ParseAlarmPlan(Json::Value const& object, alarmPlan_t& record)
{
    if (object.empty() || Member(object, "I").empty()) {
        PARA_LOG_ERROR("empty json when parse alarm plan!\n");
        return -1;
    }
    return WalkSection(object, record);
}

int ParseCommonSnapPara(Json::Value const& object, CommonSnapPara_t& record)
{
    return PARA_WALK_OR_LOG(object, record, "empty json when parse comman snap para!\n");
}

template <int N> int ParseNCommonSnapPara(Json::Value const& list, CommonSnapPara_t (&paras)[N])
{
    para::ForEachElement(list, unsigned(N),
                         [&](unsigned i, const Json::Value& element) { ParseCommonSnapPara(element, paras[i]); });
    return 0;
}

template int ParseNCommonSnapPara<16>(Json::Value const& list, CommonSnapPara_t (&paras)[16]);

// ---------------------------------------------------------------------------
// Sections

int ParseAreaAlarmParamJson(Json::Value const& doc, tag_msgAreaAlarmSetting& record)
{
    return PARA_WALK_OR_LOG(Section(doc, "AREA"), record, "empty param json : AREA!\n");
}

int ParseSpeedAlarmParamJson(Json::Value const& doc, tag_MsgSpeedAlarmSetting& record)
{
    return WalkSection(Section(doc, "SAP"), record);
}

int ParseAreaLimitParamJson(Json::Value const& doc, tag_msgAreaLimitSetting& record)
{
    return WalkSection(Section(doc, "ARLM"), record);
}

// A non-array "IOP" passes the empty test but has no element to read.
int ParseIOAlarmParamJson(Json::Value const& doc, tag_MsgIOAlarmSetting& record)
{
    return WalkSection(Section(doc, "IOP"), record);
}

int ParseUrgentAlarmParamJson(Json::Value const& doc, tag_MsgUrgentAlarmSetting& record)
{
    return WalkSection(Section(doc, "UAP"), record);
}
