#!/usr/bin/env python3
"""The installed program seeds a new program folder from its own data folder.
The installed tree is linked into a second prefix, as if moved elsewhere, with
a tips file of its own there; the program started from that prefix must give
the new program folder that tips file, and every other delivered file.
Usage: check_start.py PREFIX WORK_DIR"""

import filecmp
import os
import shutil
import signal
import subprocess
import sys
import time

from installtest import check, main

MARKER = b"A tip that only this installed copy has.\r\n"


def test():
    prefix, work = sys.argv[1:3]
    shutil.rmtree(work, ignore_errors=True)
    moved = os.path.join(work, "moved")
    # Hard links keep the test cheap; the tips file is replaced, not changed,
    # so the installed one stays as it is.
    shutil.copytree(prefix, moved, copy_function=os.link)
    tips = os.path.join(moved, "share/tarnby/TIPHELP.TXT")
    original = open(tips, "rb").read()
    os.unlink(tips)
    with open(tips, "wb") as f:
        f.write(MARKER + original)

    home = os.path.join(work, "home")
    log = open(os.path.join(work, "tarnby.log"), "wb")
    program = subprocess.Popen([os.path.join(moved, "bin/tarnby"), "--home", home], stdout=log,
                               stderr=subprocess.STDOUT, env=dict(os.environ, QT_QPA_PLATFORM="offscreen"))
    delivered = []
    for folder, _, files in os.walk(os.path.join(moved, "share/tarnby")):
        delivered += [os.path.relpath(os.path.join(folder, f), os.path.join(moved, "share/tarnby")) for f in files]
    try:
        # The folder is seeded during start-up; wait for the last file of it
        # (generously: a sanitizer build starts slowly), or for an early exit.
        deadline = time.monotonic() + 120
        while time.monotonic() < deadline and program.poll() is None:
            if all(os.path.exists(os.path.join(home, f)) for f in delivered):
                break
            time.sleep(0.2)
        check(program.poll() is None, "tarnby exited with %s at start:\n%s"
              % (program.returncode, open(os.path.join(work, "tarnby.log"), "rb").read().decode(errors="replace")))
    finally:
        if program.poll() is None:
            program.send_signal(signal.SIGTERM)
            program.wait(30)
    missing = [f for f in delivered if not os.path.exists(os.path.join(home, f))]
    check(not missing, "the new program folder lacks %s" % missing)
    check(open(os.path.join(home, "TIPHELP.TXT"), "rb").read() == MARKER + original,
          "the tips did not come from the installed data folder")
    for f in delivered:
        check(filecmp.cmp(os.path.join(moved, "share/tarnby", f), os.path.join(home, f), shallow=False),
              "%s differs from the installed one" % f)
    print("the new program folder got the %d installed files" % len(delivered))


main(test)
