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
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#define PARA_AT(off, m) \
    static_assert(offsetof(std::remove_reference_t<decltype(r)>, m) == (off), "offset of " #m)

// A key of the description, its length and hash computed at compile time.
#define PARA_KEY(text) ([] { constexpr ::para::Key key(text); return key; }())

// A scalar field read from the key of the same name.
#define PARA_FIELD(off, m) PARA_AT(off, m); w.field(#m, PARA_KEY(#m), r.m)
// A scalar field read from another key (a group's member, say).
#define PARA_FIELD_KEY(off, m, key) PARA_AT(off, m); w.field(#m, PARA_KEY(key), r.m)
// A fixed-size text field (char[N] or unsigned char[N]).
#define PARA_TEXT(off, m) PARA_AT(off, m); w.text(#m, PARA_KEY(#m), r.m)
#define PARA_TEXT_KEY(off, m, key) PARA_AT(off, m); w.text(#m, PARA_KEY(key), r.m)
// A bounded array: entry i is read only when the JSON value is an array with a
// valid index i. Elements may be scalars, described records or arrays again.
#define PARA_ARRAY(off, m) PARA_AT(off, m); w.array(#m, PARA_KEY(#m), r.m)
#define PARA_ARRAY_KEY(off, m, key) PARA_AT(off, m); w.array(#m, PARA_KEY(key), r.m)
// The same, where the object being described is itself the JSON array.
#define PARA_ARRAY_SELF(off, m) PARA_AT(off, m); w.array(#m, ::para::Key(nullptr), r.m)
// A bounded array of fixed-size texts, each element a JSON string.
#define PARA_TEXTS(off, m) PARA_AT(off, m); w.texts(#m, PARA_KEY(#m), r.m)
// An embedded record filled by its own parser from the object under the key.
#define PARA_SUBRECORD(off, m, parser) PARA_AT(off, m); w.sub(#m, PARA_KEY(#m), r.m, parser)
#define PARA_SUBRECORD_KEY(off, m, key, parser) PARA_AT(off, m); w.sub(#m, PARA_KEY(key), r.m, parser)
// A field filled by a named conversion step (see the steps in the descriptions).
#define PARA_CUSTOM(off, m, step) PARA_AT(off, m); w.custom(#m, r.m, step)
// Bytes no parser writes.
#define PARA_RESERVED(off, m) PARA_AT(off, m); w.reserved(#m, r.m)
// Fields read from the object under `key`; the fields stay in this record.
#define PARA_GROUP(key, ...) w.group(PARA_KEY(key), [&] { __VA_ARGS__; })

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

// A key of a description: the text with its length and a hash of it. The
// description macros build keys at compile time; a key converts to its text
// for walkers that only name it.
struct Key {
    const char* text;
    unsigned length;
    uint32_t hash;

    constexpr Key(const char* s) : text(s), length(s ? Length(s) : 0), hash(s ? Hash(s, Length(s)) : 0) {}
    constexpr operator const char*() const { return text; }

    static constexpr unsigned Length(const char* s)
    {
        unsigned n = 0;
        while (s[n])
            ++n;
        return n;
    }
    // FNV-1a over the bytes.
    static constexpr uint32_t Hash(const char* s, unsigned n)
    {
        uint32_t h = 2166136261u;
        for (unsigned i = 0; i < n; ++i)
            h = (h ^ static_cast<unsigned char>(s[i])) * 16777619u;
        return h;
    }
};

// The members of one object, indexed by one pass over them, so that reading a
// record's keys costs a short scan or a hash probe each instead of a search
// of the JSON library's tree per key. Finds exactly what Member() finds: a
// name matches a key only with the same length and bytes. An object of more
// members than the index holds is searched with Member().
class Members {
public:
    explicit Members(const Json::Value& value) : value_(value)
    {
        count_ = value.isObject() ? value.size() : 0;
        if (!value.isObject() || count_ > kMaxMembers) {
            indexed_ = false; // Member(): null for every key of a non-object
            return;
        }
        const bool hashed = count_ > kScanned;
        if (hashed) {
            mask_ = 15;
            while (mask_ + 1 < 2 * count_)
                mask_ = 2 * mask_ + 1;
            std::memset(slots_, 0, mask_ + 1);
        }
        unsigned n = 0;
        const Json::Value::const_iterator end = value.end();
        for (Json::Value::const_iterator it = value.begin(); it != end && n < count_; ++it, ++n) {
            const char* nameEnd = nullptr;
            Entry& e = entries_[n];
            e.name = it.memberName(&nameEnd);
            e.length = e.name ? static_cast<unsigned>(nameEnd - e.name) : 0;
            e.value = &*it;
            if (hashed) {
                e.hash = Key::Hash(e.name, e.length);
                unsigned slot = e.hash & mask_;
                while (slots_[slot])
                    slot = (slot + 1) & mask_;
                slots_[slot] = static_cast<unsigned char>(n + 1);
            }
        }
        count_ = n;
    }

    const Json::Value& value() const { return value_; }

    const Json::Value& operator[](const Key& key) const
    {
        if (!indexed_)
            return Member(value_, key.text);
        if (count_ <= kScanned) {
            for (unsigned i = 0; i < count_; ++i)
                if (Same(entries_[i], key))
                    return *entries_[i].value;
        } else {
            for (unsigned slot = key.hash & mask_; slots_[slot]; slot = (slot + 1) & mask_) {
                const Entry& e = entries_[slots_[slot] - 1];
                if (e.hash == key.hash && Same(e, key))
                    return *e.value;
            }
        }
        return Json::Value::nullSingleton();
    }

private:
    static constexpr unsigned kScanned = 8;     // objects this small are scanned
    static constexpr unsigned kMaxMembers = 127; // objects larger than this use Member()
    struct Entry {
        const char* name;
        unsigned length;
        uint32_t hash;
        const Json::Value* value;
    };

    static bool Same(const Entry& e, const Key& key)
    {
        if (e.length != key.length)
            return false;
        for (unsigned i = 0; i < key.length; ++i)
            if (e.name[i] != key.text[i])
                return false;
        return true;
    }

    const Json::Value& value_;
    bool indexed_ = true;
    unsigned count_ = 0;
    unsigned mask_ = 0;
    unsigned char slots_[256]; // entry + 1, 0 for a free slot; the first mask_ + 1 are used
    Entry entries_[kMaxMembers];
};

// Calls visit(i, element) for i = 0 .. min(size, bound) - 1 of an array, in
// one pass over its members; an index that the array lacks (an array built
// sparsely by a program) is visited with the null value, as value[i] gives.
// A value that is no array has no elements.
template <class Visit> void ForEachElement(const Json::Value& list, unsigned bound, Visit visit)
{
    if (!list.isArray())
        return;
    unsigned next = 0;
    const Json::Value::const_iterator end = list.end();
    for (Json::Value::const_iterator it = list.begin(); it != end && next < bound; ++it) {
        const unsigned index = it.index();
        for (; next < index && next < bound; ++next)
            visit(next, Json::Value::nullSingleton());
        if (index >= bound)
            break;
        visit(index, *it);
        next = index + 1;
    }
}

// The reader of a scalar field's width, with the default 0 that every
// parameter field has. Integers of up to 32 bits stored in the JSON value as
// integers are read here directly, with the readers' rule: a value from
// INT_MIN to UINT_MAX is stored as its low bits, anything else gives 0 and -1.
// Every other case goes to the reader itself.
template <class T> int ReadScalar(const Json::Value& value, T& dst)
{
    if constexpr (std::is_integral_v<T> && sizeof(T) <= 4) {
        const Json::ValueType type = value.type();
        if (type == Json::intValue || type == Json::uintValue) {
            bool fits;
            uint32_t bits;
            if (type == Json::intValue) {
                const Json::LargestInt v = value.asLargestInt();
                fits = v >= -2147483648LL && v <= 4294967295LL;
                bits = static_cast<uint32_t>(v);
            } else {
                const Json::LargestUInt v = value.asLargestUInt();
                fits = v <= 4294967295ULL;
                bits = static_cast<uint32_t>(v);
            }
            dst = fits ? static_cast<T>(bits) : T(0);
            return fits ? 0 : -1;
        }
    }
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
    explicit BasicJsonWalk(const Json::Value& object, Leaf leaf = Leaf()) : top_(object), cur_(&top_), leaf_(leaf) {}

    Leaf& leaf() { return leaf_; }

    template <class T> void field(const char*, const Key& key, T& f)
    {
        leaf_.Enter(cur_->value(), key.text);
        leaf_.Scalar((*cur_)[key], f);
        leaf_.Leave();
    }

    template <class C, size_t N> void text(const char*, const Key& key, C (&f)[N])
    {
        leaf_.Enter(cur_->value(), key.text);
        leaf_.Text((*cur_)[key], f);
        leaf_.Leave();
    }

    template <class E, size_t N> void array(const char*, const Key& key, E (&a)[N])
    {
        if (key.text) {
            leaf_.Enter(cur_->value(), key.text);
            Elements((*cur_)[key], a);
            leaf_.Leave();
        } else {
            Elements(cur_->value(), a);
        }
    }

    template <class C, size_t N, size_t M> void texts(const char*, const Key& key, C (&a)[M][N])
    {
        leaf_.Enter(cur_->value(), key.text);
        const Json::Value& list = (*cur_)[key];
        leaf_.Array(list, M);
        ForEachElement(list, M, [&](unsigned i, const Json::Value& e) {
            leaf_.EnterIndex(i);
            leaf_.Text(e, a[i]);
            leaf_.Leave();
        });
        leaf_.Leave();
    }

    template <class S, class Parser> void sub(const char*, const Key& key, S& s, Parser parser)
    {
        leaf_.Enter(cur_->value(), key.text);
        leaf_.Sub((*cur_)[key], s, parser, *this);
        leaf_.Leave();
    }

    template <class F, class Step> void custom(const char*, F& f, const Step& step)
    {
        leaf_.Custom(cur_->value(), f, step);
    }

    template <class F> void reserved(const char*, F&) {}

    template <class Body> void group(const Key& key, Body body)
    {
        leaf_.Enter(cur_->value(), key.text);
        const Members* outer = cur_;
        Members inner((*outer)[key]);
        cur_ = &inner;
        body();
        cur_ = outer;
        leaf_.Leave();
    }

    // Describes `record` over `object` (a sub-record, an array entry).
    template <class R> void Record(const Json::Value& object, R& record)
    {
        const Members* outer = cur_;
        Members inner(object);
        cur_ = &inner;
        Describe(*this, record);
        cur_ = outer;
    }

private:
    template <class E, size_t N> void Elements(const Json::Value& list, E (&a)[N])
    {
        leaf_.Array(list, N);
        ForEachElement(list, N, [&](unsigned i, const Json::Value& e) {
            leaf_.EnterIndex(i);
            Visit(e, a[i]);
            leaf_.Leave();
        });
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

    Members top_;
    const Members* cur_; // the object being described
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
