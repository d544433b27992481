#!/usr/bin/env bash
# Measures the desktop app's cold start on a private Xvfb with trayer as the
# tray host and no window manager: start → tray icon, PSS after 3 s, and
# shortcut → panel (with the focus in a window that owns a selection, or
# without one given --no-selection). Builds the release preset first;
# SCRIVEL_BENCH_APP names another scrivel binary to measure instead (to
# compare builds).
#   bench/app-startup.sh [runs] [--no-selection]
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset release >/dev/null
cmake --build --preset release --target scrivel bench_AppStartup >/dev/null
runs="${1:-7}"
app="${SCRIVEL_BENCH_APP:-build/release/src/app/scrivel}"
inner=$(cat <<'INNER'
set -euo pipefail
trayer --edge top --align right --widthtype request --height 24 --SetDockType false &
tray=$!
sleep 1
build/release/bench/bench_AppStartup "$@"
kill $tray
INNER
)
exec xvfb-run -a -s "-screen 0 1280x800x24" dbus-run-session -- bash -c "$inner" bash "$app" "$runs" ${2:+"$2"}
