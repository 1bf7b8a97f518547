#!/usr/bin/env bash
# A throw-away PostgreSQL server for the test suite, on loopback only.
#
#   server.sh start STATE [KAVRIN]   initdb into a new temporary folder, start
#                                    the server on a free port (socket in the
#                                    same folder), and with KAVRIN (the kavrin
#                                    tool) prepare the template databases
#                                    kavrin_empty and kavrin_demo; STATE
#                                    receives the connection details and the
#                                    folder of an odbcinst.ini for ODBCSYSINI
#   server.sh stop STATE             stop that server and remove its folder
#
# The server runs as an unprivileged user: as root, the postgres system user
# of the Debian package; otherwise the calling user. Its folder is on /dev/shm
# where that is a writable memory file system (creating a database per test
# is ten times quicker there), else in $TMPDIR or /tmp. Every wait is bounded.
set -euo pipefail

command=${1:-}
state=${2:-}
if [ -z "$command" ] || [ -z "$state" ]; then
  echo "usage: $0 start|stop STATE [KAVRIN]" >&2
  exit 2
fi

bindir=${KAVRIN_PG_BINDIR:-}
if [ -z "$bindir" ]; then
  for candidate in $(printf '%s\n' /usr/lib/postgresql/*/bin | sort -V -r); do
    if [ -x "$candidate/initdb" ]; then
      bindir=$candidate
      break
    fi
  done
fi
if [ -z "$bindir" ] || [ ! -x "$bindir/initdb" ]; then
  echo "server.sh: no PostgreSQL server binaries found (install postgresql)" >&2
  exit 1
fi

as_owner=()
if [ "$(id -u)" -eq 0 ]; then
  as_owner=(runuser -u postgres --)
fi

stop_server() {
  local dir=$1
  [ -d "$dir" ] || return 0
  if [ -f "$dir/data/postmaster.pid" ]; then
    if ! timeout 40 "${as_owner[@]}" "$bindir/pg_ctl" stop -D "$dir/data" -m immediate -t 30 \
      >/dev/null 2>&1; then
      local pid
      pid=$(head -n 1 "$dir/data/postmaster.pid" 2>/dev/null || true)
      if [ -n "$pid" ]; then kill -KILL "$pid" 2>/dev/null || true; fi
    fi
  fi
  rm -rf "$dir"
}

case "$command" in
  stop)
    if [ -f "$state" ]; then
      dir=$(sed -n 's/^dir=//p' "$state")
      [ -n "$dir" ] && stop_server "$dir"
      rm -f "$state"
    fi
    ;;
  start)
    kavrin=${3:-}
    # A server left behind by an interrupted run goes first.
    "$0" stop "$state"
    base=${TMPDIR:-/tmp}
    if [ -d /dev/shm ] && [ -w /dev/shm ]; then base=/dev/shm; fi
    dir=$(mktemp -d "$base/kavrin-pg-XXXXXX")
    echo "dir=$dir" >"$state"  # so that a stop finds the folder even if this start is cut short
    chmod 755 "$dir"
    [ ${#as_owner[@]} -eq 0 ] || chown postgres "$dir"
    trap 'stop_server "$dir"' ERR
    timeout 120 "${as_owner[@]}" "$bindir/initdb" -D "$dir/data" -U postgres -A trust \
      -E UTF8 --locale=C.UTF-8 --no-sync >"$dir/initdb.log" 2>&1 || {
      cat "$dir/initdb.log" >&2
      false
    }
    started=
    for _ in 1 2 3 4 5 6 7 8 9 10; do
      port=$((20000 + (RANDOM * 32768 + RANDOM) % 40000))
      # Something already answering there: try another port.
      if (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then continue; fi
      if timeout 60 "${as_owner[@]}" "$bindir/pg_ctl" start -D "$dir/data" -w -t 45 \
        -l "$dir/server.log" -o "-c listen_addresses=127.0.0.1 -c port=$port \
          -c unix_socket_directories=$dir -c fsync=off -c synchronous_commit=off \
          -c full_page_writes=off -c max_connections=200" >/dev/null 2>&1; then
        started=1
        break
      fi
    done
    [ -n "$started" ] || {
      echo "server.sh: the server did not start" >&2
      cat "$dir/server.log" >&2 || true
      false
    }
    # The driver registered for the tests: as the system's, minus the log
    # files psqlODBC would otherwise leave in /tmp for every process.
    mkdir -p "$dir/odbc"
    printf '[PostgreSQL Unicode]\nDescription=PostgreSQL ODBC driver (Unicode)\nDriver=psqlodbcw.so\nCommLog=0\nDebug=0\n' \
      >"$dir/odbc/odbcinst.ini"
    {
      echo "dir=$dir"
      echo "odbcsysini=$dir/odbc"
      echo "host=127.0.0.1"
      echo "port=$port"
      echo "user=postgres"
    } >"$state"
    if [ -n "$kavrin" ]; then
      psql=("$bindir/psql" -X -q -v ON_ERROR_STOP=1 -h "$dir" -p "$port" -U postgres -d postgres)
      odbc="odbc:Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=$port;UID=postgres"
      timeout 60 "${psql[@]}" -c "CREATE DATABASE kavrin_empty" -c "CREATE DATABASE kavrin_demo"
      ODBCSYSINI="$dir/odbc" timeout 60 "$kavrin" init-db "$odbc;Database=kavrin_empty" >/dev/null
      ODBCSYSINI="$dir/odbc" timeout 60 "$kavrin" init-db "$odbc;Database=kavrin_demo" --demo \
        >/dev/null
    fi
    trap - ERR
    echo "$("$bindir/postgres" --version) on 127.0.0.1:$port ($dir)"
    ;;
  *)
    echo "usage: $0 start|stop STATE [KAVRIN]" >&2
    exit 2
    ;;
esac
