#!/usr/bin/env python3
"""Installs the build into a fresh prefix, which the other install tests read.
Usage: install_prefix.py BUILD_DIR PREFIX"""

import shutil
import sys

from installtest import main, run


def test():
    build, prefix = sys.argv[1:3]
    shutil.rmtree(prefix, ignore_errors=True)
    run(["cmake", "--install", build, "--prefix", prefix])


main(test)
