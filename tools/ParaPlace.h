// Where a field of a record is, as the tools name it, and their visitor of
// the table walk (ParaWalk.h): each entry and each element with its place,
// in parts (names and array indexes), not in text.
#ifndef PARA_PLACE_H
#define PARA_PLACE_H

#include "ParaTypes.h"
#include "ParaWalk.h"

#include <cstring>
#include <string>
#include <vector>

namespace para {

// One part of a path: a name, or (with no name) the index of an array element.
struct Part {
    std::string name;
    unsigned index = 0;
};
using Path = std::vector<Part>;

// "P1[0].CS_MP". With `letters` ("ijk"), the n-th index shows as the n-th letter.
inline std::string PathText(const Path& path, const char* letters = nullptr)
{
    std::string text;
    unsigned n = 0;
    for (const Part& part : path) {
        if (part.name.empty()) {
            text += '[';
            text += letters ? std::string(1, letters[n++ % std::strlen(letters)]) : std::to_string(part.index);
            text += ']';
        } else {
            if (!text.empty())
                text += '.';
            text += part.name;
        }
    }
    return text;
}

inline Path Joined(Path path, std::string name)
{
    path.push_back({std::move(name)});
    return path;
}

// A level of the walk: the fields of a record, or of a group of it.
struct Level {
    Path path;         // of the record in the section's record (empty: the section's record)
    Path object;       // keys of the object the level's fields are read from
    size_t offset = 0; // of the record in the section's record
    std::string group; // key of the group, which names the fields prefixed with it
    std::vector<size_t> strides; // of the arrays the record is an element of, outer first
};

// Where a field, or one element of it, is.
struct Place {
    Path path;                   // the field in the section's record: P1 [0] CS_MP
    Path keys;                   // the keys of its value under the section: P1 [0] CS MP
    Path object;                 // keys of the object it is read from: P1 [0] CS
    size_t offset = 0;           // in the section's record
    std::vector<size_t> strides; // of the arrays it is an element of, outer first
    bool element = false;        // an array element: its value is the array's member itself
};

// A field's name in its record: its key; group + "_" + key where the group's
// key is part of it; a step's keys joined by "_".
inline std::string FieldName(const Field& f, const std::string& group)
{
    std::string name(f.key, f.length);
    if (f.op == Op::Step)
        for (char& c : name)
            if (c == ',')
                c = '_';
    return (f.flags & Field::kPrefixed) ? group + "_" + name : name;
}

// The key a field is read from as the layout shows it: a step reading
// several keys shows them as {A,B}.
inline std::string FieldKey(const Field& f)
{
    std::string key(f.key, f.length);
    return f.op == Op::Step && key.find(',') != std::string::npos ? "{" + key + "}" : key;
}

// "u16", "i32", "char", "f32", "char[16]", "u8[6]": the type of `size` bytes
// shown as `kind`, as the tools name it.
inline std::string TypeLabel(Kind kind, size_t size)
{
    const std::string bits = std::to_string(8 * size);
    switch (kind) {
    case Kind::Unsigned: return "u" + bits;
    case Kind::Signed: return "i" + bits;
    case Kind::Char: return "char";
    case Kind::Float: return "f" + bits;
    case Kind::Text: return "char[" + std::to_string(size) + "]";
    case Kind::Hex:
    case Kind::Reserved: break;
    }
    return "u8[" + std::to_string(size) + "]";
}

// A scalar field's type.
inline std::string ScalarLabel(const Field& f) { return TypeLabel(f.kind(), f.size); }

// The place of field `f` of a level.
inline Place FieldPlace(const Field& f, const Level& level)
{
    Place p;
    p.path = Joined(level.path, FieldName(f, level.group));
    p.object = level.object;
    p.keys = f.op == Op::Reserved || (f.flags & Field::kSelf) ? level.object : Joined(level.object, FieldKey(f));
    p.offset = level.offset + f.offset;
    p.strides = level.strides;
    return p;
}

// The place of element i of dimension `dim` of the value at `p`.
inline Place ElementPlace(const Field& f, unsigned dim, const Place& p, unsigned i)
{
    Place e = p;
    e.path.push_back({"", i});
    e.keys.push_back({"", i});
    e.offset += i * f.stride(dim);
    e.strides.push_back(f.stride(dim));
    e.element = true;
    return e;
}

// The level of the entries of a group.
inline Level GroupLevel(const Field& group, const Level& level)
{
    Level inner = level;
    inner.group.assign(group.key, group.length);
    inner.object = Joined(level.object, inner.group);
    return inner;
}

// The level of the entries of the embedded record at `p`.
inline Level RecordLevel(const Place& p) { return Level{p.path, p.keys, p.offset, "", p.strides}; }

// The tools' visitor of the walk: every entry, arrays element by element,
// each with its place. A tool derives from it and gives Leaf(field, place)
// (a scalar, a text, a step or a reserved run); it may also give the other
// members of the walk, with these places or places of its own.
struct PlaceVisitor {
    template <class Walk> void Group(const Field& group, const Level& level, Walk walk) { walk(GroupLevel(group, level)); }
    template <class Walk> void Entry(const Field& f, const Level& level, Walk walk) { walk(FieldPlace(f, level)); }
    template <class Walk> void Elements(const Field& f, unsigned dim, const Place& p, Walk walk)
    {
        for (unsigned i = 0; i < f.count[dim]; ++i)
            walk(ElementPlace(f, dim, p, i));
    }
    template <class Walk> void Record(const Field&, const Place& p, Walk walk) { walk(RecordLevel(p)); }
    void Leaf(const Field&, const Place&) {}
};

// Visits every entry of a record from `level` (by default, as a section's record).
template <class V, class L = Level> void WalkRecord(const Record& r, V& visitor, const L& level = L())
{
    Walk<V>(visitor).Entries(r.fields, level);
}

} // namespace para

#endif
