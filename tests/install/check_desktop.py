#!/usr/bin/env python3
"""The installed desktop entry: valid for desktop-file-validate, starts the
installed program with the chosen files, names the installed icon, and offers
only MIME types that the shared database or Tarnby's own XML defines.
Usage: check_desktop.py PREFIX"""

import os
import sys
import xml.etree.ElementTree as ElementTree

from installtest import check, desktop_mime_types, main, run

NS = "{http://www.freedesktop.org/standards/shared-mime-info}"


def known_system_types():
    known = set()
    for name in ("types", "aliases"):
        path = os.path.join("/usr/share/mime", name)
        check(os.path.exists(path), "%s is missing (package shared-mime-info)" % path)
        for line in open(path):
            known.update(line.split())
    return known


def test():
    prefix = sys.argv[1]
    entry = os.path.join(prefix, "share/applications/tarnby.desktop")
    result = run(["desktop-file-validate", entry])
    check(not result.stdout.strip(), "desktop-file-validate reports:\n" + result.stdout)

    keys = dict(line.strip().split("=", 1) for line in open(entry) if "=" in line)
    check(keys.get("Exec", "").split() == ["tarnby", "%F"], "Exec is %r, not \"tarnby %%F\"" % keys.get("Exec"))
    check(os.path.exists(os.path.join(prefix, "bin", keys["Exec"].split()[0])), "Exec names no installed program")
    check(keys.get("GenericName") == "File Utility", "GenericName is %r" % keys.get("GenericName"))
    check(os.path.exists(os.path.join(prefix, "share/icons/hicolor/scalable/apps", keys.get("Icon", "") + ".svg")),
          "Icon=%s is not installed" % keys.get("Icon"))

    ours = set()
    xml = os.path.join(prefix, "share/mime/packages/tarnby.xml")
    for element in ElementTree.parse(xml).getroot().iter(NS + "mime-type"):
        ours.add(element.get("type"))
    known = known_system_types()
    offered = desktop_mime_types(entry)
    check(len(offered) == len(set(offered)), "MimeType names a type twice")
    unknown = [t for t in offered if t not in known and t not in ours]
    check(not unknown, "MimeType names types nobody defines: %s" % unknown)
    unoffered = sorted(ours - set(offered))
    check(not unoffered, "tarnby.xml defines types the entry does not offer: %s" % unoffered)
    print("%d MIME types offered, %d from tarnby.xml" % (len(offered), len(ours)))


main(test)
