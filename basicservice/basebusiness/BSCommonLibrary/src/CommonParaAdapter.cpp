// The parameter adapter frame: JSON value readers, the dispatcher over
// parameter types and the parsing of a message body.
#include "CommonParaAdapter.h"
#include "ParaLog.h"
#include "ParaTypes.h"

#include <json/reader.h>

#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace {

void LogException(const Json::Value& value, const char* function, int line)
{
    try {
        Common::gclDebugPrintf(0, PARA_SOURCE_FILE, function, line, "Exception when parse json: %s\n",
                               value.toStyledString().c_str());
    } catch (...) {
        // Nothing more to say when even the styled text cannot be made.
    }
}

#define PARA_LOG_EXCEPTION(value) LogException(value, __func__, __LINE__)

// The 32- and 64-bit readers share one body. A 32-bit value must fit int or
// unsigned int, and its bits are stored as they come, whatever the
// destination's signedness; a 64-bit one is converted by the JSON library,
// which throws when it does not fit.
template <class T> int ReadInteger(const Json::Value& value, T& dst, T def, const char* function, int line)
{
    if (value.empty() || !value.isIntegral() || (sizeof(T) == 4 && !value.isUInt() && !value.isInt())) {
        dst = def;
        return -1;
    }
    try {
        if constexpr (sizeof(T) == 8)
            dst = std::is_signed_v<T> ? static_cast<T>(value.asInt64()) : static_cast<T>(value.asUInt64());
        else
            dst = value.isUInt() ? static_cast<T>(value.asUInt()) : static_cast<T>(value.asInt());
        return 0;
    } catch (...) {
        LogException(value, function, line);
        dst = def;
        return -1;
    }
}

// 8- and 16-bit fields go through the 32-bit reader of matching signedness
// and keep the low bits.
template <class Wide, class T> int ReadNarrow(const Json::Value& value, T& dst, T def)
{
    Wide wide = 0;
    int result = GetJsonIntegral(value, wide, static_cast<Wide>(def));
    dst = static_cast<T>(wide);
    return result;
}

} // namespace

int GetJsonIntegral(Json::Value const& value, unsigned int& dst, unsigned int def)
{
    return ReadInteger(value, dst, def, __func__, __LINE__);
}

int GetJsonIntegral(Json::Value const& value, int& dst, int def)
{
    return ReadInteger(value, dst, def, __func__, __LINE__);
}

int GetJsonIntegral(Json::Value const& value, unsigned char& dst, unsigned char def)
{
    return ReadNarrow<unsigned int>(value, dst, def);
}

int GetJsonIntegral(Json::Value const& value, signed char& dst, signed char def)
{
    return ReadNarrow<int>(value, dst, def);
}

int GetJsonIntegral(Json::Value const& value, unsigned short& dst, unsigned short def)
{
    return ReadNarrow<unsigned int>(value, dst, def);
}

int GetJsonIntegral(Json::Value const& value, short& dst, short def)
{
    return ReadNarrow<int>(value, dst, def);
}

int GetJsonIntegral(Json::Value const& value, char& dst, char def)
{
    return ReadNarrow<int>(value, dst, def);
}

int GetJsonIntegral(Json::Value const& value, long long& dst, long long def)
{
    return ReadInteger(value, dst, def, __func__, __LINE__);
}

int GetJsonIntegral(Json::Value const& value, unsigned long long& dst, unsigned long long def)
{
    return ReadInteger(value, dst, def, __func__, __LINE__);
}

int GetJsonFloat(Json::Value const& value, float& dst, float def)
{
    if (value.empty()) {
        dst = def;
        return -1;
    }
    try {
        if (value.isString()) {
            dst = static_cast<float>(std::atof(value.asCString()));
            return 0;
        }
        if (value.isNumeric()) {
            dst = value.asFloat();
            return 0;
        }
    } catch (...) {
        PARA_LOG_EXCEPTION(value);
    }
    dst = def;
    return -1;
}

int GetJsonCString(Json::Value const& value, char* dst, int size)
{
    if (!dst || size <= 0)
        return -1;
    const size_t capacity = static_cast<size_t>(size);
    if (value.empty() || !value.isString()) {
        std::memset(dst, 0, capacity);
        return -1;
    }
    try {
        // The string's own bytes, without a copy.
        const char* begin = nullptr;
        const char* end = nullptr;
        value.getString(&begin, &end);
        const size_t length = begin ? static_cast<size_t>(end - begin) : 0;
        const size_t copied = length < capacity ? length : capacity;
        if (copied)
            std::memcpy(dst, begin, copied);
        std::memset(dst + copied, 0, capacity - copied);
        return 0;
    } catch (...) {
        PARA_LOG_EXCEPTION(value);
        std::memset(dst, 0, capacity);
        return -1;
    }
}

int GetJsonCString(Json::Value const& value, unsigned char* dst, int size)
{
    return GetJsonCString(value, reinterpret_cast<char*>(dst), size);
}

// ---------------------------------------------------------------------------

// The types after the registry's up to 60 are reserved; above them a type is
// invalid.
constexpr int kLastReservedType = 60;

int AdaptParaJson(_PARA_TYPE_ type, Json::Value const& doc, void* record)
{
    const int value = static_cast<int>(type);
    if (value > kLastReservedType) {
        PARA_LOG_ERROR("Error parameter type: %d!!!\n", value);
        return -1;
    }
    // A negative type compares as a large unsigned one: unrealized.
    const unsigned index = static_cast<unsigned>(value);
    if (index < unsigned(para::kTypeCount))
        return record ? para::ParseSection(para::kTypes[index], doc, record) : -1;
    PARA_LOG_ERROR("Unrealized parameter: %d!!!\n", value);
    return -1;
}

int ParseJsonMessage(char const* buffer, int length, Json::Value& root)
{
    const int kHeadSize = static_cast<int>(sizeof(Common::SMessageHead));
    if (!buffer || length < kHeadSize)
        return 0;
    try {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
        Json::Reader reader;
#pragma GCC diagnostic pop
        return reader.parse(buffer + kHeadSize, buffer + length, root, true) ? 1 : 0;
    } catch (...) {
        PARA_LOG_ERROR("Failed to parse json msg!");
        return 0;
    }
}
