/// @file
/// FTP, registration, centre-server and platform parameter records and their
/// parsers. Offsets and sizes are those of the 32-bit ARM recorder and are
/// checked at compile time.
#ifndef PARA_SERVER_RECORDS_H
#define PARA_SERVER_RECORDS_H

#include "BSCommonExport.h"

#include <json/value.h>

/// An FTP upload server. Both sections "FTPS" and "FTPEX" fill this record. Section "FTPS" (parameter
/// type 8, #PARA_FTP), read by ParseFtpParamJson(). Section "FTPEX" (parameter type 9,
/// #PARA_FTP_EXTRA), read by ParseFtpExtralParamJson().
struct paramFtpSetting_t {
    unsigned short PORT;
    unsigned char EN;
    unsigned char reserved0[5]; ///< Reserved: no parser writes these bytes.
    char SERVERIP[64];
    char LOGINUSER[64];
    char LOGINPWD[32]; ///< Plain text.
    char SUBFOLDER[32];
};
BSCOMMON_RECORD_SIZE(paramFtpSetting_t, 200);

/// Maintenance FTP paths and two time windows (start/end pairs). Section "MNTFTP" (parameter type
/// 28, #PARA_MAINT_FTP), read by ParseMaintFtpParamJson().
struct tag_msgMaintFtpSetting {
    char FPT[128];
    char FBD[128];
    char FRV[128];
    unsigned int WLST;
    unsigned int WLET;
    unsigned int RDST;
    unsigned int RDET;
    unsigned char DELV;
    unsigned char reserved0[3]; ///< Reserved: no parser writes these bytes (tail padding to the 4-byte alignment).
};
BSCOMMON_RECORD_SIZE(tag_msgMaintFtpSetting, 404);

/// Reads section "FTPS" of @p doc into @p record (parameter type 8, #PARA_FTP).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseFtpParamJson(Json::Value const& doc, paramFtpSetting_t& record);
/// Reads section "FTPEX" of @p doc into @p record (parameter type 9, #PARA_FTP_EXTRA).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseFtpExtralParamJson(Json::Value const& doc, paramFtpSetting_t& record);
/// Reads section "MNTFTP" of @p doc into @p record (parameter type 28, #PARA_MAINT_FTP).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseMaintFtpParamJson(Json::Value const& doc, tag_msgMaintFtpSetting& record);

/// The device's identity towards its servers. Byte-packed: the 8-bit integers sit between the
/// texts, PN starts at the odd offset 177 and COC has no room for a terminator. Section "RIP"
/// (parameter type 13, #PARA_REGISTER), read by ParseRegisterParamJson().
struct tag_MsgRegisterSetting {
    char DEVID[32];
    char BN[16];
    char BID[32];
    char LN[32];
    char DID[32];
    char DNAME[32];
    char DEVT;
    char PN[16];
    char RT;
    char RS;
    char USE;
    char SST;
    char COC[3];
    char RWC[4];
    unsigned short SCH;
    unsigned char DEVP;
    unsigned char reserved0[1]; ///< Reserved: no parser writes these bytes (tail padding to the 2-byte alignment).
};
BSCOMMON_RECORD_SIZE(tag_MsgRegisterSetting, 208);

