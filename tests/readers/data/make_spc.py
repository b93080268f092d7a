#!/usr/bin/python3
"""Writes the SPC test files of tests/readers from known arrays, and what a reader must find in
them, into this folder:

    tests/readers/data/make_spc.py

spc/*.spc           one file per variant the reader takes
spc/expected.tsv    per spectrum: file, subfile, points, first x, last x, smallest y, largest y,
                    data type, name (x ascending: the reader sorts descending files)
spc_bad/*.spc       files the reader must refuse
spc_bad/expected.tsv  file and a part of the message

The values are computed here from the arrays written, independently of the reader. Field
offsets follow the published layout of the format (512-byte header of the new layout, 256-byte
header of the old one, 32-byte subheaders).
"""
import math
import pathlib
import struct

here = pathlib.Path(__file__).resolve().parent
good = here / "spc"
bad = here / "spc_bad"

TSPREC, TMULTI, TXYXYS, TXVALS = 0x01, 0x04, 0x40, 0x80
FLOAT_EXP = 0x80


def f32(value):
    return struct.unpack("<f", struct.pack("<f", value))[0]


def new_header(flags, points, first, last, subfiles, exp, x_unit, memo=b"", experiment=0,
               version=0x4B):
    header = bytearray(512)
    struct.pack_into("<BBBB", header, 0, flags, version, experiment, exp & 0xFF)
    struct.pack_into("<iddi", header, 4, points, first, last, subfiles)
    header[28] = x_unit
    header[88:88 + len(memo)] = memo
    return header


def subheader(exp=0, points=0, index=0):
    sub = bytearray(32)
    sub[1] = exp & 0xFF
    struct.pack_into("<H", sub, 2, index)
    struct.pack_into("<i", sub, 16, points)
    return sub


def scaled(values, exp, bits):
    """Integers holding `values` at the scale 2^(exp-bits), and the values they stand for."""
    scale = 2.0 ** (exp - bits)
    ints = [int(round(v / scale)) for v in values]
    return ints, [f32(i * scale) for i in ints]


def even_x(first, last, n):
    step = (last - first) / (n - 1)
    return [f32(first + step * k) for k in range(n)]


def float_y(values):
    return b"".join(struct.pack("<f", v) for v in values), [f32(v) for v in values]


rows = []


def expect(name, sub, x, y, dtype, label):
    pairs = sorted(zip(x, y), key=lambda p: p[0])
    rows.append([name, sub, len(x), repr(pairs[0][0]), repr(pairs[-1][0]), repr(min(y)),
                 repr(max(y)), dtype, label])


def write(folder, name, content):
    folder.mkdir(exist_ok=True)
    (folder / name).write_bytes(bytes(content))


def peaks(n, centre, width, height, base):
    return [base + height * math.exp(-((k - centre) / width) ** 2) for k in range(n)]


# New layout, float y, even x, Raman shift, memo as the name.
y = peaks(101, 40, 5, 1000.0, 12.5)
data, yf = float_y(y)
write(good, "new_float.spc",
      new_header(0, 101, 100.0, 1100.0, 1, FLOAT_EXP, 13, b"Calcite test") + subheader(FLOAT_EXP) + data)
expect("new_float.spc", 1, even_x(100.0, 1100.0, 101), yf, "RAMAN", "Calcite test")
new_float = (good / "new_float.spc").read_bytes()

# New layout, 32-bit integers with exponent 15, wavenumber axis.
ints, yv = scaled(peaks(64, 20, 4, 5000.0, -3.25), 15, 32)
write(good, "new_int32.spc",
      new_header(0, 64, 200.0, 830.0, 1, 15, 1) + subheader(15) +
      b"".join(struct.pack("<i", i) for i in ints))
expect("new_int32.spc", 1, even_x(200.0, 830.0, 64), yv, "RAMAN", "new_int32.spc")

# New layout, 16-bit integers with exponent 8, degrees 2-theta.
ints, yv = scaled(peaks(50, 10, 2, 30.0, -1.0), 8, 16)
write(good, "new_int16.spc",
      new_header(TSPREC, 50, 10.0, 59.0, 1, 8, 18) + subheader(8) +
      b"".join(struct.pack("<h", i) for i in ints))
expect("new_int16.spc", 1, even_x(10.0, 59.0, 50), yv, "XRD", "new_int16.spc")

# New layout, explicit x (nanometres: kept as read), float y.
x = [f32(400.0 + 0.5 * k * k) for k in range(30)]
data, yf = float_y(peaks(30, 15, 3, 2.0, 0.1))
write(good, "new_xvalues.spc",
      new_header(TXVALS, 30, x[0], x[-1], 1, FLOAT_EXP, 3) + b"".join(struct.pack("<f", v) for v in x) +
      subheader(FLOAT_EXP) + data)
expect("new_xvalues.spc", 1, x, yf, "RAMAN", "new_xvalues.spc")

# New layout, descending even x (sorted on reading), diffraction experiment type.
data, yf = float_y(peaks(40, 5, 3, 80.0, 5.0))
write(good, "new_descending.spc",
      new_header(0, 40, 60.0, 21.0, 1, FLOAT_EXP, 0, experiment=8) + subheader(FLOAT_EXP) + data)
expect("new_descending.spc", 1, even_x(60.0, 21.0, 40), yf, "XRD", "new_descending.spc")

