#!/bin/sh
# Runs one test program against a throw-away PostgreSQL cluster that
# pg_virtualenv (package postgresql-common) starts for it and removes after
# it. The program finds the server through the PG* variables and is told to
# use it by TARNBY_ORGANIZER_SERVER. Exits 77 (skipped) with a line saying why
# when no cluster can be started.
#   with-postgres.sh PROGRAM [ARGS...]
if ! command -v pg_virtualenv >/dev/null 2>&1; then
    echo "SKIP: pg_virtualenv is not installed (Debian packages postgresql and postgresql-common)"
    exit 77
fi
marker=$(mktemp) || exit 1
rm -f "$marker"
pg_virtualenv sh -c 'touch "$1"; shift; TARNBY_ORGANIZER_SERVER=1 exec "$@"' with-postgres "$marker" "$@"
status=$?
if [ ! -e "$marker" ]; then
    echo "SKIP: no PostgreSQL server could be started for the test (pg_virtualenv ended with status $status)"
    exit 77
fi
rm -f "$marker"
exit $status
