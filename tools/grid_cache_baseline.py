#!/usr/bin/python3
"""Baselines for the search timings: reading a library's grid cache with cat, and the coarse
pass as one numpy matrix-vector product over the same grids.

    tools/grid_cache_baseline.py CACHE_FILE

CACHE_FILE is "<library folder>.quarvex-grids" (e.g. of `quarvex-cli bench library --keep`).
Needs every coarse entry as a regular run of the same length (true of the synthetic libraries).
Prints the best of five runs of each.
"""
import struct
import subprocess
import sys
import time

import numpy as np

HEADER = struct.Struct("<8sIIQ4Q4qQ2Q2QQ")
ENTRY = np.dtype([("offset", "<u8"), ("count", "<u4"), ("regular", "<u4"),
                  ("first", "<f4"), ("step", "<f4")])


def best_of(runs, action):
    times = []
    for _ in range(runs):
        start = time.perf_counter()
        action()
        times.append(time.perf_counter() - start)
    return min(times)


def main():
    path = sys.argv[1]
    cat = best_of(5, lambda: subprocess.run(["cat", path], stdout=subprocess.DEVNULL, check=True))
    print(f"cat of the cache file        {cat * 1000:.1f} ms (process included)")

    data = open(path, "rb").read()
    fields = HEADER.unpack_from(data)
    coarse_entries, coarse_table = fields[14], fields[16]
    table = np.frombuffer(data, ENTRY, coarse_entries, coarse_table)
    counts = set(table["count"].tolist())
    if len(counts) != 1 or not table["regular"].all():
        sys.exit("the coarse entries are not regular runs of one length")
    count = counts.pop()
    start = int(table["offset"][0])
    grids = np.frombuffer(data, "<f4", coarse_entries * count, start).reshape(coarse_entries, count)
    unknown = np.random.default_rng(1).random(count, dtype=np.float32)
    product = best_of(5, lambda: grids @ unknown)
    print(f"numpy coarse matrix-vector   {product * 1000:.1f} ms "
          f"({coarse_entries} x {count} float32, in memory)")

    def load_and_multiply():
        raw = np.fromfile(path, dtype=np.uint8)
        matrix = raw[start:start + 4 * coarse_entries * count].view("<f4")
        return matrix.reshape(coarse_entries, count) @ unknown

    print(f"numpy read + coarse product  {best_of(5, load_and_multiply) * 1000:.1f} ms")


if __name__ == "__main__":
    main()
