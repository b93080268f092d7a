#!/usr/bin/python3
"""Writes raw seed inputs for the fuzz targets from the shipped data into SEEDS/<target>/.

    tests/fuzz/make_seeds.py SEEDS [LIBRARY_FOLDER PROJECT_FOLDER]

The committed corpora (tests/fuzz/corpus/<target>/) are these seeds minimised by libFuzzer
(run.sh --merge). Spectra are cut to their header and first data lines: small seeds keep every
run fast. LIBRARY_FOLDER (a compiled "SearchRecords/RamanLib") and PROJECT_FOLDER (a saved
X-ray project) are optional sources for the library and project seeds.
"""
import pathlib
import sys

root = pathlib.Path(__file__).resolve().parents[2]
seeds = pathlib.Path(sys.argv[1])
separator = "\n%%FILE%%\n"


def put(target, name, text):
    folder = seeds / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_text(text)


def head(path, lines):
    return "".join(path.read_text().splitlines(keepends=True)[:lines])


for path in sorted((root / "data/raman/examples").glob("*.txt")):
    if not path.name.startswith("LICENSE"):
        put("spectrum", path.stem, head(path, 80))
for path in sorted((root / "data/raman/model_library").glob("*_M0000[1-5]_*.txt")):
    put("spectrum", path.stem, head(path, 60))
put("spectrum", "energy", "CAL_OFFSET=1.5\nCAL_SLOPE 0.01\nCAL_QUAD: 1e-6\n" +
    "".join(f"{i} {i * i % 97}\n" for i in range(40)))
put("spectrum", "two_theta", "TWO_THETA\n" + "".join(f"{20 + i * 0.02:.2f} {i % 13}\n" for i in range(50)))

for path in sorted((root / "data/xray/reference").glob("*.out")):
    put("diff_file", path.stem, path.read_text())
for name in ["SiO2-Quartz-alpha", "TiO2-Rutile", "CaSO4-2(H2O)-Gypsum"]:
    put("cif", name, (root / "data/xray/reference/cif" / (name + ".cif")).read_text())
for path in sorted((root / "examples").glob("*_refine.DAT")):
    put("refine", path.stem, path.read_text())

put("preferences", "defaults",
    "1\n2\n1\n1\n1\n32\n5\n0.1\n1.540562\n100\n4000\n25\n5\n3\n0\n1\n")
put("preferences", "free_form", "T, 1, F F T 16 3 0.25 1.54439 200 3000 10 7 2 T F\n")

put("recent_files", "two", "/data/raman/calcite.txt\n/home/user/quartz sample.txt\n")
put("recent_files", "blanks", "\n  /a/b.txt  \n\n/c/d.txt\r\n")
put("recent_files", "fourteen", "".join(f"/folder/file{k}.txt\n" for k in range(14)))
# An undo record of the eight-point spectrum the undo target loads, as the writer writes it.
record = ("##NAMES=\n##LOCALITY=\n##GRELTID=\n##CHEMISTRY=\n<COM>\ndtype: RAMAN\nwave: \n</COM>\n" +
          "".join(f"{100 + k}, {v}\n" for k, v in enumerate([1, 2, 3, 40, 5, 6, 7, 8])))
put("undo_record", "whole", record)
put("undo_record", "short", record.replace("107, 8\n", ""))
put("undo_record", "not_a_number", record.replace("103, 40", "103, nan"))

