#!/usr/bin/python3
"""Writes the JCAMP-DX test files of tests/readers from known values, and prints the values the
reader must give (point count, first and last x, smallest and largest y) for ReadersTest.cpp.

The encoder here is written from the JCAMP-DX compression rules alone (SQZ, DIF, DUP, Y check
value), independently of the program's decoder: the decoder is right when it gives back the
values that went in. Run: python3 make_jcamp.py (rewrites the .jdx files beside it)."""
import math

SQZ_POS = "@ABCDEFGHI"
SQZ_NEG = "@abcdefghi"
DIF_POS = "%JKLMNOPQR"
DIF_NEG = "%jklmnopqr"
DUP = "STUVWXYZs"


def sqz(v):
    s = str(abs(v))
    return (SQZ_POS if v >= 0 else SQZ_NEG)[int(s[0])] + s[1:]


def dif(v):
    s = str(abs(v))
    return (DIF_POS if v >= 0 else DIF_NEG)[int(s[0])] + s[1:]


def dup(n):
    s = str(n)
    return DUP[int(s[0]) - 1] + s[1:]


def with_dup(tokens):
    """Runs of equal tokens become the token and a DUP count."""
    out = []
    i = 0
    while i < len(tokens):
        j = i
        while j + 1 < len(tokens) and tokens[j + 1] == tokens[i]:
            j += 1
        out.append(tokens[i] + (dup(j - i + 1) if j > i else ""))
        i = j + 1
    return out


def dif_lines(xs_raw, ys, per_line):
    """DIFDUP lines: each line's first Y in SQZ, then differences; the next line repeats the last
    Y of the line before as its first value (the Y check value)."""
    lines = []
    i = 0
    n = len(ys)
    while i < n:
        end = min(i + per_line, n)
        tokens = [sqz(ys[i])] + [dif(ys[k] - ys[k - 1]) for k in range(i + 1, end)]
        lines.append(sqz(xs_raw[i]) + "".join(with_dup(tokens)))
        if end == n:
            break
        i = end - 1  # the check value: the line after starts with the last Y again
    return lines


def header(title, extra, npoints, firstx, lastx, xfactor, yfactor, firsty, deltax):
    return [f"##TITLE={title}", "##JCAMP-DX=5.01", "##DATA TYPE=RAMAN SPECTRUM",
            "##ORIGIN=test generator", "##OWNER=public domain"] + extra + [
            "##XUNITS=1/CM", "##YUNITS=ARBITRARY UNITS", f"##XFACTOR={xfactor}",
            f"##YFACTOR={yfactor}", f"##FIRSTX={firstx}", f"##LASTX={lastx}",
            f"##DELTAX={deltax}", f"##FIRSTY={firsty}", f"##NPOINTS={npoints}"]


def peaks(n, scale):
    return [int(round(scale * (math.exp(-((i - n / 3) / 6.0) ** 2) +
                               0.5 * math.exp(-((i - 2 * n / 3) / 4.0) ** 2)))) for i in range(n)]


def write(name, lines):
    with open(name, "w") as f:
        f.write("\n".join(lines) + "\n")


def expected(name, xs, ys):
    print(f'{{"{name}", {len(xs)}, {xs[0]!r}, {xs[-1]!r}, {min(ys)!r}, {max(ys)!r}}},')


def main():
    # Compressed (DIFDUP) data, with flat runs for DUP: x from 200 by 2 cm-1.
    n, firstx, dx = 61, 200.0, 2.0
    raw = peaks(n, 5000)
    raw[5:9] = [raw[5]] * 4
    xs = [firstx + i * dx for i in range(n)]
    lastx = xs[-1]
    lines = header("difdup quartz", ["##NAMES=Quartz", "##MOLFORM=SiO2"], n, firstx, lastx,
                   0.5, 0.01, raw[0] * 0.01, dx)
    lines += ["##XYDATA=(X++(Y..Y))"] + dif_lines([int(x / 0.5) for x in xs], raw, 10) + ["##END="]
    write("difdup.jdx", lines)
    expected("difdup.jdx", xs, [r * 0.01 for r in raw])

    # The same in plain numbers (AFFN), five ordinates a line.
    lines = header("affn quartz", [], n, firstx, lastx, 1, 0.01, raw[0] * 0.01, dx)
    lines.append("##XYDATA=(X++(Y..Y))")
    for i in range(0, n, 5):
        lines.append(f"{xs[i]:g} " + " ".join(str(v) for v in raw[i:i + 5]))
    lines.append("##END=")
    write("affn.jdx", lines)
    expected("affn.jdx", xs, [r * 0.01 for r in raw])

    # A LINK block with two spectra: one in XYPOINTS, one a PEAK TABLE in nanometres with
    # the laser wavelength, which becomes Raman shift.
    pts = [(100.5, 3.0), (150.25, 7.5), (175.0, -1.25), (300.0, 2.0)]
    nm = [(540.0, 10.0), (550.0, 40.0), (560.0, 25.0)]
    laser = 532.0
    lines = ["##TITLE=linked set", "##JCAMP-DX=5.01", "##DATA TYPE=LINK", "##BLOCKS=2",
             "##TITLE=points", "##JCAMP-DX=5.01", "##DATA TYPE=RAMAN SPECTRUM", "##XUNITS=1/CM",
             "##YUNITS=COUNTS", "##XFACTOR=1", "##YFACTOR=1", f"##NPOINTS={len(pts)}",
             "##XYPOINTS=(XY..XY)"] + [f"{x}, {y}" for x, y in pts] + ["##END=",
             "##TITLE=sticks", "##JCAMP-DX=5.01", "##DATA TYPE=RAMAN SPECTRUM",
             "##XUNITS=NANOMETERS", "##YUNITS=COUNTS", f"##$LASER WAVELENGTH={laser}",
             "##PEAK TABLE=(XY..XY)", " ".join(f"{x},{y};" for x, y in nm), "##END=", "##END="]
    write("link.jdx", lines)
    expected("link.jdx#1", [p[0] for p in pts], [p[1] for p in pts])
    shifts = [1e7 / laser - 1e7 / x for x, _ in nm]
    expected("link.jdx#2", shifts, [p[1] for p in nm])

    # A bad Y check value and X values that disagree with DELTAX: read, with notes.
    lines = header("damaged", [], n, firstx, lastx, 0.5, 0.01, raw[0] * 0.01, dx)
    data = dif_lines([int(x / 0.5) for x in xs], raw, 10)
    second = data[1]
    data[1] = second[0:len(sqz(int(xs[9] / 0.5)))] + sqz(raw[9] + 7) + second[
        len(sqz(int(xs[9] / 0.5))) + len(sqz(raw[9])):]
    data[3] = sqz(int(xs[27] / 0.5) + 40) + data[3][len(sqz(int(xs[27] / 0.5))):]
    lines += ["##XYDATA=(X++(Y..Y))"] + data + ["##END="]
    write("damaged.jdx", lines)
    expected("damaged.jdx", xs, [r * 0.01 for r in raw])


main()
