// Descriptions of the FTP, registration, centre-server and platform records.
#ifndef SERVER_PARAMS_H
#define SERVER_PARAMS_H

#include "ParaServerRecords.h"
#include "ParaSteps.h"

namespace para {

template <class W> void Describe(W& w, paramFtpSetting_t& r)
{
    PARA_FIELD(2, EN);
    PARA_FIELD(0, PORT);
    PARA_RESERVED(3, reserved0);
    PARA_TEXT(8, SERVERIP);
    PARA_TEXT(72, LOGINUSER);
    PARA_TEXT(136, LOGINPWD);
    PARA_TEXT(168, SUBFOLDER);
}

template <class W> void Describe(W& w, tag_msgMaintFtpSetting& r)
{
    PARA_TEXT(0, FPT);
    PARA_TEXT(128, FBD);
    PARA_TEXT(256, FRV);
    PARA_FIELD(384, WLST);
    PARA_FIELD(388, WLET);
    PARA_FIELD(392, RDST);
    PARA_FIELD(396, RDET);
    PARA_FIELD(400, DELV);
    PARA_RESERVED(401, reserved0);
}

// The integers first, then the texts.
template <class W> void Describe(W& w, tag_MsgRegisterSetting& r)
{
    PARA_FIELD(176, DEVT);
    PARA_FIELD(193, RT);
    PARA_FIELD(194, RS);
    PARA_FIELD(195, USE);
    PARA_FIELD(196, SST);
    PARA_FIELD(204, SCH);
    PARA_FIELD(206, DEVP);
    PARA_TEXT(0, DEVID);
    PARA_TEXT(32, BN);
    PARA_TEXT(48, BID);
    PARA_TEXT(80, LN);
    PARA_TEXT(112, DID);
    PARA_TEXT(144, DNAME);
    PARA_TEXT(177, PN);
    PARA_TEXT(197, COC);
    PARA_TEXT(200, RWC);
    PARA_RESERVED(207, reserved0);
}

template <class W> void Describe(W& w, tag_MsgCmsServer& r)
{
    PARA_FIELD(0, EN);
    PARA_FIELD(1, NWT);
    PARA_FIELD(2, CP);
    PARA_FIELD(100, CPORT);
    PARA_FIELD(102, MPORT);
    PARA_FIELD(104, CUPORT);
    PARA_FIELD(106, MUPORT);
    PARA_FIELD(3, LGK);
    PARA_TEXT(4, CS);
    PARA_TEXT(52, MS);
    PARA_RESERVED(108, reserved0);
}

template <class W> void Describe(W& w, tag_MsgCmsSetting& r)
{
    PARA_FIELD(0, M);
    PARA_ARRAY(4, SP);
}

template <class W> void Describe(W& w, tag_MsgPlatformEntry& r)
{
    PARA_FIELD(0, E);
    PARA_FIELD(4, CC);
    PARA_TEXT(8, TID);
    PARA_TEXT(40, AC);
    PARA_TEXT(168, N);
    PARA_GROUP("CS",
        PARA_FIELD_KEY(544, CS_STE, "STE");
        PARA_TEXT_KEY(296, CS_MP, "MP");
        PARA_TEXT_KEY(328, CS_SP, "SP");
        PARA_TEXT_KEY(360, CS_DP, "DP");
        PARA_TEXT_KEY(392, CS_MSP, "MSP");
        PARA_TEXT_KEY(424, CS_RSP, "RSP");
        PARA_TEXT_KEY(520, CS_RSP2, "RSP2");
        PARA_TEXT_KEY(456, CS_LP, "LP");
        PARA_TEXT_KEY(488, CS_PP, "PP"));
    PARA_RESERVED(545, reserved0);
    PARA_GROUP("GPS",
        PARA_FIELD_KEY(552, GPS_RS, "RS");
        PARA_FIELD_KEY(556, GPS_RSC, "RSC");
        PARA_FIELD_KEY(560, GPS_DR, "DR");
        PARA_FIELD_KEY(564, GPS_DI, "DI");
        PARA_FIELD_KEY(568, GPS_UAI, "UAI");
        PARA_FIELD_KEY(572, GPS_DTI, "DTI");
        PARA_FIELD_KEY(576, GPS_DDI, "DDI");
        PARA_FIELD_KEY(580, GPS_NDDI, "NDDI");
        PARA_FIELD_KEY(584, GPS_DD, "DD");
        PARA_FIELD_KEY(588, GPS_DADI, "DADI");
        PARA_FIELD_KEY(592, GPS_UT, "UT");
        PARA_FIELD_KEY(596, GPS_SA, "SA");
        PARA_FIELD_KEY(604, GPS_EIV, "EIV");
        PARA_FIELD_KEY(600, GPS_EIT, "EIT");
        PARA_FIELD_KEY(593, GPS_EN, "EN");
        PARA_FIELD_KEY(608, GPS_AIT, "AIT");
        PARA_FIELD_KEY(610, GPS_ATS, "ATS");
        PARA_FIELD_KEY(612, GPS_VAM, "VAM"));
    PARA_RESERVED(594, reserved1);
    PARA_RESERVED(616, reserved2);
    PARA_GROUP("NCS",
        PARA_FIELD_KEY(624, NCS_H, "H");
        PARA_FIELD_KEY(628, NCS_TOT, "TOT");
        PARA_FIELD_KEY(632, NCS_TST, "TST");
        PARA_FIELD_KEY(636, NCS_UOT, "UOT");
        PARA_FIELD_KEY(640, NCS_UST, "UST");
        PARA_FIELD_KEY(644, NCS_SOT, "SOT");
        PARA_FIELD_KEY(648, NCS_SST, "SST"));
    PARA_RESERVED(652, reserved3);
    PARA_GROUP("ICS",
        PARA_FIELD_KEY(684, ICS_TPORT, "TPORT");
        PARA_FIELD_KEY(686, ICS_UPORT, "UPORT");
        PARA_FIELD_KEY(688, ICS_LM, "LM");
        PARA_TEXT_KEY(692, ICS_MSA, "MSA");
        PARA_TEXT_KEY(756, ICS_BSA, "BSA"));
    PARA_RESERVED(689, reserved4);
    PARA_RESERVED(820, reserved5);
}

template <class W> void Describe(W& w, tag_MsgPlatformSetting& r)
{
    PARA_RESERVED(0, reserved0);
    PARA_GROUP("CG",
        PARA_FIELD(8, ECL);
        PARA_FIELD(12, ECML);
        PARA_FIELD(16, AS);
        PARA_FIELD(17, UEM);
        PARA_FIELD(18, RDI);
        PARA_FIELD(19, ESSE);
        PARA_FIELD(20, AT);
        PARA_FIELD(22, DSSE);
        PARA_FIELD(23, UNT);
        PARA_FIELD(24, TUI);
        PARA_FIELD(28, NPT));
    PARA_RESERVED(29, reserved1);
    PARA_ARRAY(52, P1);
}

} // namespace para

// The parameter types of this subsystem: X(type, section key, parser, record).
// "FTPS" and "FTPEX" fill the same record.
#define PARA_TYPES_SERVER(X)                                                      \
    X(8, "FTPS", ParseFtpParamJson, paramFtpSetting_t)                            \
    X(9, "FTPEX", ParseFtpExtralParamJson, paramFtpSetting_t)                     \
    X(13, "RIP", ParseRegisterParamJson, tag_MsgRegisterSetting)                  \
    X(18, "MCMS", ParseCmsParamJson, tag_MsgCmsSetting)                           \
    X(21, "PSI", ParsePlatformParamJson, tag_MsgPlatformSetting)                  \
    X(28, "MNTFTP", ParseMaintFtpParamJson, tag_msgMaintFtpSetting)

#endif
