#!/usr/bin/env python3
"""Makes a tool's man page from the tool itself and one include file.

    make-man-page.py --include docs/man/TOOL.h2m --output TOOL.1 [--set NAME=VALUE]... -- COMMAND...

COMMAND runs the tool (with an emulator in front of it when cross compiling).
What the tool prints is the one source of everything it can say itself:

    SYNOPSIS      the "Usage:" line of `TOOL --help`, and of `TOOL SUB --help` for each subcommand
    DESCRIPTION   the text before "Usage:" in `TOOL --help`
    OPTIONS       the positionals and options of `TOOL --help`
    COMMANDS      per subcommand: its description, positionals and options from `TOOL SUB --help`
    EXIT STATUS   the "Exit status:" footer of `TOOL --help`
    the date and version of .TH from `TOOL --version`

The include file (help2man's syntax: a line "[SECTION]" starts a section, text
before the first one is a comment) adds only what --help lacks: NAME,
[>DESCRIPTION] (appended to the tool's own description), ENVIRONMENT, FILES,
EXAMPLES, DIAGNOSTICS and SEE ALSO. A section of the include file that the tool
already gives (SYNOPSIS, OPTIONS, COMMANDS, EXIT STATUS, or DESCRIPTION without
">") is an error: the page would say it twice. "@NAME@" in the include file is
replaced by the value of --set NAME=VALUE (an installed path, say).
"""
import argparse
import datetime
import os
import re
import subprocess
import sys

GENERATED = {"SYNOPSIS", "OPTIONS", "COMMANDS", "EXIT STATUS", "DESCRIPTION"}
ADDED = ["NAME", ">DESCRIPTION", "ENVIRONMENT", "FILES", "EXAMPLES", "DIAGNOSTICS", "SEE ALSO"]


def fail(message):
    sys.exit("make-man-page: " + message)


def run(command):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if result.returncode != 0:
        fail("%s exited %d: %s" % (" ".join(command), result.returncode, result.stderr.strip()))
    return result.stdout


