#!/usr/bin/env python3
"""Every kind of the catalogue that Tarnby shows is recognised by the desktop
and offered by the desktop entry: a small file of each kind, with the header
its format begins with where it has one, is given to `xdg-mime query
filetype` with Tarnby's MIME XML installed into a temporary XDG data folder,
and the type found must be one the entry offers. The old kinds need the XML:
without it they are not recognised as their type. When the real sample files
are there (TARNBY_FIXTURES), the first few of each kind must be offered too.
Usage: check_mime.py PREFIX SOURCE_DIR WORK_DIR"""

import os
import shutil
import struct
import sys

from installtest import catalogue_extensions, check, desktop_mime_types, main, run

# Kinds the entry does not offer: formats no library reads, and system and
# data files with no type of their own (they are text or bytes to the desktop).
NOT_OFFERED = {"CMP", "AWD", "INI", "BAT", "BAK", "DOS", "SYS", "LST", "MSG", "DAT", "CDA"}

# The bytes a sample of the kind begins with: its header, where the format has
# one that the MIME database knows or that Tarnby's XML gives.
HEADERS = {
    "JPG": b"\xff\xd8\xff\xe0\x00\x10JFIF\x00",
    "PNG": b"\x89PNG\r\n\x1a\n",
    "BMP": b"BM",
    "GIF": b"GIF89a",
    "PCX": b"\x0a\x05\x01\x08",
    "DCX": struct.pack("<I", 0x3ADE68B1),
    "IMG": struct.pack(">HHHHHHHH", 1, 8, 1, 2, 1, 1, 16, 16),  # GEM: version 1, 8 header words
    "MSP": b"LinS",
    "CLP": struct.pack("<H", 0xC350),
    "RMI": b"RIFF\x10\x00\x00\x00RMIDdata",
    "WAV": b"RIFF\x10\x00\x00\x00WAVEfmt ",
    "AVI": b"RIFF\x10\x00\x00\x00AVI LIST",
    "ZIP": b"PK\x03\x04",
    "PSD": b"8BPS\x00\x01",
    "TXT": b"plain text\n",
    "LOG": b"a line of a log\n",
    "HTM": b"<html><body>page</body></html>\n",
    "HTML": b"<html><body>page</body></html>\n",
    "RTF": b"{\\rtf1 text}\n",
}

# What some samples must come out as, whatever the order of the database.
EXPECTED = {
    "PCX": "image/vnd.zbrush.pcx",
    "DBF": "application/x-dbf",
    "IMG": "image/x-gem",  # a GEM header wins over the disk images' *.img
    "MAC": "image/x-macpaint",
    "MSP": "image/x-msp",
    "CUT": "image/x-halo-cut",
    "DB": "application/x-paradox",
    "WK4": "application/vnd.lotus-1-2-3",
}

# Kinds that only Tarnby's XML makes known.
NEED_THE_XML = ("MAC", "IMG", "MSP", "CUT", "DB", "DCX", "CLP")


def query(path, env):
    return run(["xdg-mime", "query", "filetype", path], env=env).stdout.strip()


def test():
    prefix, source, work = sys.argv[1:4]
    shutil.rmtree(work, ignore_errors=True)
    samples = os.path.join(work, "samples")
    os.makedirs(samples)

    # A desktop-neutral environment: xdg-mime asks the shared MIME database
    # (through mimetype), which reads XDG_DATA_HOME before the system folders.
    base = {k: v for k, v in os.environ.items() if not k.startswith("XDG_") and k not in ("KDE_FULL_SESSION",
                                                                                       "GNOME_DESKTOP_SESSION_ID",
                                                                                       "DESKTOP_SESSION")}
    base["XDG_DATA_DIRS"] = "/usr/local/share:/usr/share"
    bare = dict(base, XDG_DATA_HOME=os.path.join(work, "bare"))
    with_xml = dict(base, XDG_DATA_HOME=os.path.join(work, "data"))
    packages = os.path.join(work, "data", "mime", "packages")
    os.makedirs(packages)
    os.makedirs(os.path.join(work, "bare"))
    shutil.copy(os.path.join(prefix, "share/mime/packages/tarnby.xml"), packages)
    database = run(["update-mime-database", os.path.join(work, "data", "mime")], env=with_xml)
    check(not database.stderr.strip(), "update-mime-database complains about tarnby.xml:\n" + database.stderr)

    offered = set(desktop_mime_types(os.path.join(prefix, "share/applications/tarnby.desktop")))
    problems = []
    checked = 0
    for ext in catalogue_extensions(source):
        if ext in NOT_OFFERED:
            continue
        path = os.path.join(samples, "sample." + ext.lower())
        with open(path, "wb") as f:
            f.write(HEADERS.get(ext, b"\x00\x01\x02\x03sample of " + ext.encode() + b"\x00" * 64))
        found = query(path, with_xml)
        checked += 1
        if found not in offered:
            problems.append("%s is %s, which the entry does not offer" % (ext, found))
        if ext in EXPECTED and found != EXPECTED[ext]:
            problems.append("%s is %s, not %s" % (ext, found, EXPECTED[ext]))
        if ext in NEED_THE_XML:
            without = query(path, bare)
            if without == found:
                problems.append("%s is %s even without tarnby.xml" % (ext, found))

    # Real files of each kind, read in place.
    fixtures = os.environ.get("TARNBY_FIXTURES", "")
    real = 0
    if os.path.isdir(fixtures):
        for ext in catalogue_extensions(source):
            folder = os.path.join(fixtures, ext)
            if ext in NOT_OFFERED or not os.path.isdir(folder):
                continue
            names = sorted(n for n in os.listdir(folder) if n.upper().endswith("." + ext))
            for name in names[:3]:
                found = query(os.path.join(folder, name), with_xml)
                real += 1
                if found not in offered:
                    problems.append("the sample %s/%s is %s, which the entry does not offer" % (ext, name, found))
    check(not problems, "\n  ".join(["the MIME types do not match:"] + problems))
    print("%d kinds of the catalogue recognised and offered; %d real samples offered%s"
          % (checked, real, "" if real else " (TARNBY_FIXTURES is not there)"))


main(test)
