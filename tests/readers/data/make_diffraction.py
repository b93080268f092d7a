#!/usr/bin/python3
"""Writes the diffraction test files of tests/readers from known scans, and what a reader must
find in them, into diffraction/ beside this script:

    tests/readers/data/make_diffraction.py

diffraction/expected.tsv  per scan: name ("FILE #N" for scan N of several), points, first
                          2-theta, last 2-theta, smallest and largest count, wavelength text
                          ("" when the file gives none), a header comment line the reader keeps

Each file holds a step scan start + k * step with integer counts from a sum of two peaks; the
layouts follow the formats' public descriptions (text formats written as instruments write
them); the binary ones follow xylib's readers field by field, as noted at each.
"""
import math
import pathlib
import struct

folder = pathlib.Path(__file__).resolve().parent / "diffraction"
folder.mkdir(exist_ok=True)
rows = []


def f32(value):
    return struct.unpack("<f", struct.pack("<f", value))[0]


def scan(start, step, n, seed):
    counts = []
    for k in range(n):
        t = start + step * k
        value = 20 + seed + 900 * math.exp(-((t - start - step * n * 0.3) / (4 * step)) ** 2) \
            + 400 * math.exp(-((t - start - step * n * 0.7) / (3 * step)) ** 2)
        counts.append(int(round(value)))
    return counts


def expect(name, start, step, counts, wave="", comment=""):
    rows.append([name, len(counts), repr(f32(start)), repr(f32(start + step * (len(counts) - 1))),
                 repr(float(min(counts))), repr(float(max(counts))), wave, comment])


def write(name, text):
    (folder / name).write_text(text)


def write_bytes(name, content):
    (folder / name).write_bytes(content)


def lines_of(values, per_line, fmt, separator=" "):
    return "".join(separator.join(fmt.format(v) for v in values[k:k + per_line]) + "\n"
                   for k in range(0, len(values), per_line))


# Diffractometer UXD text: a header of _KEY = value lines, then one count per line.
counts = scan(10.0, 0.02, 120, 1)
write("scan.uxd",
      "; test scan written by make_diffraction.py\n_FILEVERSION = 1\n_SAMPLE = 'Quartz'\n"
      "_WL1 = 1.540600\n_WL2 = 1.544390\n\n; (Data for Range number 1)\n_DRIVE = 'COUPLED'\n"
      "_STEPTIME = 1.000000\n_STEPSIZE = 0.020000\n_STEPMODE = 'C'\n_START = 10.000000\n"
      "_2THETA = 10.000000\n_COUNTS\n" + lines_of(counts, 1, "{:8d}"))
expect("scan.uxd", 10.0, 0.02, counts, "1.5406")

# XML measurement file: start and end positions, the counts in one element.
counts = scan(20.0, 0.05, 201, 2)
write("scan.xrdml",
      '<?xml version="1.0" encoding="UTF-8"?>\n'
      '<xrdMeasurements xmlns="http://www.xrdml.com/XRDMeasurement/1.0" status="Completed">\n'
      ' <sample type="To be analyzed"><id>test</id><name>test</name></sample>\n'
      ' <xrdMeasurement measurementType="Scan" status="Completed">\n'
      '  <usedWavelength intended="K-Alpha 1">\n'
      '   <kAlpha1 unit="Angstrom">1.5405980</kAlpha1>\n'
      '   <kAlpha2 unit="Angstrom">1.5444260</kAlpha2>\n'
      '   <kBeta unit="Angstrom">1.3922500</kBeta>\n'
      '   <ratioKAlpha2KAlpha1>0.5000</ratioKAlpha2KAlpha1>\n'
      '  </usedWavelength>\n'
      '  <scan appendNumber="0" mode="Continuous" scanAxis="Gonio" status="Completed">\n'
      '   <dataPoints>\n'
      '    <positions axis="2Theta" unit="deg">\n'
      '     <startPosition>20.000</startPosition>\n'
      '     <endPosition>30.000</endPosition>\n'
      '    </positions>\n'
      '    <commonCountingTime unit="seconds">1.00</commonCountingTime>\n'
      '    <intensities unit="counts">' + " ".join(str(c) for c in counts) + '</intensities>\n'
      '   </dataPoints>\n'
      '  </scan>\n'
      ' </xrdMeasurement>\n'
      '</xrdMeasurements>\n')
expect("scan.xrdml", 20.0, 0.05, counts, "1.540598")

# Keyed text with comma-separated counts between *BEGIN and *END.
counts = scan(5.0, 0.04, 150, 3)
write("scan_rigaku.dat",
      "*TYPE\t\t=  Raw\n*CLASS\t\t=  Measure\n*FILE_COMMENT\t=  test scan\n*GROUP_COUNT\t=  1\n"
      "*BEGIN\n*START\t\t=  5.0000\n*STOP\t\t=  10.9600\n*STEP\t\t=  0.0400\n*COUNT\t\t=  150\n"
      "*Cu_K_Alpha1\t=  1.54056\n" + lines_of(counts, 4, "{}", ", ") + "*END\n*EOF\n")
