// Records back to JSON: walks a record description over a record and builds
// the section object that the record's parser turns back into it. Scalars
// become numbers, texts strings (their bytes up to the trailing zero bytes,
// so a text that fills its field or holds a NUL inside comes back whole),
// arrays full-length arrays, sub-records and groups objects, and each
// conversion step writes its own keys (its Write member).
//
// What no document can give back: reserved bytes and tail padding (no parser
// writes them) and floats that are not finite (JSON has no number for them).
#ifndef PARA_DECODE_H
#define PARA_DECODE_H

#include "ParaShow.h"

#include <json/writer.h>

#include <algorithm>
#include <string>
#include <type_traits>

namespace para {

// The value at a key path ("RCP[0].RSI[1][2].S", "[3].EN") of a JSON tree,
// made (an object or an array, as the path says) where it is missing.
inline Json::Value& At(Json::Value& root, const std::string& keys)
{
    Json::Value* at = &root;
    size_t i = 0;
    while (i < keys.size()) {
        if (keys[i] == '.') {
            ++i;
        } else if (keys[i] == '[') {
            const size_t close = keys.find(']', i);
            if (!at->isArray())
                *at = Json::Value(Json::arrayValue);
            at = &(*at)[Json::ArrayIndex(std::stoul(keys.substr(i + 1, close - i - 1)))];
            i = close + 1;
        } else {
            const size_t end = std::min(keys.find_first_of(".[", i), keys.size());
            if (!at->isObject())
                *at = Json::Value(Json::objectValue);
            at = &(*at)[keys.substr(i, end - i)];
            i = end;
        }
    }
    return *at;
}

// The section object whose parser gives back `bytes` (a record of the
// table's size).
inline Json::Value DecodeRecord(const Record& record, const std::string& bytes)
{
    struct Decode : Visitor {
        Json::Value section{Json::objectValue};
        const std::string& bytes;
        explicit Decode(const std::string& b) : bytes(b) {}

        void Leaf(const Field& f, const Place& p)
        {
            const char* at = bytes.data() + p.offset;
            if (f.op == Op::Scalar) {
                At(section, p.keys) = ValueJson(bytes, {p.path, p.keys, p.offset, f.size, f.kind()});
            } else if (f.op == Op::Text) {
                // all bytes up to the trailing zero bytes: a text that fills its
                // field or holds a NUL inside comes back whole
                size_t length = f.size;
                while (length > 0 && at[length - 1] == 0)
                    --length;
                At(section, p.keys) = std::string(at, length);
            } else if (f.op == Op::Step) {
                Json::Value& object = At(section, p.object);
                if (!object.isObject())
                    object = Json::Value(Json::objectValue);
                WithStep(f, [&](auto step) { step.Write(reinterpret_cast<const unsigned char*>(at), f, object); });
            }
        }
    } decode(bytes);
    WalkRecord(record, decode);
    return decode.section;
}

// A decoded document as text. Texts keep their bytes as they are, valid UTF-8
// or not, so that the text read back stores the same bytes.
inline std::string DocumentText(const Json::Value& value)
{
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "  ";
    writer["emitUTF8"] = true;
    return Json::writeString(writer, value);
}

} // namespace para

#endif
