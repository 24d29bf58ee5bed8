#!/usr/bin/env python3
"""Makes the table of ours, peer and ratio from Google Benchmark's JSON files.

usage: bench_table.py OUT.md FILE.json...

A benchmark is named BM_<operation>/<who>[/<arguments>].  The <who> "ours" is paired with every
other <who> of the same operation and arguments.  Times are medians of the repetitions.
"""
import json
import sys

TO_NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
FLAGS = ("real_time", "process_time", "manual_time", "iterations", "repeats", "min_time")


def read_medians(paths):
    """{(operation, arguments): {who: nanoseconds}}, in the order of the files."""
    groups = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            text = file.read()
        if not text.strip():
            continue  # no benchmark of this binary matched the filter
        for run in json.loads(text)["benchmarks"]:
            if run.get("aggregate_name") != "median" or run.get("error_occurred"):
                continue
            parts = [p for p in run["run_name"].split("/") if p.split(":")[0] not in FLAGS]
            operation, who, arguments = parts[0], parts[1], "/".join(parts[2:])
            # Only the real time includes the work of other processes and threads.
            real = "real_time" in run["run_name"] or "manual_time" in run["run_name"]
            time = run["real_time" if real else "cpu_time"]
            group = groups.setdefault((operation.removeprefix("BM_"), arguments), {})
            group[who] = time * TO_NANOSECONDS[run["time_unit"]]
    return groups


def readable(nanoseconds):
    for unit in ("s", "ms", "us"):
        if nanoseconds >= TO_NANOSECONDS[unit]:
            return f"{nanoseconds / TO_NANOSECONDS[unit]:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def in_order(group):
    """By operation, then by arguments, numbers by their value."""
    operation, arguments = group[0]
    return operation, [(len(a), a) if a.isdigit() else (0, a) for a in arguments.split("/")]


def table_rows(groups):
    for (operation, arguments), times in sorted(groups.items(), key=in_order):
        ours = times.get("ours")
        if ours is None:
            continue
        name = f"{operation} {arguments}".strip()
        for who, peer in times.items():
            if who != "ours":
                yield name, readable(ours), who, readable(peer), f"{peer / ours:.2f}"


def main():
    out, *paths = sys.argv[1:]
    header = ("operation", "ours", "peer", "peer's time", "times as fast")
    rows = [header, *table_rows(read_medians(paths))]
    widths = [max(len(row[i]) for row in rows) for i in range(len(header))]
    lines = ["| " + " | ".join(c.ljust(w) for c, w in zip(row, widths)) + " |" for row in rows]
    lines.insert(1, "|" + "|".join("-" * (w + 2) for w in widths) + "|")
    text = "\n".join(lines) + "\n"
    print(text, end="")
    with open(out, "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main()