def escape(text):
    """Plain text as troff text: backslashes and hyphens escaped, no control line."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return re.sub(r"^([.'])", r"\\&\1", text, flags=re.M)


class Entry:
    """One option or positional of a --help: its names, the rest of its head, its text."""

    def __init__(self, head, text):
        words = head.split(None, 1)
        self.names = words[0].split(",")
        self.rest = words[1] if len(words) > 1 else ""
        self.text = text

    def is_help(self):
        return "--help" in self.names

    def troff(self, positional):
        names = ", ".join("\\fB%s\\fR" % escape(n) if not positional else "\\fI%s\\fR" % escape(n)
                          for n in self.names)
        # The head after the names: a type name, a default (TYPE=VALUE),
        # REQUIRED, and CLI11's "Excludes: ..." / "Needs: ...", as printed.
        extra = re.split(r"\s+(?=(?:Excludes|Needs|REQUIRED)\b)", self.rest, maxsplit=1)
        kind = extra[0] if extra[0] and not re.match(r"(Excludes|Needs|REQUIRED)\b", extra[0]) else ""
        notes = self.rest[len(kind):].strip()
        tag = names + (" \\fI%s\\fR" % escape(kind) if kind else "")
        text = escape(self.text)
        if notes:
            text += (" " if text else "") + "(%s)" % escape(notes)
        return ".TP\n%s\n%s\n" % (tag, text)


class Help:
    """What CLI11 prints for --help: description, usage, groups of entries, footer."""

    def __init__(self, text):
        lines = text.rstrip("\n").split("\n")
        usage = next((i for i, line in enumerate(lines) if line.startswith("Usage: ")), None)
        if usage is None:
            fail("no \"Usage:\" line in\n" + text)
        self.description = " ".join(line.strip() for line in lines[:usage] if line.strip())
        self.usage = lines[usage][len("Usage: "):].strip()
        self.blocks = []  # (heading, note, [Entry]) in order: Positionals, Options, groups
        self.subcommands = []  # (name, description)
        self.footer = ""
        i = usage + 1
        while i < len(lines):
            line = lines[i]
            heading = re.match(r"^\s*(Positionals|Options|Subcommands):$", line)
            group = re.match(r"^\[Option Group: (.*)\]$", line)
            if group:
                self.blocks.append(("group", group.group(1), []))
                i += 1
            elif heading:
                i = self._block(lines, i + 1, heading.group(1), len(line) - len(line.lstrip()))
            elif re.match(r"^\s*\[(.*)\]$", line) and self.blocks and self.blocks[-1][0] == "group":
                self.blocks[-1] = ("group", re.match(r"^\s*\[(.*)\]$", line).group(1), self.blocks[-1][2])
                i += 1
            elif line.strip() == "":
                i += 1
            else:
                # The footer: everything from the first line that is none of the above.
                self.footer = "\n".join(lines[i:]).strip()
                break

    def _block(self, lines, i, heading, indent):
        entries = []
        while i < len(lines) and lines[i].strip():
            line = lines[i]
            own = len(line) - len(line.lstrip())
            if own <= indent:
                break
            if entries and own > indent + 2:  # the text of the entry above, on a line of its own
                entries[-1].text = (entries[-1].text + " " + line.strip()).strip()
            else:
                parts = re.split(r"\s{2,}", line.strip(), maxsplit=1)
                entries.append(Entry(parts[0], parts[1] if len(parts) > 1 else ""))
            i += 1
        if heading == "Subcommands":
            self.subcommands = [(e.names[0], e.text) for e in entries]
        elif self.blocks and self.blocks[-1][0] == "group" and indent > 0:
            self.blocks[-1][2].extend(entries)
        else:
            self.blocks.append((heading, None, entries))
        return i

    def entries(self, skip_help):
        """The blocks as troff: positionals, options and option groups."""
        out = ""
        for heading, note, entries in self.blocks:
            shown = [e for e in entries if not (skip_help and e.is_help())]
            if not shown:
                continue
            if heading == "group" and note:
                out += ".PP\n%s:\n" % escape(note.strip("[]"))
            out += "".join(e.troff(heading == "Positionals") for e in shown)
        return out


def exit_status(footer):
    """The "Exit status:" footer: a list of "N  text" lines, or one paragraph."""
    match = re.match(r"^Exit status:\s*(.*)$", footer, flags=re.S)
    if not match:
        fail("the --help has no \"Exit status:\" footer, which EXIT STATUS is made of:\n" + footer)
    body = match.group(1)
    items = re.findall(r"^\s*(\d+)\s{2,}(.*(?:\n\s{4,}\S.*)*)", body, flags=re.M)
    if items:
        return "".join(".TP\n.B %s\n%s\n" % (n, escape(" ".join(t.split()))) for n, t in items)
    return escape(" ".join(body.split())) + "\n"


def read_include(path, values):
    sections, name = {}, None
    with open(path, encoding="utf-8") as f:
        for line in f:
            heading = re.match(r"^\[([<>]?)([A-Z][A-Z ]*)\]\s*$", line)
            if heading:
                name = heading.group(1) + heading.group(2)
                if name.lstrip("<>") in GENERATED and name != ">DESCRIPTION":
                    fail("%s: [%s] comes from the tool's --help; say it there, once" % (path, name))
                if name not in ADDED:
                    fail("%s: unknown section [%s] (known: %s)" % (path, name, ", ".join(ADDED)))
                sections[name] = ""
            elif name:
                sections[name] += line
    for name, text in sections.items():
        for key, value in values.items():
            text = text.replace("@%s@" % key, value)
        if "@" in re.sub(r"\S+@\S+\.\S+", "", text) and re.search(r"@[A-Z_]+@", text):
            fail("%s: no value for %s" % (path, re.search(r"@[A-Z_]+@", text).group(0)))
        sections[name] = text.strip("\n") + "\n"
    if "NAME" not in sections:
        fail("%s: no [NAME]" % path)
    return sections


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--include", required=True)
    parser.add_argument("--output", required=True)
    parser.add_argument("--set", action="append", default=[])
    parser.add_argument("command", nargs="+")
    args = parser.parse_args()
    values = dict(item.split("=", 1) for item in args.set)
    values = {k: escape(v) for k, v in values.items()}

    command = args.command
    tool = os.path.basename(command[-1])
    top = Help(run(command + ["--help"]))
    version = run(command + ["--version"]).strip()
    # "TOOL (BSCommonLibrary) 1.0": the page's source is "BSCommonLibrary 1.0".
    match = re.match(r"^\S+ \((.*)\) (\S+)$", version)
    source = "%s %s" % (match.group(1), match.group(2)) if match else version
    include = read_include(args.include, values)
    epoch = os.environ.get("SOURCE_DATE_EPOCH")
    when = datetime.datetime.utcfromtimestamp(int(epoch)) if epoch else datetime.datetime.utcnow()

    subs = [(name, text, Help(run(command + [name, "--help"]))) for name, text in top.subcommands]

    page = ['.\\" Made by docs/man/make-man-page.py from "%s --help" and %s: do not edit.\n'
            % (tool, os.path.basename(args.include)),
            '.TH %s 1 "%s" "%s" "User Commands"\n' % (tool.upper(), when.strftime("%B %Y"), source),
            # No hyphenation and no adjusting: options and paths stay whole,
            # as they are typed.
            ".nh\n.ad l\n"]
    page.append(".SH NAME\n" + include["NAME"])
    # The command in bold, its arguments as CLI11 prints them.
    synopsis = [(tool, top.usage)] + [("%s %s" % (tool, name), h.usage) for name, _, h in subs]
    page.append(".SH SYNOPSIS\n" + ".br\n".join(
        "\\fB%s\\fR%s\n" % (escape(words), escape(usage[len(words):] if usage.startswith(words) else " " + usage))
        for words, usage in synopsis))
    page.append(".SH DESCRIPTION\n" + escape(top.description) + "\n" +
                (".PP\n" + include[">DESCRIPTION"] if ">DESCRIPTION" in include else ""))
    page.append(".SH OPTIONS\n" + top.entries(skip_help=False))
    if subs:
        text = ".SH COMMANDS\nEach command takes the options listed with it; \\fB%s \\fICOMMAND\\fB \\-\\-help\\fR " \
               "prints them.\n" % escape(tool)
        for name, summary, help in subs:
            text += '.SS "%s %s"\n' % (escape(tool), escape(name))
            text += escape(help.description or summary) + "\n"
            text += help.entries(skip_help=True)
            if help.footer and help.footer != top.footer:
                text += ".PP\n" + escape(" ".join(help.footer.split())) + "\n"
        page.append(text)
    page.append('.SH "EXIT STATUS"\n' + exit_status(top.footer))
    for name in ADDED[2:]:
        if name in include:
            page.append('.SH %s\n' % ('"%s"' % name if " " in name else name) + include[name])
    os.makedirs(os.path.dirname(os.path.abspath(args.output)), exist_ok=True)
    with open(args.output, "w", encoding="utf-8") as f:
        f.write("".join(page))


if __name__ == "__main__":
    main()
