#!/usr/bin/python3
"""Writes the diffraction test files of tests/readers from known scans, and what a reader must
find in them, into diffraction/ beside this script:

    tests/readers/data/make_diffraction.py

diffraction/expected.tsv  per file: name, points, first 2-theta, last 2-theta, smallest and
                          largest count, wavelength text ("" when the file gives none)

Each file holds a step scan start + k * step with integer counts from a sum of two peaks; the
layouts follow the formats' public descriptions (text formats written as instruments write
them, binary ones field by field).
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


def expect(name, start, step, counts, wave=""):
    rows.append([name, len(counts), repr(f32(start)), repr(f32(start + step * (len(counts) - 1))),
                 repr(float(min(counts))), repr(float(max(counts))), wave])


def write(name, text):
    (folder / name).write_text(text)


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
expect("scan.cpi", 15.0, 0.025, counts)  # xylib does not pass the wavelength line on

# START, STEP, STOP in (3F8.2, A48), then counts in 8(F7.0,1X).
counts = scan(8.0, 0.05, 96, 5)
write("scan.dbw", "{:8.2f}{:8.2f}{:8.2f}{:<48}\n".format(8.0, 0.05, 12.75, "test scan") +
      lines_of(counts, 8, "{:7.0f}"))
expect("scan.dbw", 8.0, 0.05, counts)

# Up to four comment lines, start step stop, then free-format counts.
counts = scan(12.0, 0.03, 110, 6)
write("scan_riet7.dat", "test scan written by make_diffraction.py\n" +
      "  12.000   0.030  15.270\n" + lines_of(counts, 10, "{:6d}"))
expect("scan_riet7.dat", 12.0, 0.03, counts)

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
write("scan.xy", "# 2theta counts\n" +
      "".join(f"{40.0 + 0.02 * k:.3f} {c}\n" for k, c in enumerate(counts)))
expect("scan.xy", 40.0, 0.02, counts)
counts = scan(41.0, 0.02, 75, 10)
write("scan.xye", "".join(f"{41.0 + 0.02 * k:.3f} {c} {math.sqrt(c):.3f}\n"
                          for k, c in enumerate(counts)))
expect("scan.xye", 41.0, 0.02, counts)

with open(folder / "expected.tsv", "w") as out:
    for row in rows:
        out.write("\t".join(str(v) for v in row) + "\n")
