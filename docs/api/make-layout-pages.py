#!/usr/bin/env python3
"""Makes the API reference's layout pages from `mdvr-param layout`.

    make-layout-pages.py --headers DIR --output records.dox -- MDVR_PARAM_COMMAND...

For each parameter type that `mdvr-param types` lists, a page "layout_KEY"
holds what `mdvr-param layout KEY` prints, as it prints it (each array as one
line). The page of each record type (and of each sub-record that a record
embeds) gets a paragraph naming the layout pages it appears on, and each of
its fields its offset and size within the record, found by the field's name
in `mdvr-param layout --expand KEY`, which lists every element; a field that
output does not show by name is pointed to the layout page instead. The headers are read only for the
record types' members, in order, and the types of the members.
"""
import argparse
import collections
import glob
import os
import re
import subprocess
import sys


def run(command):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if result.returncode != 0:
        sys.exit("make-layout-pages: %s exited %d: %s" % (" ".join(command), result.returncode, result.stderr))
    return result.stdout


def read_structs(directory):
    """{struct: [(member type, member name, array dimensions)]} of the headers."""
    structs = {}
    member = re.compile(r"^\s*((?:unsigned |signed |const )*[A-Za-z_][\w:]*(?: long)*)\s+([A-Za-z_]\w*)((?:\[\d+\])*)\s*;")
    for path in sorted(glob.glob(os.path.join(directory, "*.h"))):
        name, members = None, None
        with open(path) as f:
            for line in f:
                opened = re.match(r"^(?:typedef )?struct ([A-Za-z_]\w*)? ?\{", line)
                closed = re.match(r"^\}\s*([A-Za-z_]\w*)?\s*;", line)
                if opened:
                    name, members = opened.group(1), []
                elif members is not None and closed:
                    structs[closed.group(1) or name] = members  # "typedef struct { ... } NAME;"
                    name, members = None, None
                elif members is not None:
                    found = member.match(line)
                    if found:
                        members.append((found.group(1).split()[-1], found.group(2), found.group(3)))
    return structs


def read_fields(layout):
    """(path, offset, size, text) of each line of a layout that names a field or a reserved run."""
    fields = []
    for line in layout.splitlines():
        reserved = re.search(r"(\d+) bytes reserved at (\d+) \(([^)]+)\)", line)
        field = re.match(r"^\s+(.*\S)\s+([A-Za-z_][^\s;]*);\s*/\*\s*(\d+)\s+(\d+)\s*\*/\s*(.*)$", line)
        if reserved:
            fields.append((reserved.group(3), int(reserved.group(2)), int(reserved.group(1)), "reserved: no parser writes it"))
        elif field:
            kind, keys = field.group(1), field.group(5).strip()
            fields.append((field.group(2), int(field.group(3)), int(field.group(4)),
                           "%s, from %s" % (kind, keys) if keys else kind))
    return fields


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--headers", required=True)
    parser.add_argument("--output", required=True)
    parser.add_argument("command", nargs="+")
    args = parser.parse_args()
    structs = read_structs(args.headers)

    types = []  # (number, key, parser, record, size)
    for line in run(args.command + ["types"]).splitlines():
        found = re.match(r"^\s*(\d+)\s+(\S+)\s+(\S+)\s+(\S+)\s+(\d+)\s*$", line)
        if found:
            types.append(found.groups())
    if not types:
        sys.exit("make-layout-pages: `mdvr-param types` listed no type")

    pages = ["/** \\page record_layouts Record layouts\n",
             "The layout of each record, as `mdvr-param layout` prints it when this reference is built:\n",
             "every field with its type, offset and size in bytes and the JSON key it is read from, and the\n",
             "reserved bytes that no parser writes. Offsets and sizes are those of the 32-bit ARM recorder.\n\n"]
    pages += ["- \\subpage layout_%s\n" % key for _, key, _, _, _ in types]
    pages.append("*/\n\n")
    seen_on = collections.defaultdict(list)  # struct -> [(key, where)]
    member_docs = {}  # (struct, member) -> text
    for number, key, parser_name, record, size in types:
        layout = run(args.command + ["layout", key])
        pages.append("/** \\page layout_%s %s: %s (type %s)\n" % (key, key, record, number))
        pages.append("Section \"%s\", parameter type %s, read by %s() into a %s of %s bytes.\n"
                     % (key, number, parser_name, record, size))
        pages.append("\\verbatim\n%s\\endverbatim\n*/\n\n" % layout.replace("*/", "* /"))
        # Fields are found by name in the layout with every array element listed.
        fields = read_fields(run(args.command + ["layout", "--expand", key]))

        def describe(struct, prefix, base, where):
            seen_on[struct].append((key, where))
            for kind, name, dims in structs.get(struct, []):
                path = prefix + name
                mine = [f for f in fields if f[0] == path or f[0].startswith(path + ".") or f[0].startswith(path + "[")]
                if not mine:
                    continue
                start = min(f[1] for f in mine)
                end = max(f[1] + f[2] for f in mine)
                text = "At offset %d of the %s, %d byte%s" % (start - base, "sub-record" if prefix else "record",
                                                              end - start, "" if end - start == 1 else "s")
                if len(mine) == 1 and mine[0][0] == path:
                    # A sub-record's keys are those of the record it was found in: only its type.
                    text += ": %s" % (mine[0][3].split(", from ")[0] if prefix else mine[0][3])
                member_docs.setdefault((struct, name), text + "; see \\ref layout_%s." % key)
                if kind in structs:
                    element = path + "[0]" * dims.count("[") + "."
                    inner = [f[1] for f in fields if f[0].startswith(element)]
                    if inner:
                        describe(kind, element, min(inner), "%s::%s" % (struct, name))

        describe(record, "", 0, record)

    docs = []
    for struct, places in seen_on.items():
        if struct not in structs:
            continue
        links = ", ".join("\\ref layout_%s%s" % (key, "" if where == struct else " (as %s)" % where)
                          for key, where in places)
        docs.append("/** \\struct %s\n\\par Layout\nField by field, with offsets and sizes: %s.\n*/\n" % (struct, links))
        for _, name, _ in structs[struct]:
            text = member_docs.get((struct, name))
            if text is None:
                text = "Its offset and size are on the layout page: \\ref layout_%s." % places[0][0]
            docs.append("/** \\var %s::%s\n%s\n*/\n" % (struct, name, text))
    with open(args.output, "w") as out:
        out.write("/* Made by docs/api/make-layout-pages.py from `mdvr-param layout`: do not edit. */\n\n")
        out.write("".join(pages))
        out.write("".join(docs))
    print("%d layout pages, %d record types" % (len(types), len(seen_on)))


if __name__ == "__main__":
    main()
