#!/usr/bin/env bash
# Runs a command with OLVEX_TEST_PG naming a private, throwaway PostgreSQL cluster: initdb into
# BUILD/test-postgres, its socket there too (no TCP port), stopped and removed when the command
# ends. Started as root, the cluster runs as the unprivileged `postgres` user (or `nobody`).
# Without PostgreSQL's server programs, or with OLVEX_TEST_PG already set, the command runs
# as it is.
# Usage: tools/with-test-postgres.sh BUILD COMMAND [ARGS...]
set -euo pipefail
build=$(cd "$1" && pwd)
shift

if [ -n "${OLVEX_TEST_PG:-}" ]; then
    exec "$@"
fi
bindir=""
if command -v pg_config >/dev/null 2>&1 && [ -x "$(pg_config --bindir)/initdb" ]; then
    bindir=$(pg_config --bindir)
fi
if [ -z "$bindir" ]; then
    bindir=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1 || true)
fi
if [ -z "$bindir" ] || [ ! -x "$bindir/initdb" ]; then
    echo "with-test-postgres: no PostgreSQL server programs (initdb); PostgreSQL tests skip" >&2
    exec "$@"
fi

dir="$build/test-postgres"
# A Unix socket path is limited to about 100 bytes; a deep build folder uses /tmp for it.
sock="$dir/socket"
if [ ${#sock} -gt 80 ]; then
    sock=$(mktemp -d /tmp/olvex-pg.XXXXXX)
fi
run_as=()
if [ "$(id -u)" -eq 0 ]; then
    owner=postgres
    id "$owner" >/dev/null 2>&1 || owner=nobody
    run_as=(runuser -u "$owner" --)
fi

pg() { "${run_as[@]}" "$@"; }
stop() {
    pg "$bindir/pg_ctl" -D "$dir/data" -m immediate -w stop >/dev/null 2>&1 || true
    rm -rf "$dir"
    [ "$sock" = "$dir/socket" ] || rm -rf "$sock"
}

# A cluster left by an interrupted run is stopped and replaced.
[ -d "$dir/data" ] && stop
mkdir -p "$dir" "$sock"
[ ${#run_as[@]} -eq 0 ] || chown "$owner" "$dir" "$sock"
trap stop EXIT
pg "$bindir/initdb" -D "$dir/data" -U olvex -A trust -E UTF8 --locale=C --no-sync \
    >"$dir/initdb.log" 2>&1 || { cat "$dir/initdb.log" >&2; exit 1; }
# Durability means nothing for a throwaway cluster; fsync off keeps the tests quick.
pg "$bindir/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w \
    -o "-k $sock -c listen_addresses= -c fsync=off -c synchronous_commit=off -c max_connections=200" \
    start >/dev/null || { cat "$dir/server.log" >&2; exit 1; }
"$bindir/createdb" -h "$sock" -U olvex olvex_test
export OLVEX_TEST_PG="postgresql:///olvex_test?host=$sock&user=olvex"
echo "PostgreSQL tests on a private cluster ($OLVEX_TEST_PG)"
"$@"