/// One centre server ("MCMS" -> "SP"[i]).
struct tag_MsgCmsServer {
    unsigned char EN;
    unsigned char NWT;
    unsigned char CP;
    unsigned char LGK;
    char CS[48];
    char MS[48];
    unsigned short CPORT;
    unsigned short MPORT;
    unsigned short CUPORT;
    unsigned short MUPORT;
    unsigned char reserved0[16]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(tag_MsgCmsServer, 124);

/// The centre servers. Section "MCMS" (parameter type 18, #PARA_CMS), read by ParseCmsParamJson().
struct tag_MsgCmsSetting {
    unsigned int M;
    tag_MsgCmsServer SP[6]; ///< From the array SP: the first 6 elements are read.
};
BSCOMMON_RECORD_SIZE(tag_MsgCmsSetting, 748);

/// Reads section "RIP" of @p doc into @p record (parameter type 13, #PARA_REGISTER).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseRegisterParamJson(Json::Value const& doc, tag_MsgRegisterSetting& record);
/// Reads section "MCMS" of @p doc into @p record (parameter type 18, #PARA_CMS).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParseCmsParamJson(Json::Value const& doc, tag_MsgCmsSetting& record);

/// One platform ("PSI" -> "P1"[i]); the groups "CS", "GPS", "NCS" and "ICS" are flattened into
/// fields named group_key.
struct tag_MsgPlatformEntry {
    unsigned int E;
    unsigned int CC;
    char TID[32];
    char AC[128];
    char N[128];
    char CS_MP[32]; ///< From CS.MP.
    char CS_SP[32]; ///< From CS.SP.
    char CS_DP[32]; ///< From CS.DP.
    char CS_MSP[32]; ///< From CS.MSP.
    char CS_RSP[32]; ///< From CS.RSP.
    char CS_LP[32]; ///< From CS.LP.
    char CS_PP[32]; ///< From CS.PP.
    char CS_RSP2[24]; ///< From CS.RSP2.
    unsigned char CS_STE; ///< From CS.STE.
    unsigned char reserved0[7]; ///< Reserved: no parser writes these bytes.
    unsigned int GPS_RS; ///< From GPS.RS.
    unsigned int GPS_RSC; ///< From GPS.RSC.
    unsigned int GPS_DR; ///< From GPS.DR.
    unsigned int GPS_DI; ///< From GPS.DI.
    unsigned int GPS_UAI; ///< From GPS.UAI.
    unsigned int GPS_DTI; ///< From GPS.DTI.
    unsigned int GPS_DDI; ///< From GPS.DDI.
    unsigned int GPS_NDDI; ///< From GPS.NDDI.
    unsigned int GPS_DD; ///< From GPS.DD.
    unsigned int GPS_DADI; ///< From GPS.DADI.
    unsigned char GPS_UT; ///< From GPS.UT.
    unsigned char GPS_EN; ///< From GPS.EN.
    unsigned char reserved1[2]; ///< Reserved: no parser writes these bytes.
    unsigned int GPS_SA; ///< From GPS.SA.
    unsigned int GPS_EIT; ///< From GPS.EIT.
    unsigned int GPS_EIV; ///< From GPS.EIV.
    unsigned short GPS_AIT; ///< From GPS.AIT.
    unsigned short GPS_ATS; ///< From GPS.ATS.
    unsigned int GPS_VAM; ///< From GPS.VAM.
    unsigned char reserved2[8]; ///< Reserved: no parser writes these bytes.
    unsigned int NCS_H; ///< From NCS.H.
    unsigned int NCS_TOT; ///< From NCS.TOT.
    unsigned int NCS_TST; ///< From NCS.TST.
    unsigned int NCS_UOT; ///< From NCS.UOT.
    unsigned int NCS_UST; ///< From NCS.UST.
    unsigned int NCS_SOT; ///< From NCS.SOT.
    unsigned int NCS_SST; ///< From NCS.SST.
    unsigned char reserved3[32]; ///< Reserved: no parser writes these bytes.
    unsigned short ICS_TPORT; ///< From ICS.TPORT.
    unsigned short ICS_UPORT; ///< From ICS.UPORT.
    unsigned char ICS_LM; ///< From ICS.LM.
    unsigned char reserved4[3]; ///< Reserved: no parser writes these bytes.
    char ICS_MSA[64]; ///< From ICS.MSA.
    char ICS_BSA[64]; ///< From ICS.BSA.
    unsigned char reserved5[32]; ///< Reserved: no parser writes these bytes.
};
BSCOMMON_RECORD_SIZE(tag_MsgPlatformEntry, 852);

/// The common group "CG" and up to six platforms. Section "PSI" (parameter type 21,
/// #PARA_PLATFORM), read by ParsePlatformParamJson().
struct tag_MsgPlatformSetting {
    unsigned char reserved0[8]; ///< Reserved: no parser writes these bytes.
    unsigned int ECL; ///< From CG.ECL.
    unsigned int ECML; ///< From CG.ECML.
    unsigned char AS; ///< From CG.AS.
    unsigned char UEM; ///< From CG.UEM.
    unsigned char RDI; ///< From CG.RDI.
    unsigned char ESSE; ///< From CG.ESSE.
    unsigned short AT; ///< From CG.AT.
    unsigned char DSSE; ///< From CG.DSSE.
    unsigned char UNT; ///< From CG.UNT.
    unsigned int TUI; ///< From CG.TUI.
    unsigned char NPT; ///< From CG.NPT.
    unsigned char reserved1[23]; ///< Reserved: no parser writes these bytes.
    tag_MsgPlatformEntry P1[6]; ///< From the array P1: the first 6 elements are read.
};
BSCOMMON_RECORD_SIZE(tag_MsgPlatformSetting, 5164);

/// Reads section "PSI" of @p doc into @p record (parameter type 21, #PARA_PLATFORM).
/// @param doc    the whole parameter document {"PARAMETER":{"MDVR":{...}}}
/// @param record the record; reserved bytes and unread array elements keep their values
/// @return 0 when the section was read, whatever its keys held; -1, with nothing written,
///         when the section is empty or absent (some parsers log this at level 0).
BSCOMMON_API int ParsePlatformParamJson(Json::Value const& doc, tag_MsgPlatformSetting& record);

#endif
