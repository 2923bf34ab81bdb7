#!/usr/bin/env bash
# Starts the local service on a free loopback port and runs the Qt Quick host against it on a first
# run (empty settings), offscreen with the software scene graph; the host's status is the result.
set -euo pipefail
sim=$1
host=$2
work=$3
rm -rf "$work"
mkdir -p "$work/config"
mkdir -m 700 "$work/runtime"
export XDG_CONFIG_HOME=$work/config XDG_RUNTIME_DIR=$work/runtime
export QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software
"$sim" --port 0 --client demo-client:demo-secret >"$work/service.out" &
service=$!
trap 'kill $service 2>/dev/null' EXIT
url=
for _ in $(seq 100); do
    url=$(sed -n 's/^brevanti-sim listening on //p' "$work/service.out")
    [ -n "$url" ] && break
    kill -0 $service 2>/dev/null || { echo "the local service did not start" >&2; exit 1; }
    sleep 0.1
done
[ -n "$url" ] || { echo "the local service did not start in time" >&2; exit 1; }
"$host" "$url"