expect("scan_rigaku.dat", 5.0, 0.04, counts, "1.54056")

# Ten header lines, then one count per line after SCANDATA.
counts = scan(15.0, 0.025, 80, 4)
write("scan.cpi",
      "SIETRONICS XRD SCAN\n15.00\n16.975\n0.025\nCu\n1.54056\n01/01/2000\n1.0\ntest scan\n"
      "SCANDATA\n" + lines_of(counts, 1, "{}"))
expect("scan.cpi", 15.0, 0.025, counts, "1.54056")  # the sixth line, which xylib skips

# START, STEP, STOP in (3F8.2, A48), then counts in 8(F7.0,1X).
counts = scan(8.0, 0.05, 96, 5)
write("scan.dbw", "{:8.2f}{:8.2f}{:8.2f}{:<48}\n".format(8.0, 0.05, 12.75,
                                                         "test scan, Mo K-alpha1 0.70932") +
      lines_of(counts, 8, "{:7.0f}"))
expect("scan.dbw", 8.0, 0.05, counts, "0.70932")

# Up to four comment lines, start step stop, then free-format counts.
counts = scan(12.0, 0.03, 110, 6)
write("scan_riet7.dat", "test scan written by make_diffraction.py\nlambda = 1.78897 A\n" +
      "  12.000   0.030  15.270\n" + lines_of(counts, 10, "{:6d}"))
expect("scan_riet7.dat", 12.0, 0.03, counts, "1.78897")

# Powder-diffraction CIF with a loop of 2-theta and counts.
counts = scan(25.0, 0.1, 60, 7)
write("scan_pd.cif",
      "data_test_scan\n_diffrn_radiation_wavelength 1.5406\n_pd_meas_number_of_points 60\n"
      "loop_\n_pd_meas_2theta_scan\n_pd_meas_counts_total\n" +
      "".join(f"{25.0 + 0.1 * k:.2f} {c}\n" for k, c in enumerate(counts)))
expect("scan_pd.cif", 25.0, 0.1, counts, "1.5406")

# Keyed text of "Key, values,/" lines; counts comma-separated after RawScan, closed by "/".
counts = scan(30.0, 0.02, 90, 8)
udf_counts = ",".join(f"{c:7d}" for c in counts)
write("scan.udf",
      "SampleIdent,test ,/\nTitle1,test scan ,/\nTitle2,,/\nSampleIdent,test ,/\n"
      "LabdaAlpha1, 1.54060,/\nLabdaAlpha2, 1.54439,/\nRatioAlpha21, 0.50000,/\n"
      "DataAngleRange,  30.0000,  31.7800,/\nScanStepSize,    0.020,/\nScanType,STEP,/\n"
      "ScanStepTime,    1.00,/\nRawScan\n" + udf_counts + "/\n")
expect("scan.udf", 30.0, 0.02, counts, "1.5406")

# Two or three columns: 2-theta, counts[, standard uncertainty].
counts = scan(40.0, 0.02, 70, 9)
write("scan.xy", "# synchrotron scan\n# Wavelength: 7.2932e-11 m\n# 2theta counts\n" +
      "".join(f"{40.0 + 0.02 * k:.3f} {c}\n" for k, c in enumerate(counts)))
expect("scan.xy", 40.0, 0.02, counts, "0.72932")
counts = scan(41.0, 0.02, 75, 10)
write("scan.xye", "".join(f"{41.0 + 0.02 * k:.3f} {c} {math.sqrt(c):.3f}\n"
                          for k, c in enumerate(counts)))
expect("scan.xye", 41.0, 0.02, counts)


# The binary layouts below are those xylib reads (bruker_raw.cpp, philips_raw.cpp): every field
# xylib reads is filled, every field it skips is zero. Little-endian throughout.
def padded(text, size):
    return text.encode("ascii").ljust(size, b"\0")


def floats(values):
    return struct.pack(f"<{len(values)}f", *values)


# Bruker RAW version 1 ("RAW "): per range a 152-byte header (steps, time per step, step, scan
# mode, 4 unused, start, theta/khi/phi start (-1e6: unknown), sample name[32], K-alpha1,
# K-alpha2, 72 unused, "another range follows"), then the counts as floats. A second range
# repeats "RAW " in front of its header, as later versions of the software wrote it.
def raw1_range(start, step, counts, sample, more):
    return struct.pack("<Iffi4xffff", len(counts), 1.0, step, 0, start, -1e6, -1e6, -1e6) + \
        padded(sample, 32) + struct.pack("<ff72xI", 1.540598, 1.544426, int(more)) + floats(counts)


