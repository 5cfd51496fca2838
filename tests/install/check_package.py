#!/usr/bin/env python3
"""The Debian package, built by CPack from this build folder and read back with
dpkg-deb: its fields, its dependencies (the libraries' packages computed by
dpkg-shlibdeps, and the plugins named by hand), its files, which are the
installed tree's below /usr, owned by root, the programs stripped; and that
dpkg installs it into an empty root and removes it again without a trace (the
dependencies are not there, so they are ignored).
Usage: check_package.py BUILD_DIR PREFIX WORK_DIR [sanitize]"""

import glob
import os
import re
import shutil
import sys

from installtest import SKIP, check, main, run

# Packages that only dpkg-shlibdeps puts there: proof that it ran.
FROM_LIBRARIES = ("libc6", "libqt6core6", "libqt6gui6", "libqt6widgets6", "libqt6multimedia6")
# Packages named by hand: plugins and programs no link shows.
BY_HAND = ("qt6-image-formats-plugins", "libqt6sql6-sqlite", "gstreamer1.0-plugins-good", "gstreamer1.0-libav", "antiword | catdoc")


def test():
    build, prefix, work = sys.argv[1:4]
    if sys.argv[4:] == ["sanitize"]:
        print("SKIP: a sanitizer build is not packaged; the package is built from the normal build")
        return SKIP
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    run(["cpack", "--config", os.path.join(build, "CPackConfig.cmake"), "-G", "DEB", "-B", work])
    packages = glob.glob(os.path.join(work, "*.deb"))
    check(len(packages) == 1, "cpack made %s" % packages)
    package = packages[0]
    arch = run(["dpkg", "--print-architecture"]).stdout.strip()
    check(os.path.basename(package) == "tarnby_3.0.0-1_%s.deb" % arch, "the package is named %s" % package)

    info = run(["dpkg-deb", "-I", package]).stdout
    fields = dict(re.findall(r"^ ([A-Za-z-]+): (.*)$", info, re.M))
    for name, value in (("Package", "tarnby"), ("Version", "3.0.0-1"), ("Architecture", arch),
                        ("Section", "utils")):
        check(fields.get(name) == value, "%s is %r, not %r" % (name, fields.get(name), value))
    check(fields.get("Maintainer"), "the package has no Maintainer")
    check(fields.get("Description", "").strip(), "the package has no description")
    depends = [d.strip() for d in fields.get("Depends", "").split(",")]
    names = {re.sub(r"\s*\(.*\)", "", d) for d in depends}
    for package_name in FROM_LIBRARIES + BY_HAND:
        check(package_name in names, "Depends lacks %s: %s" % (package_name, fields.get("Depends")))
    versioned = [d for d in depends if d.startswith("libqt6core6 (")]
    check(versioned, "the library dependencies carry no versions: %s" % fields.get("Depends"))

    listing = run(["dpkg-deb", "-c", package]).stdout.splitlines()
    files = {}
    for line in listing:
        parts = line.split(None, 5)
        mode, owner, path = parts[0], parts[1], parts[5]
        check(owner == "root/root", "%s is owned by %s" % (path, owner))
        check(path == "./" or path.startswith("./usr/"), "%s is outside /usr" % path)
        if not mode.startswith("d"):
            files[path[len("./usr/"):]] = mode
    installed = set()
    for folder, _, names_in in os.walk(prefix):
        installed |= {os.path.relpath(os.path.join(folder, n), prefix) for n in names_in}
    check(set(files) == installed, "the package's files differ from the installed tree: only packaged %s, "
          "only installed %s" % (sorted(set(files) - installed), sorted(installed - set(files))))
    programs = ["bin/tarnby", "bin/tarnby-cli"] + sorted(f for f in files if f.startswith("libexec/tarnby/"))
    for program in programs:
        check(files[program] == "-rwxr-xr-x", "%s has mode %s" % (program, files[program]))
    check(files["share/tarnby/TIPHELP.TXT"] == "-rw-r--r--", "the tips are not readable by all")

    unpacked = os.path.join(work, "unpacked")
    run(["dpkg-deb", "-x", package, unpacked])
    sections = run(["readelf", "-S", "-W", os.path.join(unpacked, "usr/bin/tarnby")]).stdout
    check(".debug_info" not in sections, "the packaged tarnby is not stripped")
    # The launcher finds the program behind a command where the package puts it.
    typed = run([os.path.join(unpacked, "usr/bin/tarnby-cli"), "type", "a.txt"]).stdout
    check(typed.startswith("a.txt\t"), "the packaged tarnby-cli type printed %r" % typed)
    root = os.path.join(work, "root")
    os.makedirs(os.path.join(root, "var/lib/dpkg/info"))
    os.makedirs(os.path.join(root, "var/lib/dpkg/updates"))
    open(os.path.join(root, "var/lib/dpkg/status"), "w").close()
    dpkg = ["dpkg", "--root=" + root, "--force-depends", "--force-not-root", "--force-script-chrootless"]
    run(dpkg + ["--install", package])
    status = run(["dpkg-query", "--root=" + root, "-W", "-f=${Status}", "tarnby"]).stdout
    check(status == "install ok installed", "dpkg reports the package as %r" % status)
    check(os.path.exists(os.path.join(root, "usr/share/applications/tarnby.desktop")), "dpkg installed no entry")
    run(dpkg + ["--purge", "tarnby"])
    check(not os.path.exists(os.path.join(root, "usr")), "removing the package leaves files below usr")

    print("%s: %d files, depends on %d packages" % (os.path.basename(package), len(files), len(depends)))


main(test)
