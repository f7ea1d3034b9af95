#!/usr/bin/env bash
# Opens a page written by the library in a headless Chromium and uses it: web_scene_probe.html says how.
#
#   web_scene_in_browser.sh CHROMIUM PROBE WORK_DIRECTORY PAGE_PROGRAM
#
# PAGE_PROGRAM writes the page into the file it is given. Fails on every message on the browser's console, too.
set -euo pipefail
chromium=$1 probe=$2 work=$(realpath -m "$3") program=$4

rm -rf "$work"
mkdir -p "$work"
"$program" "$work/page.html"
if grep -Eq "(src|href)=|https?:|import |fetch" "$work/page.html"; then
    echo "the page refers to something outside of itself"
    exit 1
fi
cat "$probe" >>"$work/page.html"

options=(--headless=new --no-sandbox --user-data-dir="$work/profile" --no-first-run --disable-extensions
    --disable-background-networking --use-gl=angle --use-angle=swiftshader --enable-unsafe-swiftshader
    --window-size=1000,750 --enable-logging=stderr)
"$chromium" "${options[@]}" "file://$work/page.html" >"$work/log" 2>&1 &
browser=$!
trap 'kill $browser 2>/dev/null || true; wait $browser 2>/dev/null || true; rm -rf "$work/profile"' EXIT
for ((i = 0; i < 500; ++i)); do
    if grep -Eq "probe done|Uncaught" "$work/log" || ! kill -0 $browser 2>/dev/null; then break; fi
    sleep 0.2
done

# Each message is [... CONSOLE ...] "text", source: file (line)
grep "CONSOLE" "$work/log" | grep -v "GPU stall due to ReadPixels" | sed 's/^[^]]*[]] //; s/, source: [^,]*$//' >"$work/console" || true
cat "$work/console"
grep -q '^"probe done"' "$work/console" || { echo "the probe came to no end"; exit 1; }
if grep -Ev '^"(ok |probe done)' "$work/console" >/dev/null; then exit 1; fi
