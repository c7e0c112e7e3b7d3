// Mobile network and dial-up, Ethernet, peripheral Ethernet, remote device
// node, serial and CAN port sections.
#include "NetworkParams.h"
#include "ParaLog.h"

using para::Section;
using para::WalkSection;

// Takes the profile object itself; any JSON kind is safe: a value that is no
// object but not empty either (a number, a text) gives every field its default.
int ParseBoHaoParamJson(Json::Value const& object, paramBoHaoParam_t& record)
{
    return PARA_WALK_OR_LOG(object, record, "empty json when parse BoHaoParam!\n");
}

// A missing "MP" or "M4G" is reported by the profile parser and leaves that
// profile as it was; the section still succeeds.
int Parse3GParamJson(Json::Value const& doc, tag_Msg3GSetting& record)
{
    return WalkSection(Section(doc, "M3G"), record);
}

int ParseEtherNetParamJson(Json::Value const& doc, tag_MsgEtherNetSetting& record)
{
    return WalkSection(Section(doc, "ETHERNET"), record);
}

// A non-array "REDEV" passes the empty test but has no element to read.
int ParseRemoteDevNodeParamJson(Json::Value const& doc, tag_MsgRemoteDevNodeSetting& record)
{
    return WalkSection(Section(doc, "REDEV"), record);
}

int ParsePeripEtherNetParamJson(Json::Value const& doc, tag_msgPeripEnetSetting& record)
{
    return WalkSection(Section(doc, "PEN"), record);
}

int ParseSerialParamJson(Json::Value const& doc, tag_MsgSerialSetting& record)
{
    return WalkSection(Section(doc, "PSS"), record);
}

int ParseCanParamJson(Json::Value const& doc, tag_msgCanSetting& record)
{
    return WalkSection(Section(doc, "CAN"), record);
}