# Multi-file, shared even x; each subfile has its own exponent (float, 32-bit, float).
content = new_header(TMULTI, 20, 0.0, 19.0, 3, FLOAT_EXP, 13, b"Series")
for sub in range(3):
    values = peaks(20, 5 + 5 * sub, 2, 100.0 * (sub + 1), 1.0)
    if sub == 1:
        ints, yv = scaled(values, 12, 32)
        content += subheader(12, index=sub) + b"".join(struct.pack("<i", i) for i in ints)
    else:
        data, yv = float_y(values)
        content += subheader(FLOAT_EXP, index=sub) + data
    expect("new_multi.spc", sub + 1, even_x(0.0, 19.0, 20), yv, "RAMAN", f"Series #{sub + 1}")
write(good, "new_multi.spc", content)

# Multi-file with an x array per subfile, of different lengths.
content = new_header(TMULTI | TXVALS | TXYXYS, 0, 0.0, 0.0, 2, FLOAT_EXP, 13)
for sub, n in enumerate((12, 7)):
    x = [f32(150.0 + 3.5 * k + sub) for k in range(n)]
    data, yf = float_y(peaks(n, n // 2, 2, 50.0, 2.0 + sub))
    content += subheader(FLOAT_EXP, n, sub) + b"".join(struct.pack("<f", v) for v in x) + data
    expect("new_multi_xy.spc", sub + 1, x, yf, "RAMAN", f"new_multi_xy.spc #{sub + 1}")
write(good, "new_multi_xy.spc", content)


def old_header(flags, exp, points, first, last, x_unit, memo=b""):
    header = bytearray(256)
    struct.pack_into("<BBh", header, 0, flags, 0x4D, exp)
    struct.pack_into("<fff", header, 4, float(points), first, last)
    header[16] = x_unit
    header[64:64 + len(memo)] = memo
    return header


# Old layout, 32-bit integers stored high word first.
ints, yv = scaled(peaks(45, 30, 6, 700.0, 20.0), 11, 32)
words = b"".join(struct.pack("<HH", (i >> 16) & 0xFFFF, i & 0xFFFF) for i in ints)
write(good, "old_int32.spc", old_header(0, 11, 45, 150.0, 590.0, 13, b"Old quartz") + words)
expect("old_int32.spc", 1, even_x(150.0, 590.0, 45), yv, "RAMAN", "Old quartz")

# Old layout, 16-bit integers.
ints, yv = scaled(peaks(33, 12, 3, 9.0, 0.5), 5, 16)
write(good, "old_int16.spc",
      old_header(TSPREC, 5, 33, 5.0, 37.0, 18) + b"".join(struct.pack("<h", i) for i in ints))
expect("old_int16.spc", 1, even_x(5.0, 37.0, 33), yv, "XRD", "old_int16.spc")

with open(good / "expected.tsv", "w") as out:
    for row in rows:
        out.write("\t".join(str(v) for v in row) + "\n")

# Files to refuse, with a part of the message each must give.
refused = []


def refuse(name, content, message):
    write(bad, name, content)
    refused.append((name, message))


refuse("truncated_data.spc", new_float[:700], "SPC file type 0x00 is not supported")
refuse("truncated_header.spc", new_float[:300], "SPC file type 0x00 is not supported")
refuse("one_byte.spc", new_float[:1], "SPC file type 0x00 is not supported")
huge = bytearray(new_float)
struct.pack_into("<i", huge, 4, 1_000_000_000)
refuse("points_beyond_file.spc", huge, "SPC file type 0x00 is not supported")
many = bytearray(new_float)
many[0] = TMULTI
struct.pack_into("<i", many, 24, 2_000_000_000)
refuse("subfiles_beyond_file.spc", many, "SPC file type 0x04 is not supported")
negative = bytearray(new_float)
struct.pack_into("<i", negative, 4, -5)
refuse("negative_points.spc", negative, "SPC file type 0x00 is not supported")
big_endian = bytearray(new_float)
big_endian[1] = 0x4C
refuse("big_endian.spc", big_endian, "SPC file type 0x4C is not supported")
refuse("unknown_version.spc", bytes([0, 0x31]) + new_float[2:], "SPC file type 0x31 is not supported")
xy_alone = bytearray(new_float)
xy_alone[0] = TXYXYS
refuse("xy_without_multi.spc", xy_alone, "SPC file type 0x40 is not supported")
old_multi = bytearray((good / "old_int32.spc").read_bytes())
old_multi[0] = TMULTI
refuse("old_multi.spc", old_multi, "SPC file type 0x04 is not supported")
old_short = (good / "old_int32.spc").read_bytes()[:300]
refuse("old_truncated.spc", old_short, "SPC file type 0x00 is not supported")
not_finite = bytearray(new_float)
struct.pack_into("<f", not_finite, 512 + 32 + 4 * 7, float("nan"))
refuse("not_finite.spc", not_finite, "not a finite number")
infinite_x = bytearray(new_float)
struct.pack_into("<d", infinite_x, 8, float("inf"))
refuse("infinite_x.spc", infinite_x, "SPC file type 0x00 is not supported")

with open(bad / "expected.tsv", "w") as out:
    for name, message in refused:
        out.write(f"{name}\t{message}\n")
