#!/usr/bin/env bash
# Runs every benchmark program of a build and prints one line per figure:
#   ratio NAME VALUE
# A program reports pairs of benchmarks "NAME/candidate" and "NAME/baseline" (ratio =
# candidate time / baseline time, lower is better), or "NAME/rate_candidate" and
# "NAME/rate_baseline" (ratio = baseline time / candidate time: a throughput ratio, higher is
# better). Both sides run in the same process, so the machine's speed cancels out.
set -euo pipefail
build=${1:-build-bench}
list="$build/benchmarks.txt"
[ -s "$list" ] || { echo "no benchmark programs in $build"; exit 0; }
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
while read -r name; do
    [ -n "$name" ] || continue
    exe=$(find "$build/bench" -type f -name "$name" -perm -u+x | head -n 1)
    [ -n "$exe" ] || { echo "missing benchmark program $name" >&2; exit 1; }
    echo "== $name" >&2
    "$exe" --benchmark_format=json --benchmark_out="$out/$name.json" \
        --benchmark_out_format=json >/dev/null
done <"$list"
python3 - "$out" <<'PY'
import glob, json, re, statistics, sys
runs = {}
for path in sorted(glob.glob(sys.argv[1] + "/*.json")):
    for b in json.load(open(path))["benchmarks"]:
        if b.get("run_type") == "aggregate":
            continue
        # A benchmark given its own iterations or repetitions carries them in its name.
        name = re.sub(r"/(iterations|repeats):\d+", "", b["name"])
        runs.setdefault(name, []).append(b["real_time"])
# A program that repeats its benchmarks (--benchmark_repetitions) is judged by each side's
# median: one slow moment of a shared machine does not decide the figure.
times = {name: statistics.median(values) for name, values in runs.items()}
done = set()
for name in sorted(times):
    base, _, side = name.rpartition("/")
    if base in done:
        continue
    if side == "candidate" and base + "/baseline" in times:
        print(f"ratio {base} {times[name] / times[base + '/baseline']:.3f}")
        done.add(base)
    elif side == "rate_candidate" and base + "/rate_baseline" in times:
        print(f"ratio {base} {times[base + '/rate_baseline'] / times[name]:.3f}")
        done.add(base)
PY
