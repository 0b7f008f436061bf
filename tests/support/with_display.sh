#!/bin/sh
# with_display.sh PROGRAM [ARGUMENT...]: runs a program that opens windows. Where no display is there (and the
# system needs one), a virtual one is started for it.
if [ "$(uname)" = Linux ] && [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    if ! command -v xvfb-run >/dev/null; then
        echo "with_display.sh: neither a display nor xvfb-run is there" >&2
        exit 1
    fi
    exec xvfb-run -a -s "-screen 0 1600x1000x24" "$@"
fi
exec "$@"
