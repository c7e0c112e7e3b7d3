// Record descriptions as data: the tables and how they are built.
//
// Each record is described once, beside the others of its subsystem, by a
// constant table of fields in the reading order of its JSON object:
//
//     PARA_RECORD(tag_MsgTimeSetting,
//         PARA_FIELD(0, DATEM),                  u8 from "DATEM" at 0
//         PARA_TEXT(4, TIMEZ),                   char[16] from "TIMEZ" at 4
//         PARA_GROUP("DST"),                     the keys up to PARA_END_GROUP()
//             PARA_FIELD(24, SW),                live in the object under "DST"
//             PARA_STEP(33, SWEEK_SWIND, PackNibbles, "SWEEK,SWIND"),
//         PARA_END_GROUP(),
//         PARA_RESERVED(42, reserved2));         bytes no parser writes
//
// Every entry states the byte offset of its member, and the compiler checks
// it against the record. Kind, width, array bounds and the embedded record's
// table are taken from the member's type. The interpreter (ParaReader.cpp)
// fills records from JSON with these tables; the tools walk the same tables
// to list, check, describe and decode records.
#ifndef PARA_TABLE_H
#define PARA_TABLE_H

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace para {

// How the bytes of a field are shown. Hex: bytes given as hexadecimal text,
// two digits a byte.
enum class Kind : uint8_t { Unsigned, Signed, Char, Float, Text, Hex, Reserved };

// What an entry of a table is.
enum class Op : uint8_t {
    End,      // end of the record, or of a group
    Group,    // the entries up to the matching End are read from the object under the key
    Scalar,   // an integer or float, with the reader of its width
    Text,     // fixed-size text
    Record,   // an embedded record read by the walk itself
    Parsed,   // an embedded record read with the rules of its exported parser
    Step,     // a field filled by a named conversion step from the current object
    Reserved, // bytes no parser writes
};

// The C++ types of scalar fields.
enum class ScalarType : uint8_t { U8, I8, Char, U16, I16, U32, I32, U64, I64, F32 };

// The named conversion steps (ParaSteps.h).
enum class StepId : uint8_t { PackNibbles, MacText, VoltageText, TenthsText, HexRegion };

struct Record;
struct Parser;

struct Field {
    char key[12];      // JSON key (a step's keys comma-separated; a reserved run's name)
    uint16_t offset;   // of the field in its record (a Group: see keyStart())
    uint16_t size;     // bytes of one element (a Group: see keyCount())
    Op op;
    ScalarType scalar; // Scalar: the C++ type
    StepId step;       // Step: the conversion
    uint8_t length;    // of the key
    uint8_t flags;
    uint8_t count[2];  // array bounds, outer first; 0 where there is no dimension
    uint8_t rank;      // of the key among the keys of its level, in the JSON library's member order
    const void* ref;   // Record: the embedded Record; Parsed: its Parser

    static constexpr uint8_t kSelf = 1;     // the object itself is the array, no key is looked up
    static constexpr uint8_t kPrefixed = 2; // the field's name is the group's key, "_", the key

    const Record& record() const { return *static_cast<const Record*>(ref); }
    const Parser& parser() const { return *static_cast<const Parser*>(ref); }
    // The record an embedded entry (Record or Parsed) holds.
    const Record& embedded() const;
    unsigned dims() const { return count[0] ? (count[1] ? 2 : 1) : 0; }
    // Bytes from one element of dimension `dim` to the next.
    size_t stride(unsigned dim) const { return dim == 0 && count[1] ? size_t(count[1]) * size : size; }
    // A Group has no bytes of its own: it keeps where its level's keys start
    // in the record's lookup order and how many there are.
    unsigned keyStart() const { return offset; }
    unsigned keyCount() const { return size; }
    // How the bytes are shown: a scalar by its type, a step by what it stores
    // (a hexadecimal region as one run, the others as unsigned integers).
    constexpr Kind kind() const
    {
        switch (op) {
        case Op::Scalar:
            return scalar == ScalarType::F32    ? Kind::Float
                   : scalar == ScalarType::Char ? Kind::Char
                   : scalar == ScalarType::I8 || scalar == ScalarType::I16 || scalar == ScalarType::I32 ||
                           scalar == ScalarType::I64
                       ? Kind::Signed
                       : Kind::Unsigned;
        case Op::Text: return Kind::Text;
        case Op::Step: return step == StepId::HexRegion ? Kind::Hex : Kind::Unsigned;
        default: return Kind::Reserved;
        }
    }
};

struct Record {
    const char* name;     // the C++ type
    const Field* fields;
    uint16_t size;
    uint8_t keys;         // keys looked up at the top level
    const uint8_t* order; // the entries of each level that look up a key, sorted by key: the
                          // top level first, then each group's; a level's members are matched
                          // to them in one pass over the object
};

// The rules of an exported parser around its record's walk, stated by name:
//   Rules().Empty("empty json when parse alarm plan!\n").Needs("I")
struct Rules {
    const char* empty = nullptr;  // logged for an empty or absent object (nullptr: silent)
    const char* failed = nullptr; // logged if the walk throws (nullptr: nothing)
    const char* needs = nullptr;  // a member that must not be empty either (nullptr: none)
    bool fromParts = false;       // result 1 unless an embedded record's parser returned 0

    constexpr Rules Empty(const char* message) const { Rules r = *this; r.empty = message; return r; }
    constexpr Rules Failed(const char* message) const { Rules r = *this; r.failed = message; return r; }
    constexpr Rules Needs(const char* key) const { Rules r = *this; r.needs = key; return r; }
    constexpr Rules FromParts() const { Rules r = *this; r.fromParts = true; return r; }
};

struct Parser {
    const char* name;     // the exported function, for its log lines
    const Record* record;
    Rules rules;
};

inline const Record& Field::embedded() const { return op == Op::Record ? record() : *parser().record; }

// The description of record R: Describe<R>::record.
template <class R> struct Describe;

// The JSON library's order of member names, here of a name against a field's
// key: bytes compared unsigned, then the shorter first. The tables are sorted
// with it at compile time and the reader matches an object's members to them
// with it.
constexpr int CompareKeys(const char* name, unsigned length, const Field& f)
{
    const unsigned n = length < f.length ? length : f.length;
    for (unsigned i = 0; i < n; ++i)
        if (name[i] != f.key[i])
            return int(static_cast<unsigned char>(name[i])) - int(static_cast<unsigned char>(f.key[i]));
    return int(length) - int(f.length);
}

// The End of the level whose entries start at `first`, past the levels of its
// groups.
constexpr const Field* LevelEnd(const Field* first)
{
    for (unsigned depth = 0;; ++first) {
        if (first->op == Op::Group)
            ++depth;
        else if (first->op == Op::End && depth-- == 0)
            return first;
    }
}

// ---------------------------------------------------------------------------
// Building entries at compile time.

// Called only when a description disagrees with its record; in a constant
// expression the call is a compile error that names the problem.
void offset_in_description_differs_from_record();
void key_longer_than_11_characters();
void hexadecimal_region_larger_than_64_bytes();

constexpr bool SameText(const char* a, const char* b)
{
    while (*a && *a == *b)
        ++a, ++b;
    return *a == *b;
}

constexpr uint8_t PrefixedUnless(const char* name, const char* key)
{
    return SameText(name, key) ? 0 : Field::kPrefixed;
}

constexpr uint16_t CheckedOffset(size_t stated, size_t actual)
{
    if (stated != actual)
        offset_in_description_differs_from_record();
    return static_cast<uint16_t>(stated);
}

constexpr Field MakeField(const char* key, Op op, size_t offset = 0, size_t size = 0, size_t c0 = 0, size_t c1 = 0,
                          const void* ref = nullptr, uint8_t flags = 0)
{
    Field f{};
    unsigned n = 0;
    for (; key[n]; ++n) {
        if (n == sizeof f.key - 1)
            key_longer_than_11_characters();
        f.key[n] = key[n];
    }
    f.length = static_cast<uint8_t>(n);
    f.offset = static_cast<uint16_t>(offset);
    f.size = static_cast<uint16_t>(size);
    f.op = op;
    f.flags = flags;
    f.count[0] = static_cast<uint8_t>(c0);
    f.count[1] = static_cast<uint8_t>(c1);
    f.ref = ref;
    return f;
}

// Element type and bounds of a member of up to two array dimensions.
template <class T> struct Shape {
    using Element = T;
    static constexpr size_t c0 = 0, c1 = 0;
};
template <class T, size_t N> struct Shape<T[N]> {
    using Element = T;
    static constexpr size_t c0 = N, c1 = 0;
};
template <class T, size_t N, size_t M> struct Shape<T[N][M]> {
    using Element = T;
    static constexpr size_t c0 = N, c1 = M;
};

template <class T> constexpr bool kReadable =
    std::is_same_v<T, unsigned char> || std::is_same_v<T, signed char> || std::is_same_v<T, char> ||
    std::is_same_v<T, unsigned short> || std::is_same_v<T, short> || std::is_same_v<T, unsigned int> ||
    std::is_same_v<T, int> || std::is_same_v<T, unsigned long long> || std::is_same_v<T, long long> ||
    std::is_same_v<T, float>;

template <class T> constexpr ScalarType ScalarTypeOf()
{
    return std::is_same_v<T, char>              ? ScalarType::Char
           : std::is_same_v<T, unsigned char>   ? ScalarType::U8
           : std::is_same_v<T, signed char>     ? ScalarType::I8
           : std::is_same_v<T, unsigned short>  ? ScalarType::U16
           : std::is_same_v<T, short>           ? ScalarType::I16
           : std::is_same_v<T, unsigned int>    ? ScalarType::U32
           : std::is_same_v<T, int>             ? ScalarType::I32
           : std::is_same_v<T, unsigned long long> ? ScalarType::U64
           : std::is_same_v<T, long long>       ? ScalarType::I64
                                                : ScalarType::F32;
}

// Whether an entry's macro is the one for an array: PARA_ARRAY and PARA_TEXTS
// (Some) or PARA_FIELD and PARA_TEXT (None).
enum class Dims { None, Some };

// A scalar, an embedded record, or an array of either.
template <class T, Dims D>
constexpr Field FieldOf(const char* name, const char* key, size_t offset, uint8_t flags = 0)
{
    using E = typename Shape<T>::Element;
    static_assert(!std::is_array_v<E>, "at most two array dimensions");
    static_assert(std::is_array_v<T> == (D == Dims::Some), "PARA_FIELD names one member, PARA_ARRAY an array");
    const size_t c0 = Shape<T>::c0, c1 = Shape<T>::c1;
    flags = static_cast<uint8_t>(flags | PrefixedUnless(name, key));
    if constexpr (std::is_class_v<E>) {
        return MakeField(key, Op::Record, offset, sizeof(E), c0, c1, &Describe<E>::record, flags);
    } else {
        static_assert(kReadable<E>, "a type the readers have");
        Field f = MakeField(key, Op::Scalar, offset, sizeof(E), c0, c1, nullptr, flags);
        f.scalar = ScalarTypeOf<E>();
        return f;
    }
}

// Fixed-size text, or an array of texts (each element a JSON string).
template <class T, Dims D> constexpr Field TextOf(const char* name, const char* key, size_t offset)
{
    using E = std::remove_all_extents_t<T>;
    static_assert(std::rank_v<T> == (D == Dims::Some ? 2 : 1), "PARA_TEXT names one text, PARA_TEXTS an array of them");
    static_assert(sizeof(E) == 1, "text of char or unsigned char");
    const size_t size = std::extent_v<T, std::rank_v<T> - 1>;
    return MakeField(key, Op::Text, offset, size, std::rank_v<T> == 2 ? std::extent_v<T> : 0, 0, nullptr,
                     PrefixedUnless(name, key));
}

// An embedded record (or array of them) read by `parser`.
template <class T>
constexpr Field ParsedOf(const char* name, const char* key, size_t offset, const Parser& parser, uint8_t flags = 0)
{
    using E = typename Shape<T>::Element;
    return MakeField(key, Op::Parsed, offset, sizeof(E), Shape<T>::c0, Shape<T>::c1, &parser,
                     uint8_t(flags | PrefixedUnless(name, key)));
}

// A field filled by a conversion step that reads `keys` of the current object.
template <class T> constexpr Field StepOf(const char* keys, size_t offset, StepId step)
{
    using E = std::remove_all_extents_t<T>;
    Field f{};
    // A step that packs hexadecimal text fills the field as one run of bytes.
    if (step == StepId::HexRegion) {
        if (sizeof(T) > 64)
            hexadecimal_region_larger_than_64_bytes();
        f = MakeField(keys, Op::Step, offset, sizeof(T));
    } else {
        f = MakeField(keys, Op::Step, offset, sizeof(E), Shape<T>::c0);
    }
    f.step = step;
    return f;
}

constexpr Field End() { return MakeField("", Op::End); }

// A description with its lookup order: the entries of each level (the
// record, each group) that look up a key, sorted with CompareKeys.
template <size_t N> struct Table {
    Field fields[N];
    uint8_t order[N];
    uint8_t keys;
};

void description_longer_than_255_entries();
void key_read_twice_at_one_level();

constexpr bool KeyBefore(const Field& a, const Field& b) { return CompareKeys(a.key, a.length, b) < 0; }

// Sorts the keys of the level starting at entry `first` into order[pos...];
// returns the number of them. Groups of the level are indexed after it.
template <size_t N> constexpr unsigned IndexLevel(Table<N>& t, size_t first, unsigned& pos)
{
    const unsigned start = pos;
    size_t group[N] = {};
    unsigned groups = 0;
    for (size_t i = first; t.fields[i].op != Op::End; ++i) {
        const Field& f = t.fields[i];
        if (f.op == Op::Group) {
            group[groups++] = i;
            i = size_t(LevelEnd(&f + 1) - t.fields); // its entries are a level of their own
        }
        if (f.op == Op::Reserved || f.op == Op::Step || (f.flags & Field::kSelf))
            continue;
        // insertion into the sorted run
        unsigned at = pos++;
        while (at > start && KeyBefore(f, t.fields[t.order[at - 1]])) {
            t.order[at] = t.order[at - 1];
            --at;
        }
        t.order[at] = static_cast<uint8_t>(&f - t.fields);
    }
    for (unsigned k = start; k < pos; ++k) {
        t.fields[t.order[k]].rank = static_cast<uint8_t>(k - start);
        if (k > start && !KeyBefore(t.fields[t.order[k - 1]], t.fields[t.order[k]]))
            key_read_twice_at_one_level();
    }
    const unsigned count = pos - start;
    for (unsigned g = 0; g < groups; ++g) {
        const unsigned groupStart = pos;
        const unsigned n = IndexLevel(t, group[g] + 1, pos);
        // what keyStart() and keyCount() give back
        t.fields[group[g]].offset = static_cast<uint16_t>(groupStart);
        t.fields[group[g]].size = static_cast<uint16_t>(n);
    }
    return count;
}

template <size_t N> constexpr Table<N> Index(const Field (&fields)[N])
{
    if (N > 255)
        description_longer_than_255_entries();
    Table<N> t{};
    for (size_t i = 0; i < N; ++i)
        t.fields[i] = fields[i];
    unsigned pos = 0;
    t.keys = static_cast<uint8_t>(IndexLevel(t, 0, pos));
    return t;
}

} // namespace para

