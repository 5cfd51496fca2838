#!/usr/bin/env python3
"""The installed tree, file by file: nothing missing, nothing extra, every
file what it should be. Usage: check_tree.py PREFIX SOURCE_DIR ICON_SIZE..."""

import filecmp
import gzip
import os
import struct
import sys

from installtest import check, delivered_files, main


def png_size(path):
    with open(path, "rb") as f:
        head = f.read(24)
    check(head[:8] == b"\x89PNG\r\n\x1a\n", "%s is not a PNG" % path)
    return struct.unpack(">II", head[16:24])


def test():
    prefix, source, sizes = sys.argv[1], sys.argv[2], sorted(int(s) for s in sys.argv[3:])
    check(sizes[0] <= 16 and sizes[-1] >= 256, "the icon sizes do not run from 16 to 256: %s" % sizes)

    expected = {"bin/tarnby", "bin/tarnby-cli",
                "share/applications/tarnby.desktop",
                "share/mime/packages/tarnby.xml",
                "share/icons/hicolor/scalable/apps/tarnby.svg",
                "share/man/man1/tarnby.1.gz", "share/man/man1/tarnby-cli.1.gz",
                "share/bash-completion/completions/tarnby-cli"}
    expected |= {"share/icons/hicolor/%dx%d/apps/tarnby.png" % (s, s) for s in sizes}
    delivered = delivered_files(source)
    check("TIPHELP.TXT" in delivered and "Close.Txt" in delivered, "the delivered files lack the tips")
    expected |= {"share/tarnby/" + f for f in delivered}

    installed = set()
    for folder, _, files in os.walk(prefix):
        for name in files:
            installed.add(os.path.relpath(os.path.join(folder, name), prefix))
    # The programs behind tarnby-cli, one a family of commands; that each one
    # runs from the installed tree is checked through "tarnby-cli --help",
    # which asks every one of them for its commands (check_cli_docs.py).
    programs = {f for f in installed if f.startswith("libexec/tarnby/tarnby-cli-")}
    check(len(programs) > 1, "no command programs in libexec/tarnby: %s" % sorted(programs))
    expected |= programs
    check(not expected - installed, "not installed: %s" % sorted(expected - installed))
    check(not installed - expected, "installed but not expected: %s" % sorted(installed - expected))

    for program in ["bin/tarnby", "bin/tarnby-cli"] + sorted(programs):
        path = os.path.join(prefix, program)
        check(os.access(path, os.X_OK), "%s is not executable" % program)
        with open(path, "rb") as f:
            check(f.read(4) == b"\x7fELF", "%s is not a program" % program)

    for f in delivered:
        check(filecmp.cmp(os.path.join(source, "resources", "programfolder", f),
                          os.path.join(prefix, "share", "tarnby", f), shallow=False),
              "share/tarnby/%s differs from its source" % f)
    for installed_name, source_name in (("share/applications/tarnby.desktop", "resources/desktop/tarnby.desktop"),
                                        ("share/mime/packages/tarnby.xml", "resources/desktop/tarnby.xml"),
                                        ("share/icons/hicolor/scalable/apps/tarnby.svg", "resources/desktop/tarnby.svg"),
                                        ("share/bash-completion/completions/tarnby-cli",
                                         "resources/completion/tarnby-cli")):
        check(filecmp.cmp(os.path.join(source, source_name), os.path.join(prefix, installed_name), shallow=False),
              "%s differs from %s" % (installed_name, source_name))

    for s in sizes:
        got = png_size(os.path.join(prefix, "share/icons/hicolor/%dx%d/apps/tarnby.png" % (s, s)))
        check(got == (s, s), "the %dx%d icon is %dx%d" % (s, s, got[0], got[1]))

    for page in ("tarnby.1", "tarnby-cli.1"):
        with gzip.open(os.path.join(prefix, "share/man/man1", page + ".gz"), "rb") as f:
            text = f.read()
        with open(os.path.join(source, "resources/man", page), "rb") as f:
            check(text == f.read(), "share/man/man1/%s.gz does not hold resources/man/%s" % (page, page))
    print("%d files installed as expected" % len(expected))


main(test)
