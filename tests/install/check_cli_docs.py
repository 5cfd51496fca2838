#!/usr/bin/env python3
"""tarnby-cli documents and completes itself: every command and option that
`tarnby-cli --help` lists is in the manual page and offered by the bash
completion, and both manual pages render without warnings.
Usage: check_cli_docs.py PREFIX"""

import gzip
import os
import subprocess
import sys

from installtest import check, cli_commands, main, run

COMPLETION_DRIVER = r'''
source /usr/share/bash-completion/bash_completion || exit 3
source "$1" || exit 3
shift
COMP_WORDS=("$@")
COMP_CWORD=$(( ${#COMP_WORDS[@]} - 1 ))
COMP_LINE="${COMP_WORDS[*]}"
COMP_POINT=${#COMP_LINE}
_tarnby_cli tarnby-cli "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD-1]}"
printf '%s\n' "${COMPREPLY[@]}"
'''


def complete(script, *words):
    result = run(["bash", "-c", COMPLETION_DRIVER, "complete", script, "tarnby-cli", *words])
    return set(result.stdout.split())


def test():
    prefix = sys.argv[1]
    check(os.path.exists("/usr/share/bash-completion/bash_completion"),
          "bash-completion is not installed (package bash-completion)")
    commands = cli_commands(prefix)
    script = os.path.join(prefix, "share/bash-completion/completions/tarnby-cli")

    offered = complete(script, "")
    check(set(commands) <= offered, "completion lacks commands: %s" % sorted(set(commands) - offered))
    check(complete(script, "th") == {"thumbs"}, "\"th\" does not complete to thumbs")
    for command, options in commands.items():
        if options:
            got = complete(script, command, "--")
            check(set(options) == got, "%s completes options %s, --help lists %s" % (command, sorted(got), options))

    page_texts = {}
    for page in ("tarnby", "tarnby-cli"):
        path = os.path.join(prefix, "share/man/man1", page + ".1.gz")
        result = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", path], capture_output=True, text=True,
                                env=dict(os.environ, MANWIDTH="100", MAN_KEEP_FORMATTING="0"))
        check(result.returncode == 0, "man -l %s fails:\n%s" % (path, result.stderr))
        check(not result.stderr.strip(), "man -l %s warns:\n%s" % (path, result.stderr))
        page_texts[page] = gzip.open(path, "rt").read()
    source = page_texts["tarnby-cli"]
    for command, options in commands.items():
        # Roff writes the hyphen of a command name as "\-".
        name = command.replace("-", "\\-")
        check(".BI \"%s " % name in source or "\\fB%s\\fR" % name in source or ".B %s\n" % name in source,
              "the manual page does not describe the command %s" % command)
        for option in options:
            check("\\-" + option[1:].replace("-", "\\-") in source, "the manual page lacks %s" % option)
    print("%d commands documented and completed" % len(commands))


main(test)
