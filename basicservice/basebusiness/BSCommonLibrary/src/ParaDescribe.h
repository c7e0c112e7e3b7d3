// Record descriptions and the walkers over them.
//
// Each record is described once, by a function template
//
//     template <class W> void Describe(W& w, Record& r)
//
// that names its fields in the reading order of its JSON object, with the
// macros below. Every macro also checks the field's byte offset at compile
// time. The same description is walked by
//   - JsonWalk: fills the record from a JSON object (the parsers),
//   - LayoutWalk: lists each field with its path, JSON key path, offset, size
//     and type (the tools, and the tests that check that a description covers
//     every byte of its record).
#ifndef PARA_DESCRIBE_H
#define PARA_DESCRIBE_H

#include "ParaJsonReader.h"

#include <json/value.h>

#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

#define PARA_AT(off, m) \
    static_assert(offsetof(std::remove_reference_t<decltype(r)>, m) == (off), "offset of " #m)

// A scalar field read from the key of the same name.
#define PARA_FIELD(off, m) PARA_AT(off, m); w.field(#m, #m, r.m)
// A scalar field read from another key (a group's member, say).
#define PARA_FIELD_KEY(off, m, key) PARA_AT(off, m); w.field(#m, key, r.m)
// A fixed-size text field (char[N] or unsigned char[N]).
#define PARA_TEXT(off, m) PARA_AT(off, m); w.text(#m, #m, r.m)
#define PARA_TEXT_KEY(off, m, key) PARA_AT(off, m); w.text(#m, key, r.m)
// A bounded array: entry i is read only when the JSON value is an array with a
// valid index i. Elements may be scalars, described records or arrays again.
#define PARA_ARRAY(off, m) PARA_AT(off, m); w.array(#m, #m, r.m)
#define PARA_ARRAY_KEY(off, m, key) PARA_AT(off, m); w.array(#m, key, r.m)
// The same, where the object being described is itself the JSON array.
#define PARA_ARRAY_SELF(off, m) PARA_AT(off, m); w.array(#m, nullptr, r.m)
// A bounded array of fixed-size texts, each element a JSON string.
#define PARA_TEXTS(off, m) PARA_AT(off, m); w.texts(#m, #m, r.m)
// An embedded record filled by its own parser from the object under the key.
#define PARA_SUBRECORD(off, m, parser) PARA_AT(off, m); w.sub(#m, #m, r.m, parser)
// A field filled by a named conversion step (see the steps in the descriptions).
#define PARA_CUSTOM(off, m, step) PARA_AT(off, m); w.custom(#m, r.m, step)
// Bytes no parser writes.
#define PARA_RESERVED(off, m) PARA_AT(off, m); w.reserved(#m, r.m)
// Fields read from the object under `key`; the fields stay in this record.
#define PARA_GROUP(key, ...) w.group(key, [&] { __VA_ARGS__; })

namespace para {

// Member lookup that never throws: a non-object (array, number, string,
// boolean) yields the null value like an absent key does.
inline const Json::Value& Member(const Json::Value& value, const char* key)
{
    return value.isObject() ? value[key] : Json::Value::nullSingleton();
}

// "PARAMETER" -> "MDVR" -> key of a parameter document.
inline const Json::Value& Section(const Json::Value& doc, const char* key)
{
    return Member(Member(Member(doc, "PARAMETER"), "MDVR"), key);
}

// Element i of an array value, or null when the value is no array or too short.
inline const Json::Value* Element(const Json::Value& value, unsigned index)
{
    return value.isArray() && value.isValidIndex(index) ? &value[index] : nullptr;
}

// The reader of a scalar field's width, with the default 0 that every
// parameter field has.
template <class T> int ReadScalar(const Json::Value& value, T& dst)
{
    if constexpr (std::is_floating_point_v<T>)
        return GetJsonFloat(value, dst, 0.0f);
    else
        return GetJsonIntegral(value, dst, T(0));
}

// The parser's leaf actions: the readers and the sub-record parsers do the
// conversions. The navigation hooks are empty; other leaves (the inspector's
// checks) use them to follow the walk.
struct ReadLeaf {
    template <class T> void Scalar(const Json::Value& value, T& f) { ReadScalar(value, f); }
    template <class C, size_t N> void Text(const Json::Value& value, C (&f)[N]) { GetJsonCString(value, f, int(N)); }
    template <class S, class Parser, class Walk> void Sub(const Json::Value& value, S& s, Parser parser, Walk&)
    {
        parser(value, s);
    }
    template <class F, class Step> void Custom(const Json::Value& object, F& f, const Step& step) { step.Read(object, f); }

    void Enter(const Json::Value&, const char*) {} // into member `key` of `object`
    void EnterIndex(unsigned) {}                    // into element i of the current array
    void Leave() {}
    void Array(const Json::Value&, size_t) {} // an array of this bound is read from the value
};

// Walks a description over a JSON object: member lookups, groups and bounded
// arrays, with the leaf actions of `Leaf`.
template <class Leaf> class BasicJsonWalk {
public:
    explicit BasicJsonWalk(const Json::Value& object, Leaf leaf = Leaf()) : cur_(&object), leaf_(leaf) {}

    Leaf& leaf() { return leaf_; }

    template <class T> void field(const char*, const char* key, T& f)
    {
        leaf_.Enter(*cur_, key);
        leaf_.Scalar(Member(*cur_, key), f);
        leaf_.Leave();
    }

    template <class C, size_t N> void text(const char*, const char* key, C (&f)[N])
    {
        leaf_.Enter(*cur_, key);
        leaf_.Text(Member(*cur_, key), f);
        leaf_.Leave();
    }

    template <class E, size_t N> void array(const char*, const char* key, E (&a)[N])
    {
        if (key) {
            leaf_.Enter(*cur_, key);
            Elements(Member(*cur_, key), a);
            leaf_.Leave();
        } else {
            Elements(*cur_, a);
        }
    }

    template <class C, size_t N, size_t M> void texts(const char*, const char* key, C (&a)[M][N])
    {
        leaf_.Enter(*cur_, key);
        const Json::Value& list = Member(*cur_, key);
        leaf_.Array(list, M);
        for (unsigned i = 0; i < M; ++i) {
            if (const Json::Value* e = Element(list, i)) {
                leaf_.EnterIndex(i);
                leaf_.Text(*e, a[i]);
                leaf_.Leave();
            }
        }
        leaf_.Leave();
    }

    template <class S, class Parser> void sub(const char*, const char* key, S& s, Parser parser)
    {
        leaf_.Enter(*cur_, key);
        leaf_.Sub(Member(*cur_, key), s, parser, *this);
        leaf_.Leave();
    }

    template <class F, class Step> void custom(const char*, F& f, const Step& step) { leaf_.Custom(*cur_, f, step); }

    template <class F> void reserved(const char*, F&) {}

    template <class Body> void group(const char* key, Body body)
    {
        leaf_.Enter(*cur_, key);
        const Json::Value* outer = cur_;
        cur_ = &Member(*outer, key);
        body();
        cur_ = outer;
        leaf_.Leave();
    }

    // Describes `record` over `object` (a sub-record, an array entry).
    template <class R> void Record(const Json::Value& object, R& record)
    {
        const Json::Value* outer = cur_;
        cur_ = &object;
        Describe(*this, record);
        cur_ = outer;
    }

private:
    template <class E, size_t N> void Elements(const Json::Value& list, E (&a)[N])
    {
        leaf_.Array(list, N);
        for (unsigned i = 0; i < N; ++i) {
            if (const Json::Value* e = Element(list, i)) {
                leaf_.EnterIndex(i);
                Visit(*e, a[i]);
                leaf_.Leave();
            }
        }
    }

    template <class E> void Visit(const Json::Value& value, E& e)
    {
        if constexpr (std::is_arithmetic_v<E>)
            leaf_.Scalar(value, e);
        else if constexpr (std::is_array_v<E>)
            Elements(value, e);
        else
            Record(value, e);
    }

    const Json::Value* cur_;
    Leaf leaf_;
};

// The parsers' walk.
using JsonWalk = BasicJsonWalk<ReadLeaf>;

// Reads a section object into its record: -1 without writing when the
// section is empty or absent, else 0.
template <class R> int WalkSection(const Json::Value& section, R& record)
{
    if (section.empty())
        return -1;
    JsonWalk walk(section);
    Describe(walk, record);
    return 0;
}

// ---------------------------------------------------------------------------
// Layout: what the description says about every byte of a record.

// Hex: bytes shown as hexadecimal text, two digits a byte (a conversion step
// that reads them from such text says so, see StepKind).
enum class Kind { Unsigned, Signed, Char, Float, Text, Hex, Reserved };

struct FieldInfo {
    std::string path;    // field path in the record, e.g. "P1[0].CS_MP"
    std::string keys;    // JSON key path under the section, e.g. "P1[0].CS.MP"
    size_t offset;
    size_t size;         // bytes
    Kind kind;
};

// Name of a field's type as the layout shows it ("u16", "char[16]", "u8[2]").
inline std::string TypeName(const FieldInfo& f)
{
    const std::string bits = std::to_string(8 * f.size);
    switch (f.kind) {
    case Kind::Unsigned: return "u" + bits;
    case Kind::Signed: return "i" + bits;
    case Kind::Char: return "char";
    case Kind::Float: return "f" + bits;
    case Kind::Text: return "char[" + std::to_string(f.size) + "]";
    case Kind::Hex:
    case Kind::Reserved: break;
    }
    return "u8[" + std::to_string(f.size) + "]";
}

// A conversion step whose field is one value rather than field by field
// declares `static constexpr Kind kind`; the layout then lists the whole field
// with that kind.
template <class Step, class = void> struct StepKind {
    static constexpr bool declared = false;
};
template <class Step> struct StepKind<Step, std::void_t<decltype(Step::kind)>> {
    static constexpr bool declared = true;
};

class LayoutWalk {
public:
    LayoutWalk(const void* base, std::vector<FieldInfo>& out) : base_(static_cast<const char*>(base)), out_(out) {}

    template <class T> void field(const char* name, const char* key, T& f)
    {
        Leaf(path_ + name, keys_ + key, f);
    }

    template <class C, size_t N> void text(const char* name, const char* key, C (&f)[N])
    {
        Emit(path_ + name, keys_ + key, &f, N, Kind::Text);
    }

    template <class E, size_t N> void array(const char* name, const char* key, E (&a)[N])
    {
        std::string keys = key ? keys_ + key : keys_.substr(0, keys_.empty() ? 0 : keys_.size() - 1);
        Elements(path_ + name, keys, a);
    }

    template <class C, size_t N, size_t M> void texts(const char* name, const char* key, C (&a)[M][N])
    {
        for (size_t i = 0; i < M; ++i)
            Emit(path_ + name + Index(i), keys_ + key + Index(i), &a[i], N, Kind::Text);
    }

    template <class S, class Parser> void sub(const char* name, const char* key, S& s, Parser)
    {
        Visit(path_ + name, keys_ + key, s);
    }

    template <class F, class Step> void custom(const char* name, F& f, const Step& step)
    {
        // A step reading several keys shows them as {A,B}.
        std::string keys = step.Keys();
        if (keys.find(',') != std::string::npos)
            keys = "{" + keys + "}";
        if constexpr (StepKind<Step>::declared)
            Emit(path_ + name, keys_ + keys, &f, sizeof f, Step::kind);
        else
            Leaf(path_ + name, keys_ + keys, f);
    }

    template <class F> void reserved(const char* name, F& f) { Emit(path_ + name, "", &f, sizeof f, Kind::Reserved); }

    template <class Body> void group(const char* key, Body body)
    {
        std::string outer = keys_;
        keys_ += key;
        keys_ += '.';
        body();
        keys_ = outer;
    }

private:
    static std::string Index(size_t i) { return "[" + std::to_string(i) + "]"; }

    template <class T> void Leaf(const std::string& path, const std::string& keys, T& f)
    {
        if constexpr (std::is_array_v<T>) {
            Elements(path, keys, f);
        } else {
            static_assert(std::is_arithmetic_v<T>, "a scalar field");
            Kind kind = std::is_floating_point_v<T>   ? Kind::Float
                        : std::is_same_v<T, char>     ? Kind::Char
                        : std::is_signed_v<T>         ? Kind::Signed
                                                      : Kind::Unsigned;
            Emit(path, keys, &f, sizeof f, kind);
        }
    }

    template <class E, size_t N> void Elements(const std::string& path, const std::string& keys, E (&a)[N])
    {
        for (size_t i = 0; i < N; ++i)
            Visit(path + Index(i), keys + Index(i), a[i]);
    }

    template <class E> void Visit(const std::string& path, const std::string& keys, E& e)
    {
        if constexpr (std::is_arithmetic_v<E> || std::is_array_v<E>) {
            Leaf(path, keys, e);
        } else {
            std::string outerPath = path_, outerKeys = keys_;
            path_ = path + ".";
            keys_ = keys + ".";
            Describe(*this, e);
            path_ = outerPath;
            keys_ = outerKeys;
        }
    }

    void Emit(std::string path, std::string keys, const void* at, size_t size, Kind kind)
    {
        out_.push_back({std::move(path), std::move(keys), size_t(static_cast<const char*>(at) - base_), size, kind});
    }

    const char* base_;
    std::vector<FieldInfo>& out_;
    std::string path_, keys_;
};

// The fields of a record in description order.
template <class R> std::vector<FieldInfo> Layout(R& record)
{
    std::vector<FieldInfo> fields;
    LayoutWalk walk(&record, fields);
    Describe(walk, record);
    return fields;
}

} // namespace para

#endif
