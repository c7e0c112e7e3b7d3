// The tools' walk over a record's table: the recursion through groups,
// arrays and embedded records, written once. It tells a visitor where each
// field is; the visitor supplies only what it does there:
//
//   unsigned Array(const Field&, const Place&, unsigned dim)   elements of dimension dim to visit
//   void EnterElement(const Field&, const Place&, unsigned i)  (Place of element i)
//   void LeaveElement()
//   void EndArray()
//   bool EnterRecord(const Field&, const Place&)               false: its fields are skipped
//   void LeaveRecord()
//   void EnterGroup(const Field&, const Place&)
//   void LeaveGroup()
//   void Leaf(const Field&, const Place&)                      scalar, text, step or reserved run
//
// Arrays of texts and of scalars are visited element by element; a step is
// one leaf, whatever its field's shape.
#ifndef PARA_WALK_H
#define PARA_WALK_H

#include "ParaTypes.h"

#include <string>

namespace para {

// Where a field (or one element of it) is.
struct Place {
    std::string path;   // field path in the record: "P1[0].CS_MP"
    std::string keys;   // JSON key path under the section: "P1[0].CS.MP"
    std::string object; // key path of the object the field is read from: "P1[0].CS"
    size_t offset = 0;  // in the section's record
    bool element = false; // an array element: its value is the array's member itself
};

inline std::string JoinKeys(const std::string& object, const std::string& key)
{
    return object.empty() ? key : object + "." + key;
}

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

// The key path of a field as the layout shows it: a step reading several
// keys shows them as {A,B}.
inline std::string FieldKeys(const Field& f, const std::string& object)
{
    if (f.op == Op::Reserved)
        return "";
    if (f.flags & Field::kSelf)
        return object;
    std::string key(f.key, f.length);
    if (f.op == Op::Step && key.find(',') != std::string::npos)
        key = "{" + key + "}";
    return JoinKeys(object, key);
}

// "u8", "i32", "char", "f32": a scalar field's type, as the tools name it.
inline std::string ScalarLabel(const Field& f)
{
    switch (f.kind()) {
    case Kind::Float: return "f32";
    case Kind::Char: return "char";
    case Kind::Signed: return "i" + std::to_string(8 * f.size);
    default: return "u" + std::to_string(8 * f.size);
    }
}

template <class V> const Field* WalkLevel(const Field* f, V& v, const Place& record, const std::string& object,
                                          const std::string& group);

template <class V> void WalkField(const Field& f, V& v, const Place& p, unsigned dim)
{
    if (f.op != Op::Step && dim < f.dims()) {
        const unsigned n = v.Array(f, p, dim);
        for (unsigned i = 0; i < n; ++i) {
            Place e = p;
            const std::string index = "[" + std::to_string(i) + "]";
            e.path += index;
            e.keys += index;
            e.offset += i * f.stride(dim);
            e.element = true;
            v.EnterElement(f, e, i);
            WalkField(f, v, e, dim + 1);
            v.LeaveElement();
        }
        v.EndArray();
        return;
    }
    if (f.op == Op::Record || f.op == Op::Parsed) {
        if (v.EnterRecord(f, p)) {
            const Record& r = f.op == Op::Record ? f.record() : *f.parser().record;
            WalkLevel(r.fields, v, p, p.keys, "");
            v.LeaveRecord();
        }
        return;
    }
    v.Leaf(f, p);
}

// Visits the entries of one level from f up to its End; returns that End.
template <class V> const Field* WalkLevel(const Field* f, V& v, const Place& record, const std::string& object,
                                          const std::string& group)
{
    for (; f->op != Op::End; ++f) {
        Place p;
        p.path = record.path.empty() ? "" : record.path + ".";
        p.object = object;
        p.offset = record.offset + (f->op == Op::Group ? 0 : f->offset);
        if (f->op == Op::Group) {
            const std::string key(f->key, f->length);
            p.keys = JoinKeys(object, key);
            p.path = record.path;
            v.EnterGroup(*f, p);
            f = WalkLevel(f + 1, v, record, p.keys, key);
            v.LeaveGroup();
            continue;
        }
        p.path += FieldName(*f, group);
        p.keys = FieldKeys(*f, object);
        WalkField(*f, v, p, 0);
    }
    return f;
}

// Visits every entry of a section's record.
template <class V> void WalkRecord(const Record& r, V& v)
{
    WalkLevel(r.fields, v, Place(), "", "");
}

// A visitor that visits everything and does nothing: the base of those that
// need only some of the hooks.
struct Visitor {
    unsigned Array(const Field& f, const Place&, unsigned dim) { return f.count[dim]; }
    void EnterElement(const Field&, const Place&, unsigned) {}
    void LeaveElement() {}
    void EndArray() {}
    bool EnterRecord(const Field&, const Place&) { return true; }
    void LeaveRecord() {}
    void EnterGroup(const Field&, const Place&) {}
    void LeaveGroup() {}
    void Leaf(const Field&, const Place&) {}
};

} // namespace para

#endif
