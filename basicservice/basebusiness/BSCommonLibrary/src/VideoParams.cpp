// Video, recording and snapshot parameter sections.
#include "VideoParams.h"

using para::Section;
using para::WalkSection;

// Both sections report an empty or absent section only through -1.

int ParseMainStreamParamJson(Json::Value const& doc, tag_MsgVideoEncodeSetting& record)
{
    return WalkSection(Section(doc, "MAIN"), record);
}

int ParseRecordParamJson(Json::Value const& doc, tag_MsgRecordSetting& record)
{
    return WalkSection(Section(doc, "RP"), record);
}
