#!/usr/bin/python3
"""Makes the joint-refinement test cases (joint_cases.json) and fits each independently.

Usage: make_joint_cases.py SHARED_REFINE_DIR > joint_cases.json

From the true cell and wavelength of each case_<system>.txt of the team's refinement cases it
draws synthetic lines (every resolved reflection up to 140 deg, at most 99, see line_list):
2-theta by Bragg's law, plus a constant instrument shift, plus Gaussian noise (sd 0.005 deg,
numpy default_rng with the seed stored per case), rounded to 0.0001 deg. Shifts: -0.30, -0.05,
+0.02, +0.20 deg for every system (the zero correction to recover is minus the shift); two cases
add a sample displacement; one case has a line 0.1 deg off (a mis-indexed line).

Each case is then fitted by scipy.optimize.least_squares (method 'trf', central-difference
Jacobian, residual 2theta_obs + z + (360/pi)(s/R) cos(theta_obs) - 2theta_calc in degrees, unit
weights), a formulation of its own: the cell from the six direct parameters through the
reciprocal metric computed by numpy.linalg.inv, with the system's ties applied in the parameter
vector. Leverages come from the Jacobian; studentised deleted residuals and the change of each
edge from explicit refits without each line (no deletion formula).
"""
import json
import math
import sys

import numpy as np
from scipy.optimize import least_squares

RADIUS_MM = 240.0
NOISE_SD = 0.005
SHIFTS = [-0.30, -0.05, 0.02, 0.20]

# Free parameters of each system: (cell entries set by each parameter), fixed entries.
TIES = {
    "TRICLINIC": [[0], [1], [2], [3], [4], [5]],
    "MONOCLINIC1": [[0], [1], [2], [5]],
    "MONOCLINIC2": [[0], [1], [2], [4]],
    "MONOCLINIC3": [[0], [1], [2], [3]],
    "ORTHORHOMBIC": [[0], [1], [2]],
    "TETRAGONAL": [[0, 1], [2]],
    "HEXAGONAL": [[0, 1], [2]],
    "RHOMBOHEDRAL": [[0, 1, 2], [3, 4, 5]],
    "CUBIC": [[0, 1, 2]],
}


def read_case(path):
    case = {"lines": []}
    in_lines = False
    for raw in open(path):
        line = raw.strip()
        if not line or line.startswith("#"):
            continue
        if line == "END":
            break
        if in_lines:
            h, k, l, w, _ = line.split()
            case["lines"].append([int(h), int(k), int(l), int(w)])
            continue
        key, value = line.split(":", 1)
        if key == "SYSTEM":
            case["system"] = value.strip()
        elif key == "TRUE_CELL":
            case["true_cell"] = [float(v) for v in value.split()]
        elif key == "START_CELL":
            case["start_cell"] = [float(v) for v in value.split()]
        elif key == "WAVELENGTHS":
            case["wavelengths"] = [float(v) for v in value.split()]
        elif key == "NAME":
            case["source"] = value.strip()
        elif key == "REFLECTIONS":
            in_lines = True
    return case


def cell_from(system, params):
    cell = [0.0, 0.0, 0.0, 90.0, 90.0, 120.0 if system == "HEXAGONAL" else 90.0]
    for value, entries in zip(params, TIES[system]):
        for e in entries:
            cell[e] = value
    return cell


def two_theta(cell_deg, hkl, wavelength):
    a, b, c = cell_deg[:3]
    al, be, ga = np.radians(cell_deg[3:])
    g = np.array([[a * a, a * b * math.cos(ga), a * c * math.cos(be)],
                  [a * b * math.cos(ga), b * b, b * c * math.cos(al)],
                  [a * c * math.cos(be), b * c * math.cos(al), c * c]])
    h = np.array(hkl, dtype=float)
    q = h @ np.linalg.inv(g) @ h
    return 2.0 * math.degrees(math.asin(wavelength * math.sqrt(q) / 2.0))


def fit(case, lines, zero, displacement):
    system = case["system"]
    nfree = len(TIES[system])

    def residuals(x):
        cell = cell_from(system, x[:nfree])
        z = x[nfree] if zero else 0.0
        s = x[nfree + (1 if zero else 0)] if displacement else 0.0
        out = []
        for h, k, l, w, obs in lines:
            corr = obs + z + (360.0 / math.pi) * (s / RADIUS_MM) * math.cos(math.radians(obs / 2))
            out.append(corr - two_theta(cell, (h, k, l), case["wavelengths"][w - 1]))
        return np.array(out)

    start = [case["start_cell"][e[0]] for e in TIES[system]]
    x0 = np.array(start + ([0.0] if zero else []) + ([0.0] if displacement else []))
    res = least_squares(residuals, x0, method="trf", jac="3-point", xtol=1e-15, ftol=1e-15,
                        gtol=1e-15, x_scale="jac")
    return res


def summary(case, lines, zero, displacement):
    res = fit(case, lines, zero, displacement)
    n, p = len(lines), len(res.x)
    ssr = float(res.fun @ res.fun)
    sigma = math.sqrt(ssr / (n - p))
    cov = np.linalg.inv(res.jac.T @ res.jac) * sigma ** 2
    nfree = len(TIES[case["system"]])
    out = {
        "cell": cell_from(case["system"], list(res.x[:nfree])),
        "free_esd": [float(v) for v in np.sqrt(np.diag(cov))],
        "sigma_deg": sigma,
        "zero": float(res.x[nfree]) if zero else None,
        "displacement_mm": float(res.x[-1]) if displacement else None,
    }
    return out, res