counts = scan(10.0, 0.02, 100, 11)
counts2 = scan(40.0, 0.05, 60, 12)
write_bytes("scan_v1.raw", b"RAW " + raw1_range(10.0, 0.02, counts, "quartz v1", True) +
            b"RAW " + raw1_range(40.0, 0.05, counts2, "quartz v1", False))
expect("scan_v1.raw #1", 10.0, 0.02, counts, "1.540598", "SAMPLE_NAME: quartz v1")
expect("scan_v1.raw #2", 40.0, 0.05, counts2, "1.540598", "SAMPLE_NAME: quartz v1")


# Bruker RAW version 2 ("RAW2"): range count (u16), 162 unused, date[20], anode[2], lambda 1 and
# 2, intensity ratio, 8 unused, run time, 42 unused: 256 bytes. Per range a header of
# header_len bytes (u16 header_len, u16 steps, 4 unused, time per step, step, start, 26 unused,
# u16 temperature, unused up to header_len), then the counts as floats.
def raw2_range(start, step, counts, header_len=64):
    return struct.pack("<HH4xfff26xH", header_len, len(counts), 1.0, step, start, 298) + \
        bytes(header_len - 48) + floats(counts)


counts = scan(5.0, 0.04, 90, 13)
write_bytes("scan_v2.raw", b"RAW2" + struct.pack("<H162x", 1) + padded("01/02/03 04:05:06", 20) +
            b"Cu" + struct.pack("<fff8xf42x", 1.540562, 1.544390, 0.5, 90.0) +
            raw2_range(5.0, 0.04, counts))
expect("scan_v2.raw", 5.0, 0.04, counts, "1.540562", "CEMICAL SYMBOL FOR TUBE ANODE: Cu")


# Bruker RAW version 3 ("RAW1.01"): a 712-byte file header (range count at 12, sample id[60] at
# 326, anode[4] at 608, wavelengths as doubles from 616: average, alpha1, alpha2, beta, ratio),
# then per range a 304-byte header (steps at 4, start theta and 2-theta at 8 and 16, step at
# 176, time per step at 192, used wavelength at 240, supplementary size at 256), the
# supplementary headers, and the counts as floats.
def raw3_range(start, step, counts, supplementary=b""):
    header = bytearray(304)
    struct.pack_into("<IIdd", header, 0, 304, len(counts), start / 2, start)
    struct.pack_into("<d", header, 176, step)
    struct.pack_into("<f", header, 192, 1.0)
    struct.pack_into("<II", header, 224, 40, 40)
    struct.pack_into("<d", header, 240, 1.540598)
    struct.pack_into("<I", header, 256, len(supplementary))
    return bytes(header) + supplementary + floats(counts)


def raw3_file(ranges):
    header = bytearray(712)
    header[0:8] = b"RAW1.01\0"
    struct.pack_into("<II", header, 8, 1, len(ranges))
    header[326:326 + 60] = padded("quartz v3", 60)
    header[608:612] = b"Cu\0\0"
    struct.pack_into("<5d", header, 616, 1.541874, 1.540598, 1.544426, 1.39225, 0.5)
    return bytes(header) + b"".join(ranges)


counts = scan(20.0, 0.01, 150, 14)
counts2 = scan(60.0, 0.02, 40, 15)
write_bytes("scan_v3.raw", raw3_file([raw3_range(20.0, 0.01, counts),
                                      raw3_range(60.0, 0.02, counts2, bytes(24))]))
expect("scan_v3.raw #1", 20.0, 0.01, counts, "1.540598", "SAMPLE_ID: quartz v3")
expect("scan_v3.raw #2", 60.0, 0.02, counts2, "1.540598", "SAMPLE_ID: quartz v3")


# Philips RD version 3 ("V3RD"): diffractometer, anode and focus codes at 84-86, file name[8]
# and sample[20] at 138, step, start and end 2-theta as doubles at 214, the counts from 250 as
# u16 c with intensity c*c/100 (so c = 10*root of the count keeps the counts whole; xylib
# divides in integers). The point count is (end - start) / step + 1: steps that are powers of
# two keep it exact.
def rd_file(start, step, roots, sample):
    header = bytearray(250)
    header[0:4] = b"V3RD"
    header[84:87] = bytes([1, 0, 2])
    header[138:146] = padded("SCAN", 8)
    header[146:166] = padded(sample, 20)
    struct.pack_into("<ddd", header, 214, step, start, start + step * (len(roots) - 1))
    return bytes(header) + struct.pack(f"<{len(roots)}H", *(10 * r for r in roots))


roots = [int(round(math.sqrt(c))) for c in scan(15.0, 0.03125, 128, 16)]
write_bytes("scan.rd", rd_file(15.0, 0.03125, roots, "quartz rd"))
expect("scan.rd", 15.0, 0.03125, [r * r for r in roots], "",
       "sample identification: quartz rd")

with open(folder / "expected.tsv", "w") as out:
    for row in rows:
        out.write("\t".join(str(v) for v in row) + "\n")
