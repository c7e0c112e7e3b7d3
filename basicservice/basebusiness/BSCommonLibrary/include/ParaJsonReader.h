/// @file
/// Typed, failure-tolerant readers of JSON values. Each stores either the
/// converted value (result 0) or the default (result -1); none ever leaves its
/// destination unwritten and none lets an exception out. An exception of the
/// JSON library inside a conversion is logged at level 0 as
/// "Exception when parse json: %s" with the value's styled text.
#ifndef PARA_JSON_READER_H
#define PARA_JSON_READER_H

#include "BSCommonExport.h"

#include <json/value.h>

/// @{
/// Reads a 32-bit integer: stores the value's bits as they are, whatever the
/// destination's signedness (4294967295 into an int stores -1, -5 into an
/// unsigned int stores 4294967291).
/// @param value the JSON value, usually `section["KEY"]` (a null value for a missing key)
/// @param dst   receives the value, or @p def on failure
/// @param def   the default
/// @return 0 when stored; -1 with @p def stored when the value is null, an empty array or
///         object, not an integer (a string of digits, a number with a fraction) or outside
///         both 32-bit ranges.
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, unsigned int& dst, unsigned int def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, int& dst, int def);
/// @}
/// @{
/// Reads an 8- or 16-bit integer through the 32-bit reader of the same
/// signedness (plain char: signed) and stores its low bits, with no range
/// check: 300 into an unsigned char stores 44, 70000 into an unsigned short
/// stores 4464, and the result is still 0.
/// @param value the JSON value
/// @param dst   receives the value cut to its width, or @p def on failure
/// @param def   the default
/// @return 0 when stored; -1 with @p def stored when the 32-bit reader fails.
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, unsigned char& dst, unsigned char def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, signed char& dst, signed char def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, unsigned short& dst, unsigned short def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, short& dst, short def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, char& dst, char def);
/// @}
/// @{
/// Reads a 64-bit integer.
/// @param value the JSON value
/// @param dst   receives the value, or @p def on failure
/// @param def   the default
/// @return 0 when stored; -1 with @p def stored when the value is null, an empty array or
///         object, not an integer, or not representable in the destination's type (a negative
///         value into the unsigned reader: the JSON library's exception is logged).
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, long long& dst, long long def);
BSCOMMON_API int GetJsonIntegral(Json::Value const& value, unsigned long long& dst, unsigned long long def);
/// @}
/// Reads a float from a number or from decimal text (converted as atof() does:
/// text that is not a number stores 0 and still succeeds).
/// @param value the JSON value
/// @param dst   receives the value, or @p def on failure
/// @param def   the default
/// @return 0 when stored; -1 with @p def stored when the value is null, an empty array or
///         object, or neither a string nor a number.
BSCOMMON_API int GetJsonFloat(Json::Value const& value, float& dst, float def);
/// @{
/// Copies a JSON string into a fixed-size field of exactly @p size bytes: the
/// text's first @p size bytes (no terminator when it fills the field), or the
/// text followed by zero bytes when it is shorter. Numbers are not converted.
/// @param value the JSON value
/// @param dst   the field, @p size bytes
/// @param size  the field's size
/// @return 0 when copied; -1 with @p size zero bytes written when the value is null, an empty
///         array or object, or not a string; -1 with nothing written when @p dst is null or
///         @p size is not positive.
BSCOMMON_API int GetJsonCString(Json::Value const& value, char* dst, int size);
BSCOMMON_API int GetJsonCString(Json::Value const& value, unsigned char* dst, int size);
/// @}

#endif