def deletion(case, lines, zero, displacement, full):
    """Rstudent and edge changes by refitting without each line."""
    n = len(lines)
    nfree = len(TIES[case["system"]])
    _, res = summary(case, lines, zero, displacement)
    p = len(res.x)
    jac = res.jac
    hat = np.diag(jac @ np.linalg.inv(jac.T @ jac) @ jac.T)
    rows = []
    for i in range(n):
        rest = lines[:i] + lines[i + 1:]
        sub, sub_res = summary(case, rest, zero, displacement)
        s_del = math.sqrt(float(sub_res.fun @ sub_res.fun) / (n - 1 - p))
        # Rstudent: the left-out line's residual against the fit without it, scaled by its
        # prediction error (exact for a linear model).
        x = sub_res.x
        h, k, l, w, obs = lines[i]
        one = residuals_for(case, [lines[i]], zero, displacement, x)[0]
        rows.append({
            "hat": float(hat[i]),
            "rstudent": float(one * math.sqrt(1 - hat[i]) / s_del),
            "edge_change": [sub["cell"][e] - full["cell"][e] for e in range(3)],
        })
    return rows


def residuals_for(case, lines, zero, displacement, x):
    system = case["system"]
    nfree = len(TIES[system])
    cell = cell_from(system, x[:nfree])
    z = x[nfree] if zero else 0.0
    s = x[nfree + (1 if zero else 0)] if displacement else 0.0
    return [obs + z + (360.0 / math.pi) * (s / RADIUS_MM) * math.cos(math.radians(obs / 2))
            - two_theta(cell, (h, k, l), case["wavelengths"][w - 1])
            for h, k, l, w, obs in lines]


def line_list(case, limit_deg=140.0, gap_deg=0.05, most=99):
    """The case's reflections in full: every h k l of the true cell (primitive lattice) up to
    limit_deg at the first wavelength, one per position, leaving out lines within gap_deg of
    another (unresolved in a powder pattern); thinned evenly to at most `most`."""
    cell = case["true_cell"]
    wavelength = case["wavelengths"][0]
    dmin = wavelength / (2 * math.sin(math.radians(limit_deg / 2)))
    bound = [int(math.ceil(cell[i] / dmin)) + 1 for i in range(3)]
    found = {}
    for h in range(-bound[0], bound[0] + 1):
        for k in range(-bound[1], bound[1] + 1):
            for l in range(-bound[2], bound[2] + 1):
                if (h, k, l) == (0, 0, 0):
                    continue
                try:
                    tt = two_theta(cell, (h, k, l), wavelength)
                except ValueError:
                    continue
                if tt <= limit_deg:
                    key = round(tt, 6)
                    # One representative per position: the largest first non-zero index.
                    found.setdefault(key, (h, k, l))
                    found[key] = max(found[key], (h, k, l))
    positions = sorted(found)
    kept = [t for i, t in enumerate(positions)
            if (i == 0 or t - positions[i - 1] > gap_deg)
            and (i + 1 == len(positions) or positions[i + 1] - t > gap_deg)]
    if len(kept) > most:
        kept = [kept[round(i * (len(kept) - 1) / (most - 1))] for i in range(most)]
    return [list(found[t]) + [1] for t in kept]


def synthetic(case, shift, displacement_mm, seed, bad_line=None):
    rng = np.random.default_rng(seed)
    lines = []
    for index, (h, k, l, w) in enumerate(case["lines"]):
        tt = two_theta(case["true_cell"], (h, k, l), case["wavelengths"][w - 1])
        tt -= (360.0 / math.pi) * (displacement_mm / RADIUS_MM) * math.cos(math.radians(tt / 2))
        tt += shift + rng.normal(0.0, NOISE_SD)
        if index == bad_line:
            tt += 0.1
        lines.append([h, k, l, w, round(tt, 4)])
    return lines


def main():
    folder = sys.argv[1]
    out = []
    seed = 16000
    for system in TIES:
        case = read_case(f"{folder}/case_{system.lower()}.txt")
        case["system"] = system
        case["lines"] = line_list(case)
        plans = [(s, 0.0, None) for s in SHIFTS]
        if system in ("CUBIC", "HEXAGONAL"):
            plans.append((0.05, 0.15, None))
        if system == "ORTHORHOMBIC":
            plans.append((0.02, 0.0, 7))
        for shift, disp, bad in plans:
            seed += 1
            lines = synthetic(case, shift, disp, seed, bad)
            zero, displacement = True, disp != 0.0
            full, _ = summary(case, lines, zero, displacement)
            entry = {
                "name": f"{system.lower()}_shift{shift:+.2f}" + (f"_disp{disp:.2f}" if disp else "")
                        + ("_misindexed" if bad is not None else ""),
                "system": system,
                "wavelengths": case["wavelengths"],
                "true_cell": case["true_cell"],
                "start_cell": case["start_cell"],
                "zero_correction_applied": -shift,
                "displacement_applied_mm": disp,
                "misindexed_line": None if bad is None else bad + 1,
                "seed": seed,
                "lines": lines,
                "scipy": full,
            }
            if bad is not None or system == "CUBIC":
                entry["scipy_deletion"] = deletion(case, lines, zero, displacement, full)
            out.append(entry)
    json.dump({"source": "make_joint_cases.py from the team's refinement cases (public domain)",
               "radius_mm": RADIUS_MM, "noise_sd_deg": NOISE_SD, "cases": out}, sys.stdout,
              indent=1)


if __name__ == "__main__":
    main()
