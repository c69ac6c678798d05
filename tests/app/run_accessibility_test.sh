#!/usr/bin/env bash
# Starts copperwick-app on a demo workspace on a virtual X display, with a
# session bus and the accessibility bus up, then lets accessibility_test.py
# find and drive the window through AT-SPI, as a screen reader would.
#
#   run_accessibility_test.sh APP SCRIPT
#
# Everything lives in a scratch folder (home and XDG folders too) and is
# bounded in time: the whole run is killed after 150 seconds (a sanitizer
# build on a busy machine can take most of a minute to show its window).
set -euo pipefail

if [ "${1:-}" != "--inside" ]; then
  [ $# -eq 2 ] || { echo "usage: $0 APP SCRIPT" >&2; exit 2; }
  for tool in dbus-run-session Xvfb timeout; do
    command -v "$tool" >/dev/null || { echo "$tool is missing (scripts/setup installs it)" >&2; exit 1; }
  done
  [ -x /usr/libexec/at-spi-bus-launcher ] || { echo "at-spi2-core is missing" >&2; exit 1; }
  /usr/bin/python3 -c 'import pyatspi' 2>/dev/null || { echo "python3-pyatspi is missing" >&2; exit 1; }

  scratch=$(mktemp -d)
  trap 'rm -rf "$scratch"' EXIT
  mkdir -p "$scratch/home" "$scratch/config" "$scratch/data" "$scratch/cache" "$scratch/run"
  chmod 700 "$scratch/run"
  export HOME=$scratch/home XDG_CONFIG_HOME=$scratch/config XDG_DATA_HOME=$scratch/data
  export XDG_CACHE_HOME=$scratch/cache XDG_RUNTIME_DIR=$scratch/run TMPDIR=$scratch
  export COPPERWICK_APP=$1 ACCESSIBILITY_SCRIPT=$2 SCRATCH=$scratch
  status=0
  timeout --kill-after=5 150 dbus-run-session -- bash "$0" --inside || status=$?
  if [ "$status" -ne 0 ]; then
    for log in xvfb app; do
      [ -s "$scratch/$log.log" ] || continue
      echo "== $log said:" >&2
      cat "$scratch/$log.log" >&2
    done
  fi
  exit "$status"
fi

# Inside the session bus. The X server picks a free display itself and
# writes its number to the pipe once it accepts clients, so there is no
# guessing at lock files and no race with another run on the same machine.
exec {display_pipe}<> <(:)
Xvfb -displayfd "$display_pipe" -screen 0 1280x800x24 -nolisten tcp \
  >"$SCRATCH/xvfb.log" 2>&1 &
xserver=$!
display=
read -r -t 20 -u "$display_pipe" display || true
if [ -z "$display" ] || ! kill -0 "$xserver" 2>/dev/null; then
  # A machine that can't run an X server at all can't run this test; say so
  # loudly (the server's own words follow) and let CTest count it as skipped.
  echo "SKIPPED: the virtual X display did not start on this machine" >&2
  exit 77
fi
export DISPLAY=:$display

/usr/libexec/at-spi-bus-launcher --launch-immediately >"$SCRATCH/bus.log" 2>&1 &
launcher=$!
QT_QPA_PLATFORM=xcb QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 QT_ACCESSIBILITY=1 \
  "$COPPERWICK_APP" --demo >"$SCRATCH/app.log" 2>&1 &
app=$!

status=0
/usr/bin/python3 "$ACCESSIBILITY_SCRIPT" || status=$?

kill "$app" 2>/dev/null || true
wait "$app" 2>/dev/null || true
kill "$launcher" 2>/dev/null || true
wait "$launcher" 2>/dev/null || true
kill "$xserver" 2>/dev/null || true
wait "$xserver" 2>/dev/null || true
exit "$status"
