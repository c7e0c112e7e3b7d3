// Typed, failure-tolerant readers of JSON values. Each stores either the
// converted value (result 0) or the default (result -1); none ever leaves its
// destination unwritten and none lets an exception out.
#ifndef PARA_JSON_READER_H
#define PARA_JSON_READER_H

#include "BSCommonExport.h"

#include <json/value.h>

BSCOMMON_API int GetJsonIntegral(Json::Value const& value, unsigned int& dst, unsigned int def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, int& dst, int def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, unsigned char& dst, unsigned char def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, signed char& dst, signed char def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, unsigned short& dst, unsigned short def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, short& dst, short def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, char& dst, char def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, long long& dst, long long def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, unsigned long long& dst, unsigned long long def);
BSCOMMON_API int GetJsonFloat(Json::Value const& value, float& dst, float def);
// Copies exactly `size` bytes: the text's first `size` bytes (no terminator
// when it fills the field), zero bytes after a shorter text, all zero on failure.
BSCOMMON_API int GetJsonCString(Json::Value const& value, char* dst, int size);
BSCOMMON_API int GetJsonCString(Json::Value const& value, unsigned char* dst, int size);

#endif
