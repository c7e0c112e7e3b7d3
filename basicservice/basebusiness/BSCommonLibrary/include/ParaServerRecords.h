// FTP, registration, centre-server and platform parameter records and their
// parsers. Offsets and sizes are those of the 32-bit ARM recorder and are
// checked at compile time.
#ifndef PARA_SERVER_RECORDS_H
#define PARA_SERVER_RECORDS_H

#include "BSCommonExport.h"

#include <json/value.h>

// "FTPS" and "FTPEX": an FTP upload server. Both sections fill this record.
struct paramFtpSetting_t {
    unsigned short PORT;
    unsigned char EN;
    unsigned char reserved0[5];
    char SERVERIP[64];
    char LOGINUSER[64];
    char LOGINPWD[32]; // plain text
    char SUBFOLDER[32];
};
BSCOMMON_RECORD_SIZE(paramFtpSetting_t, 200);

// "MNTFTP": maintenance FTP paths and two time windows (start/end pairs).
struct tag_msgMaintFtpSetting {
    char FPT[128];
    char FBD[128];
    char FRV[128];
    unsigned int WLST;
    unsigned int WLET;
    unsigned int RDST;
    unsigned int RDET;
    unsigned char DELV;
    unsigned char reserved0[3]; // tail padding to the 4-byte alignment
};
BSCOMMON_RECORD_SIZE(tag_msgMaintFtpSetting, 404);

BSCOMMON_API int ParseFtpParamJson(Json::Value const& doc, paramFtpSetting_t& record);
BSCOMMON_API int ParseFtpExtralParamJson(Json::Value const& doc, paramFtpSetting_t& record);
BSCOMMON_API int ParseMaintFtpParamJson(Json::Value const& doc, tag_msgMaintFtpSetting& record);

// "RIP": the device's identity towards its servers. Byte-packed: the 8-bit
// integers sit between the texts, PN starts at the odd offset 177 and COC has
// no room for a terminator.
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
    unsigned char reserved0[1]; // tail padding to the 2-byte alignment
};
BSCOMMON_RECORD_SIZE(tag_MsgRegisterSetting, 208);

// One centre server ("MCMS" -> "SP"[i]).
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
    unsigned char reserved0[16];
};
BSCOMMON_RECORD_SIZE(tag_MsgCmsServer, 124);

// "MCMS": the centre servers.
struct tag_MsgCmsSetting {
    unsigned int M;
    tag_MsgCmsServer SP[6];
};
BSCOMMON_RECORD_SIZE(tag_MsgCmsSetting, 748);

BSCOMMON_API int ParseRegisterParamJson(Json::Value const& doc, tag_MsgRegisterSetting& record);
BSCOMMON_API int ParseCmsParamJson(Json::Value const& doc, tag_MsgCmsSetting& record);

// One platform ("PSI" -> "P1"[i]); the groups "CS", "GPS", "NCS" and "ICS"
// are flattened into fields named group_key.
struct tag_MsgPlatformEntry {
    unsigned int E;
    unsigned int CC;
    char TID[32];
    char AC[128];
    char N[128];
    char CS_MP[32];
    char CS_SP[32];
    char CS_DP[32];
    char CS_MSP[32];
    char CS_RSP[32];
    char CS_LP[32];
    char CS_PP[32];
    char CS_RSP2[24];
    unsigned char CS_STE;
    unsigned char reserved0[7];
    unsigned int GPS_RS;
    unsigned int GPS_RSC;
    unsigned int GPS_DR;
    unsigned int GPS_DI;
    unsigned int GPS_UAI;
    unsigned int GPS_DTI;
    unsigned int GPS_DDI;
    unsigned int GPS_NDDI;
    unsigned int GPS_DD;
    unsigned int GPS_DADI;
    unsigned char GPS_UT;
    unsigned char GPS_EN;
    unsigned char reserved1[2];
    unsigned int GPS_SA;
    unsigned int GPS_EIT;
    unsigned int GPS_EIV;
    unsigned short GPS_AIT;
    unsigned short GPS_ATS;
    unsigned int GPS_VAM;
    unsigned char reserved2[8];
    unsigned int NCS_H;
    unsigned int NCS_TOT;
    unsigned int NCS_TST;
    unsigned int NCS_UOT;
    unsigned int NCS_UST;
    unsigned int NCS_SOT;
    unsigned int NCS_SST;
    unsigned char reserved3[32];
    unsigned short ICS_TPORT;
    unsigned short ICS_UPORT;
    unsigned char ICS_LM;
    unsigned char reserved4[3];
    char ICS_MSA[64];
    char ICS_BSA[64];
    unsigned char reserved5[32];
};
BSCOMMON_RECORD_SIZE(tag_MsgPlatformEntry, 852);

// "PSI": the common group "CG" and up to six platforms.
struct tag_MsgPlatformSetting {
    unsigned char reserved0[8];
    unsigned int ECL;
    unsigned int ECML;
    unsigned char AS;
    unsigned char UEM;
    unsigned char RDI;
    unsigned char ESSE;
    unsigned short AT;
    unsigned char DSSE;
    unsigned char UNT;
    unsigned int TUI;
    unsigned char NPT;
    unsigned char reserved1[23];
    tag_MsgPlatformEntry P1[6];
};
BSCOMMON_RECORD_SIZE(tag_MsgPlatformSetting, 5164);

BSCOMMON_API int ParsePlatformParamJson(Json::Value const& doc, tag_MsgPlatformSetting& record);

#endif