#define PARA_AT(off, m) ::para::CheckedOffset(off, offsetof(Self, m))
#define PARA_TYPE_OF(m) decltype(Self::m)

// A record's description: PARA_RECORD(Type, entries...).
#define PARA_RECORD(R, ...)                                                 \
    template <> struct para::Describe<R> {                                  \
        using Self = R;                                                     \
        static constexpr Field entries[] = {__VA_ARGS__, ::para::End()};    \
        static constexpr auto table = ::para::Index(entries);               \
        static constexpr Record record{#R, table.fields, sizeof(R), table.keys, table.order}; \
    }

// A scalar field or an embedded record read by the walk, from the key of the
// member's name; PARA_ARRAY the same for an array of one or two dimensions.
#define PARA_FIELD(off, m) ::para::FieldOf<PARA_TYPE_OF(m), ::para::Dims::None>(#m, #m, PARA_AT(off, m))
#define PARA_ARRAY(off, m) ::para::FieldOf<PARA_TYPE_OF(m), ::para::Dims::Some>(#m, #m, PARA_AT(off, m))
// The same from another key: a group's key, the member named GROUP_KEY.
#define PARA_FIELD_KEY(off, m, key) ::para::FieldOf<PARA_TYPE_OF(m), ::para::Dims::None>(#m, key, PARA_AT(off, m))
// An array that is the object itself (a section that is a JSON array).
#define PARA_ARRAY_SELF(off, m) \
    ::para::FieldOf<PARA_TYPE_OF(m), ::para::Dims::Some>(#m, #m, PARA_AT(off, m), ::para::Field::kSelf)
// Fixed-size text (char[N] or unsigned char[N]); PARA_TEXTS an array of texts.
#define PARA_TEXT(off, m) ::para::TextOf<PARA_TYPE_OF(m), ::para::Dims::None>(#m, #m, PARA_AT(off, m))
#define PARA_TEXTS(off, m) ::para::TextOf<PARA_TYPE_OF(m), ::para::Dims::Some>(#m, #m, PARA_AT(off, m))
#define PARA_TEXT_KEY(off, m, key) ::para::TextOf<PARA_TYPE_OF(m), ::para::Dims::None>(#m, key, PARA_AT(off, m))
// An embedded record, or an array of them, read with the rules of its
// exported parser (its empty test and log line).
#define PARA_SUBRECORD(off, m, parser) \
    ::para::ParsedOf<PARA_TYPE_OF(m)>(#m, #m, PARA_AT(off, m), ::para::k##parser)
#define PARA_SUBRECORD_KEY(off, m, key, parser) \
    ::para::ParsedOf<PARA_TYPE_OF(m)>(#m, key, PARA_AT(off, m), ::para::k##parser)
// A field filled by a named conversion step from the keys it reads.
#define PARA_STEP(off, m, step, keys) ::para::StepOf<PARA_TYPE_OF(m)>(keys, PARA_AT(off, m), ::para::StepId::step)
// Bytes no parser writes.
#define PARA_RESERVED(off, m) ::para::MakeField(#m, ::para::Op::Reserved, PARA_AT(off, m), sizeof(Self::m))
// The entries up to PARA_END_GROUP() are read from the object under `key`;
// their fields stay in this record.
#define PARA_GROUP(key) ::para::MakeField(key, ::para::Op::Group)
#define PARA_END_GROUP() ::para::End()

// An exported parser of an embedded record with its rules, stated by name:
//   PARA_PARSER(ParseAlarmPlan, alarmPlan_t, .Empty("...").Needs("I"))
#define PARA_PARSER(parser, R, ...) \
    namespace para { inline constexpr Parser k##parser{#parser, &Describe<R>::record, Rules() __VA_ARGS__}; }

#endif
