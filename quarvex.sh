#!/usr/bin/env bash
# Starts the desktop program: ./quarvex.sh [--home DIR] [FILE...]
# Without a display (a server, a container) the window has no screen to appear on: the program
# then runs on a virtual display, saves a picture of its window after start-up and says where.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
program="$root/build/bin/quarvex"

if [[ -n "${DISPLAY:-}" || -n "${WAYLAND_DISPLAY:-}" ]]; then
    exec "$program" "$@"
fi

picture="$root/build/quarvex-window.png"
xvfb-run -a -s "-screen 0 1600x1000x24" "$program" --screenshot "$picture" "$@"
echo "No display found: Quarvex started on a virtual display; its window is pictured in $picture"
