#!/usr/bin/env bash
# with-display.sh -- runs a command with an X display: the one in DISPLAY, or a private Xvfb server
# (1920 x 1080, depth 24) started for the command and stopped after it.
set -uo pipefail
if [ -n "${DISPLAY:-}" ]; then
  exec "$@"
fi
fdfile=$(mktemp)
exec 3>"$fdfile"
Xvfb -displayfd 3 -screen 0 1920x1080x24 -noreset -nolisten tcp +extension GLX +extension XTEST >/dev/null 2>&1 &
xvfb=$!
exec 3>&-
for _ in $(seq 1 100); do
  if [ -s "$fdfile" ]; then break; fi
  sleep 0.1
done
if [ ! -s "$fdfile" ]; then
  echo "with-display: Xvfb did not start" >&2
  kill "$xvfb" 2>/dev/null
  rm -f "$fdfile"
  exit 1
fi
export DISPLAY=":$(head -n1 "$fdfile")"
rm -f "$fdfile"
"$@"
status=$?
kill "$xvfb" 2>/dev/null
wait "$xvfb" 2>/dev/null
exit $status