if len(sys.argv) > 3:
    library = pathlib.Path(sys.argv[2])
    names = ["RamanSearchFileSlow.rsf", "RamanSearchFileFast.rsf", "RamanSearchNameList.rsf",
             "RamanSearchNameInfo.rsf"]
    texts = [(library / name).read_text() for name in names]
    # The first entries only, each cut to its name and first data lines: blocks begin with "==".
    def first_entries(text, count):
        blocks = text.split("==\n")
        cut = ["".join(block.splitlines(keepends=True)[:40]) for block in blocks[1 : count + 1]]
        return "==\n".join(blocks[:1] + cut)
    put("library", "three_entries", separator.join(
        [first_entries(texts[0], 3), first_entries(texts[1], 3),
         "".join(texts[2].splitlines(keepends=True)[:3]),
         "".join(texts[3].splitlines(keepends=True)[:15])]))
    project = pathlib.Path(sys.argv[3])
    main = next(project.glob("*.xproj"))
    parts = [main.read_text(), head(main.with_suffix(".spec"), 60)]
    for kind in ["info", "peak", "ref", "input"]:
        path = project / "Phase1" / f"Phase1.{kind}"
        parts.append(path.read_text() if path.exists() else "")
    put("xray_project", "saved", separator.join(parts))
    new_parts = parts[:2] + [(project / "Phase1" / "Phase1.info").read_text(),
                             (project / "Phase1" / "Phase1.peak").read_text()]
    put("xray_project", "new", separator.join(["<numxrays> 1\n"] + new_parts[1:]))


# Grid caches written here from the layout alone (an independent writer of the format): entries
# as regular runs and with their positions stored; the fuzz target fills in the fingerprint.
def grid_cache(coarse, fine):
    import struct
    header_size = 136
    values = b""
    tables = []
    for grid in (coarse, fine):
        table = b""
        for xs, ys in grid:
            step = xs[1] - xs[0] if len(xs) > 1 else 0.0
            regular = all(x == xs[0] + i * step for i, x in enumerate(xs)) if xs else True
            offset = header_size + len(values)
            values += struct.pack(f"<{len(ys)}f", *ys) if regular else \
                struct.pack(f"<{2 * len(xs)}f", *xs, *ys)
            table += struct.pack("<QIIff", offset, len(xs), int(regular), xs[0] if xs else 0.0, step)
        tables.append(table)
    names = b"".join(struct.pack("<I", len(n)) + n for n in (b"a", b"b")[:len(fine)])
    coarse_table = header_size + len(values)
    fine_table = coarse_table + len(tables[0])
    names_at = fine_table + len(tables[1])
    size = names_at + len(names)
    header = struct.pack("<8sIIQ4Q4qQ2Q2QQ", b"QVXGRID\n", 1, 0x01020304, size, 0, 0, 0, 0,
                         0, 0, 0, 0, 0, len(coarse), len(fine), coarse_table, fine_table, names_at)
    return header + values + tables[0] + tables[1] + names


def put_bytes(target, name, content):
    folder = seeds / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(content)


put_bytes("grid_cache", "regular", grid_cache([([100.0, 102.0], [6.0, 8.0])],
                                              [([100.0, 101.0, 102.0], [3.0, 4.0, 5.0])]))
put_bytes("grid_cache", "stored_positions", grid_cache(
    [([100.0, 102.5], [1.0, 1.0]), ([], [])],
    [([100.5, 101.0, 103.0], [1.0, 2.0, 3.0]), ([103.0], [9.0])]))


# Robust caches written from the layout alone: blocks of whole-number grids (first position and
# values); the fuzz target fills in the fingerprint.
def robust_cache(blocks):
    import struct
    header_size = 128
    values = b""
    table = b""
    for first, ys in blocks:
        table += struct.pack("<QIi", header_size + len(values), len(ys), first)
        values += struct.pack(f"<{len(ys)}f", *ys)
    table_at = header_size + len(values)
    size = table_at + len(table)
    header = struct.pack("<8sIIQ4Q4qQQqQQ", b"QVXROBS\n", 1, 0x01020304, size, *([0] * 11),
                         len(blocks), table_at)
    return header + values + table


put_bytes("robust_cache", "two_blocks", robust_cache([(100, [0.0, 1.0, -0.5]), (98, [2.0] * 20)]))
put_bytes("robust_cache", "empty_block", robust_cache([(100, []), (-5, [1.0])]))
