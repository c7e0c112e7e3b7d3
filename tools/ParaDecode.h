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

#include "ParaDescribe.h"

#include <json/writer.h>

#include <memory>
#include <string>
#include <type_traits>

namespace para {

template <class T> Json::Value ScalarJson(T v)
{
    if constexpr (std::is_floating_point_v<T>)
        return Json::Value(double(v));
    else if constexpr (std::is_signed_v<T>)
        return Json::Value(Json::Int64(v));
    else
        return Json::Value(Json::UInt64(v));
}

template <class C, size_t N> Json::Value TextJson(const C (&f)[N])
{
    size_t length = N;
    while (length > 0 && f[length - 1] == 0)
        --length;
    return Json::Value(std::string(reinterpret_cast<const char*>(f), length));
}

class DecodeWalk {
public:
    explicit DecodeWalk(Json::Value& object) : cur_(&object) {}

    template <class T> void field(const char*, const char* key, T& f) { Object()[key] = ScalarJson(f); }

    template <class C, size_t N> void text(const char*, const char* key, C (&f)[N]) { Object()[key] = TextJson(f); }

    template <class E, size_t N> void array(const char*, const char* key, E (&a)[N])
    {
        Elements(key ? Object()[key] : *cur_, a);
    }

    template <class C, size_t N, size_t M> void texts(const char*, const char* key, C (&a)[M][N])
    {
        Json::Value& list = Object()[key] = Json::Value(Json::arrayValue);
        for (size_t i = 0; i < M; ++i)
            list.append(TextJson(a[i]));
    }

    template <class S, class Parser> void sub(const char*, const char* key, S& s, Parser) { Record(Object()[key], s); }

    template <class F, class Step> void custom(const char*, F& f, const Step& step) { step.Write(f, Object()); }

    template <class F> void reserved(const char*, F&) {}

    template <class Body> void group(const char* key, Body body)
    {
        Json::Value* outer = cur_;
        cur_ = &Object()[key];
        body();
        cur_ = outer;
    }

    template <class R> void Record(Json::Value& object, R& record)
    {
        Json::Value* outer = cur_;
        cur_ = &object;
        Describe(*this, record);
        cur_ = outer;
    }

private:
    // The current value as an object (a group or record not yet written is null).
    Json::Value& Object()
    {
        if (!cur_->isObject())
            *cur_ = Json::Value(Json::objectValue);
        return *cur_;
    }

    template <class E, size_t N> void Elements(Json::Value& list, E (&a)[N])
    {
        list = Json::Value(Json::arrayValue);
        for (size_t i = 0; i < N; ++i) {
            Json::Value& element = list[Json::ArrayIndex(i)];
            if constexpr (std::is_arithmetic_v<E>)
                element = ScalarJson(a[i]);
            else if constexpr (std::is_array_v<E>)
                Elements(element, a[i]);
            else
                Record(element, a[i]);
        }
    }

    Json::Value* cur_;
};

// The section object that gives `record`. The description walks a mutable
// record: the copy is the walker's.
template <class R> Json::Value DecodeRecord(const R& record)
{
    std::unique_ptr<R> copy(new R(record));
    Json::Value section(Json::objectValue);
    DecodeWalk walk(section);
    Describe(walk, *copy);
    return section;
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
