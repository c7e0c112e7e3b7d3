// Alarm sub-records, the motion-detection region conversion and the area,
// speed, area-limit, IO, urgent, video-analysis, fatigue-driving and
// timeout-parking alarm sections.
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

// The value of a hexadecimal digit in the low 4 bits; any other character
// gives the low bits of the same subtraction. The code counts as unsigned, as
// plain char is on the recorder, so every host packs the same bytes.
unsigned char Nibble(char c)
{
    const unsigned char code = static_cast<unsigned char>(c);
    return static_cast<unsigned char>(code > 0x40 ? code - 0x37 : code - 0x30);
}

} // namespace

// ---------------------------------------------------------------------------
// Motion-detection region

int ParseMDRegion(char const* text, int textLength, char* out, int outLength)
{
    if (!text || !out)
        return 1;
    // In 64 bits: textLength - 1 and 2 i overflow no int.
    const long long lastPair = static_cast<long long>(textLength) - 1;
    unsigned char* bytes = reinterpret_cast<unsigned char*>(out);
    for (long long i = 0; 2 * i < lastPair && i < outLength; ++i)
        bytes[i] = static_cast<unsigned char>(Nibble(text[2 * i]) << 4 | (Nibble(text[2 * i + 1]) & 0x0F));
    return 1;
}

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

int ParseMDAlarmParamJson(Json::Value const& doc, tag_MsgMDAlarmSetting& record)
{
    return WalkSection(Section(doc, "PMDAS"), record);
}

int ParseVSAlarmParamJson(Json::Value const& doc, tag_MsgVSAlarmSetting& record)
{
    return WalkSection(Section(doc, "PVSAS"), record);
}

int ParseVLAlarmParamJson(Json::Value const& doc, tag_MsgVLAlarmSetting& record)
{
    return WalkSection(Section(doc, "PVLAS"), record);
}

int ParseFatigueDriveAlarmParamJson(Json::Value const& doc, tag_MsgFatigueDriveAlarmSetting& record)
{
    return WalkSection(Section(doc, "FDAS"), record);
}

int ParseTimeoutParkAlarmParamJson(Json::Value const& doc, tag_MsgTimeoutParkAlarmSetting& record)
{
    return WalkSection(Section(doc, "TPAS"), record);
}
