// A bus message as a process receives it: the input is the whole buffer (the
// 16-byte header, then the JSON body). It is parsed with ParseJsonMessage, then
// every parameter type from -1 to 61 goes through AdaptParaJson into a record
// of exactly its type's size, and every sub-record parser runs on every object
// and array of the document. Records lie between guard zones and start out
// filled with a sentinel; a type without a parser must leave its record alone.
#include "CommonParaAdapter.h"
#include "FuzzSupport.h"
#include "ParaTypes.h"
#include "ToolkitHost.h"

#include <vector>

namespace {

constexpr int kFirstType = -1;
constexpr int kLastType = 61;

// The record size of a type, 0 for one without a parser.
size_t SizeOf(int type)
{
    return type >= 0 && type < para::kTypeCount ? para::kTypes[type].parser.record->size : 0;
}

// The exported parsers that take the object itself (and the array, for the
// snapshot list): X(call, record type).
#define FUZZ_SUB_RECORD_PARSERS(X) PARA_SUB_PARSERS(X) X(ParseNCommonSnapPara<16>, CommonSnapPara_t[16])

template <class R> R& As(fuzz::Guarded& buffer) { return *reinterpret_cast<R*>(buffer.data()); }

void SubRecords(const Json::Value& value)
{
#define FUZZ_SUB_RECORD(parse, record)                    \
    {                                                     \
        fuzz::Guarded buffer(sizeof(record));             \
        parse(value, As<record>(buffer));                 \
    }
    FUZZ_SUB_RECORD_PARSERS(FUZZ_SUB_RECORD)
#undef FUZZ_SUB_RECORD
}

// Every object and array of the document, depth first.
void Walk(const Json::Value& value)
{
    if (!value.isObject() && !value.isArray())
        return;
    SubRecords(value);
    for (Json::Value::const_iterator it = value.begin(); it != value.end(); ++it)
        Walk(*it);
}

void Quiet(const ToolkitHost::LogLine&, void*) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    ToolkitHost::SetLogSink(Quiet, nullptr);

    fuzz::Guarded message(data, size);
    Json::Value root;
    const int parsed = ParseJsonMessage(message.chars(), message.length(), root);
    FUZZ_CHECK(parsed == 0 || parsed == 1, parsed);
    FUZZ_CHECK(std::memcmp(message.data(), data, size) == 0); // the buffer is only read

    // Whatever the reader left in the document after a failed parse is
    // handed on too: a caller may not check the result.
    for (int type = kFirstType; type <= kLastType; ++type) {
        const size_t recordSize = SizeOf(type);
        fuzz::Guarded record(recordSize);
        const int result = AdaptParaJson(static_cast<_PARA_TYPE_>(type), root, record.data());
        if (recordSize == 0)
            FUZZ_CHECK(result == -1, type, result);
    }
    Walk(root);
    return 0;
}
