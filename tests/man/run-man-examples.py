#!/usr/bin/env python3
"""Runs the EXAMPLES of every installed man page, as a person would copy them.

    run-man-examples.py BUILD_DIR

Installs the build into a scratch prefix, formats each installed page with
man, and runs the lines of its EXAMPLES section in order, in a scratch
directory, with the prefix's bin/ first in PATH, on a bus of the test's own
(XDG_RUNTIME_DIR is a fresh private directory, MDVR_BUS unset):

  - a line "# ..." is a comment;
  - "NAME=VALUE" sets a variable for the lines after it;
  - a line ending in "&" runs in the background; the next line starts when it
    has printed something, has ended, or 3 s have passed; when the page's
    lines are done, one still running is sent SIGTERM;
  - every other line must end within 60 s.

Each command must end with status 0, or with the status N its comment states
("# exit status N ..."). A page whose examples name a file that is not
installed fails with them. Exit status 1 when any line did not end as its
page says.
"""
import os
import re
import shutil
import signal
import stat
import subprocess
import sys
import time

failures = 0


def fail(message):
    global failures
    failures += 1
    print("FAIL: " + message, file=sys.stderr)


def examples(page):
    env = dict(os.environ, MANWIDTH="400", LC_ALL="C.UTF-8")
    text = subprocess.run(["man", "-l", page], stdout=subprocess.PIPE, text=True, env=env, check=True).stdout
    lines, inside = [], False
    for line in text.splitlines():
        if re.match(r"^[A-Z]", line):
            inside = line.strip() == "EXAMPLES"
        elif inside and line.strip():
            lines.append(line.strip())
    return lines


def expected_status(line):
    match = re.search(r"\s#\s.*?\bexit status (\d+)", line)
    return int(match.group(1)) if match else 0


def command_of(line):
    """The line without its trailing comment (none of the pages' commands holds " # ")."""
    return re.split(r"\s+#\s", line, maxsplit=1)[0].strip()


def output(path):
    with open(path, errors="replace") as f:
        return f.read()


def run_page(page, lines, work, env):
    name = os.path.basename(page)
    directory = os.path.join(work, name)
    os.makedirs(directory)
    settings, background, ran = [], [], 0
    for number, line in enumerate(lines, 1):
        if line.startswith("#"):
            continue
        command, expect = command_of(line), expected_status(line)
        log = os.path.join(directory, "line%d.out" % number)
        if re.match(r"^[A-Za-z_][A-Za-z0-9_]*=\S*$", command):
            settings.append(command)
            continue
        script = "; ".join(settings + [""]) if settings else ""
        ran += 1
        with open(log, "w") as out:
            if command.endswith("&"):
                process = subprocess.Popen(["bash", "-c", script + "exec " + command[:-1].strip()], cwd=directory,
                                           env=env, stdout=out, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL)
                background.append((process, line, expect, log))
                deadline = time.monotonic() + 3
                while time.monotonic() < deadline and process.poll() is None and os.path.getsize(log) == 0:
                    time.sleep(0.05)
                continue
            try:
                status = subprocess.run(["bash", "-c", script + command], cwd=directory, env=env, stdout=out,
                                        stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, timeout=60).returncode
            except subprocess.TimeoutExpired:
                status = "a timeout (60 s)"
        if status != expect:
            fail("%s: `%s` ended with %s, the page says status %d; it printed:\n%s"
                 % (name, line, status, expect, output(log)))
        else:
            print("%s: ok (status %d): %s" % (name, expect, command))
    for process, line, expect, log in background:
        if process.poll() is None:
            process.send_signal(signal.SIGTERM)
            try:
                process.wait(timeout=10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        if process.returncode != expect:
            fail("%s: `%s` ended with status %d, the page says %d; it printed:\n%s"
                 % (name, line, process.returncode, expect, output(log)))
        else:
            print("%s: ok (status %d): %s" % (name, expect, command_of(line)))
    return ran


def main():
    build = os.path.abspath(sys.argv[1])
    work = os.path.join(build, "man-examples")
    shutil.rmtree(work, ignore_errors=True)
    prefix = os.path.join(work, "prefix")
    subprocess.run(["cmake", "--install", build, "--prefix", prefix], check=True, stdout=subprocess.DEVNULL)
    runtime = os.path.join(work, "xdg")
    os.makedirs(runtime)
    os.chmod(runtime, stat.S_IRWXU)
    env = dict(os.environ, PATH=os.path.join(prefix, "bin") + os.pathsep + os.environ.get("PATH", ""),
               XDG_RUNTIME_DIR=runtime)
    env.pop("MDVR_BUS", None)
    pages_dir = os.path.join(prefix, "share", "man", "man1")
    pages = sorted(os.path.join(pages_dir, p) for p in os.listdir(pages_dir))
    if not pages:
        fail("no man page installed in " + pages_dir)
    total = 0
    for page in pages:
        lines = examples(page)
        if not [line for line in lines if not line.startswith("#")]:
            fail("%s: no examples" % os.path.basename(page))
            continue
        total += run_page(page, lines, os.path.join(work, "run"), env)
    if failures:
        print("%d examples of %d pages did not end as their page says" % (failures, len(pages)), file=sys.stderr)
        return 1
    print("%d examples of %d pages ended as their pages say" % (total, len(pages)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
