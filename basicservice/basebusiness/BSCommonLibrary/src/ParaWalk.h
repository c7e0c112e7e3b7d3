// The one traversal of a record's table: levels of entries (the record, each
// group) up to their End, arrays of up to two dimensions, embedded records.
// The library's reader and every tool are visitors of it. A visitor keeps its
// own idea of where it is (a level, the place of a value) and gives the walk
// these members:
//
//   Group(group, level, walk)       walk(inner level) reads the group's entries
//   Entry(field, level, walk)       walk(place) goes on with the field's value
//   Elements(field, dim, place, walk)  walk(place of element) for each element
//                                   of dimension dim it visits
//   Record(field, place, walk)      walk(level) reads an embedded record's entries
//   Leaf(field, place)              a scalar, a text, a step or a reserved run
//
// A visitor may leave out a call of walk: that part is skipped. The order of
// the visits is the table's order.
#ifndef PARA_WALK_H
#define PARA_WALK_H

#include "ParaTable.h"

namespace para {

template <class V> class Walk {
public:
    explicit Walk(V& visitor) : v_(visitor) {}

    // The entries of a level from `first` up to its End, which it returns.
    template <class Level> const Field* Entries(const Field* first, const Level& level)
    {
        const Field* f = first;
        for (; f->op != Op::End; ++f) {
            const Field& field = *f;
            if (field.op == Op::Group) {
                const Field* end = nullptr;
                v_.Group(field, level, [&](const auto& inner) { end = Entries(&field + 1, inner); });
                f = end ? end : LevelEnd(&field + 1);
            } else {
                v_.Entry(field, level, [&](const auto& place) { Value(field, place, 0); });
            }
        }
        return f;
    }

    // A field's value from array dimension `dim` on.
    template <class Place> void Value(const Field& f, const Place& place, unsigned dim)
    {
        // an array has a bound for each of its dimensions; a step reads its whole field
        if (dim < 2 && f.count[dim] && f.op != Op::Step)
            v_.Elements(f, dim, place, [&](const auto& element) { Value(f, element, dim + 1); });
        else if (f.op == Op::Record || f.op == Op::Parsed)
            v_.Record(f, place, [&](const auto& level) { Entries(f.embedded().fields, level); });
        else
            v_.Leaf(f, place);
    }

private:
    V& v_;
};

} // namespace para

#endif
