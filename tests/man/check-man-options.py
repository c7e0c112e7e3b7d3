#!/usr/bin/env python3
"""Checks that a tool's man page names everything its --help names.

    check-man-options.py [--emulator "CMD ARGS"] MAN_DIR TOOL=PATH...

For each tool, MAN_DIR/TOOL.1 is formatted with man, and `TOOL --help` (and
`TOOL COMMAND --help` for each command it lists) is read as a person reads
it, not the way the page generator does: every word that starts with a dash
at the start of a line under an "Options:" heading is an option. Then

  - each option of `TOOL --help` is in the page's OPTIONS section;
  - each command has a subsection "TOOL COMMAND" under COMMANDS, holding each
    option of its --help (its -h/--help may be only under OPTIONS);
  - no sentence of five words or more outside OPTIONS and COMMANDS is said
    twice on the page.

Any miss is named on standard error and the exit status is 1.
"""
import argparse
import os
import re
import shlex
import subprocess
import sys

failures = []


def fail(message):
    failures.append(message)
    print("FAIL: " + message, file=sys.stderr)


def help_text(command):
    result = subprocess.run(command + ["--help"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if result.returncode != 0:
        fail("%s --help exited %d: %s" % (" ".join(command), result.returncode, result.stderr))
    return result.stdout


def options_and_commands(text):
    """The options (each name of each) and the commands that a --help lists."""
    options, commands, heading = [], [], None
    for line in text.splitlines():
        match = re.match(r"^\s*([A-Z][A-Za-z ]*):$", line)
        if match:
            heading = match.group(1)
            continue
        if not line.strip():
            continue
        if heading == "Options":
            match = re.match(r"^\s+(-[^\s]*)", line)
            if match:
                options += [name for name in match.group(1).split(",") if name.startswith("-")]
        elif heading == "Subcommands":
            match = re.match(r"^\s{2}(\S+)", line)
            if match:
                commands.append(match.group(1))
    return options, commands


def sections(page):
    """The formatted page's sections: {heading: text}, and each subsection of COMMANDS."""
    out, subs, current, sub = {}, {}, None, None
    for line in page.splitlines():
        if re.match(r"^[A-Z]", line):
            current, sub = line.strip(), None
            out[current] = ""
        elif current is not None:
            out[current] += line + "\n"
            heading = re.match(r"^ {3}(\S.*)$", line)
            if current == "COMMANDS" and heading:
                sub = heading.group(1).strip()
                subs[sub] = ""
            elif sub is not None:
                subs[sub] += line + "\n"
    return out, subs


def has(text, option):
    return re.search(r"(?<![\w-])%s(?![\w-])" % re.escape(option), text) is not None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--emulator", default="")
    parser.add_argument("man_dir")
    parser.add_argument("tools", nargs="+")
    args = parser.parse_args()
    emulator = shlex.split(args.emulator)
    checked = 0
    for item in args.tools:
        tool, path = item.split("=", 1)
        page_file = os.path.join(args.man_dir, tool + ".1")
        env = dict(os.environ, MANWIDTH="200", LC_ALL="C.UTF-8")
        page = subprocess.run(["man", "-l", page_file], stdout=subprocess.PIPE, text=True, env=env).stdout
        parts, subs = sections(page)
        options, commands = options_and_commands(help_text(emulator + [path]))
        if not options:
            fail("%s --help lists no option: is it still CLI11's format?" % tool)
        for option in options:
            checked += 1
            if not has(parts.get("OPTIONS", ""), option):
                fail("%s(1): OPTIONS lacks %s, which `%s --help` lists" % (tool, option, tool))
        for command in commands:
            title = "%s %s" % (tool, command)
            if title not in subs:
                fail("%s(1): COMMANDS has no subsection \"%s\"" % (tool, title))
                continue
            for option in options_and_commands(help_text(emulator + [path, command]))[0]:
                checked += 1
                if option in ("-h", "--help"):
                    if not has(parts.get("OPTIONS", ""), option):
                        fail("%s(1): OPTIONS lacks %s" % (tool, option))
                elif not has(subs[title], option):
                    fail("%s(1): \"%s\" lacks %s, which `%s --help` lists" % (tool, title, option, title))
        # What is said once: the sentences of the sections other than the
        # option lists.
        said = {}
        for heading, text in parts.items():
            if heading in ("OPTIONS", "COMMANDS", "EXAMPLES", "SYNOPSIS"):
                continue
            for sentence in re.split(r"(?<=[.;:])\s+", " ".join(text.split())):
                if len(sentence.split()) >= 5:
                    if sentence in said:
                        fail("%s(1): said twice, in %s and %s: \"%s\"" % (tool, said[sentence], heading, sentence))
                    said[sentence] = heading
        print("%s(1): %d options and %d commands of its --help on the page" % (tool, len(options), len(commands)))
    if failures:
        print("%d failures" % len(failures), file=sys.stderr)
        return 1
    print("%d options checked" % checked)
    return 0


if __name__ == "__main__":
    sys.exit(main())
