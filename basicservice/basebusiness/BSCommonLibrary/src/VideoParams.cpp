// Video, recording, on-screen-display and snapshot parameter sections.
#include "VideoParams.h"

using para::Section;
using para::WalkSection;

// Every section of this subsystem reports an empty or absent section only
// through -1.

int ParseMainStreamParamJson(Json::Value const& doc, tag_MsgVideoEncodeSetting& record)
{
    return WalkSection(Section(doc, "MAIN"), record);
}

int ParseAssistRecordParamJson(Json::Value const& doc, tag_MsgAssistRecordSetting& record)
{
    return WalkSection(Section(doc, "AR"), record);
}

int ParseNetTransferParamJson(Json::Value const& doc, tag_MsgNetTransferSetting& record)
{
    return WalkSection(Section(doc, "SUBSTRNET"), record);
}

int ParseEncodeOSDParamJson(Json::Value const& doc, tag_MsgEncodeOsdSetting& record)
{
    return WalkSection(Section(doc, "EOSD"), record);
}

int ParseRecordParamJson(Json::Value const& doc, tag_MsgRecordSetting& record)
{
    return WalkSection(Section(doc, "RP"), record);
}

// The snapshot sets are handed to ParseNCommonSnapPara<16> even when their
// "CSP" is absent; what it then does is its own affair, its result is not used.
int ParseSnapParamJson(Json::Value const& doc, paramSnapSetting_t& record)
{
    return WalkSection(Section(doc, "PSNAP"), record);
}

int ParseDistanceSnapParamJson(Json::Value const& doc, paramDistanceSnapSetting_t& record)
{
    return WalkSection(Section(doc, "DSP"), record);
}

int ParseViewOsdParamJson(Json::Value const& doc, tag_MsgViewOsdSetting& record)
{
    return WalkSection(Section(doc, "DOSD"), record);
}
