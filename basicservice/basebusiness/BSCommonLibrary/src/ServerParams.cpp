// FTP, maintenance FTP, registration, centre-server and platform sections.
// None of them logs: an empty or absent section is reported only through -1.
#include "ServerParams.h"

using para::Section;
using para::WalkSection;

int ParseFtpParamJson(Json::Value const& doc, paramFtpSetting_t& record)
{
    return WalkSection(Section(doc, "FTPS"), record);
}

// The same record from its own section.
int ParseFtpExtralParamJson(Json::Value const& doc, paramFtpSetting_t& record)
{
    return WalkSection(Section(doc, "FTPEX"), record);
}

int ParseMaintFtpParamJson(Json::Value const& doc, tag_msgMaintFtpSetting& record)
{
    return WalkSection(Section(doc, "MNTFTP"), record);
}

int ParseRegisterParamJson(Json::Value const& doc, tag_MsgRegisterSetting& record)
{
    return WalkSection(Section(doc, "RIP"), record);
}

// Lookups go through const member access, so the caller's document is read,
// never changed, and no copy of the section is needed.
int ParseCmsParamJson(Json::Value const& doc, tag_MsgCmsSetting& record)
{
    return WalkSection(Section(doc, "MCMS"), record);
}

int ParsePlatformParamJson(Json::Value const& doc, tag_MsgPlatformSetting& record)
{
    return WalkSection(Section(doc, "PSI"), record);
}
