"""Helpers shared by the install tests: failing with a reason, running a
program, reading the pieces of the source tree that the tests compare the
installed files with."""

import os
import re
import subprocess
import sys

SKIP = 77  # the tests' SKIP_RETURN_CODE


class Failure(Exception):
    pass


def check(condition, message):
    if not condition:
        raise Failure(message)


def run(args, **kwargs):
    """Runs args and returns the completed process; a failing run fails the test."""
    result = subprocess.run(args, capture_output=True, text=True, **kwargs)
    if result.returncode != 0:
        raise Failure("%s exited with %d\n%s%s" % (" ".join(map(str, args)), result.returncode,
                                                   result.stdout, result.stderr))
    return result


def main(test):
    """Runs test(), printing the reason and failing the process when it fails."""
    try:
        status = test()
    except Failure as failure:
        print("FAIL:", failure)
        sys.exit(1)
    sys.exit(status or 0)


def delivered_files(source):
    """The files a new program folder is given, relative to resources/programfolder."""
    root = os.path.join(source, "resources", "programfolder")
    found = []
    for folder, _, files in os.walk(root):
        for name in files:
            found.append(os.path.relpath(os.path.join(folder, name), root))
    return sorted(found)


def catalogue_extensions(source):
    """The catalogue's known extensions, in table order, read from its source."""
    text = open(os.path.join(source, "src", "core", "catalogue", "FileCatalogue.cpp")).read()
    table = re.search(r"KnownExtensionTable = \{(.*?)\n\};", text, re.S)
    check(table, "the extension table was not found in FileCatalogue.cpp")
    body = re.sub(r"//[^\n]*", "", table.group(1))
    extensions = re.findall(r'"([A-Z0-9]+)"', body)
    check(len(extensions) == 71, "the catalogue table reads as %d extensions, not 71" % len(extensions))
    return extensions


def desktop_mime_types(desktop_file):
    for line in open(desktop_file):
        if line.startswith("MimeType="):
            return [t for t in line.strip()[len("MimeType="):].split(";") if t]
    raise Failure("%s has no MimeType line" % desktop_file)


def cli_commands(prefix, env=None):
    """The command names and the options that `tarnby-cli --help` lists."""
    text = run([os.path.join(prefix, "bin", "tarnby-cli"), "--help"], env=env).stdout
    commands = {}
    # A command's line, then its description indented further; options are
    # named in either.
    for match in re.finditer(r"^  ([a-z][a-z-]*)( [^\n]*)?\n((?:      [^\n]*\n)*)", text, re.M):
        words = (match.group(2) or "") + " " + match.group(3)
        commands[match.group(1)] = sorted(set(re.findall(r"--[a-z][a-z0-9-]*", words)))
    check(commands, "tarnby-cli --help lists no commands:\n" + text)
    return commands
