#!/usr/bin/python3
"""Writes designs.csv: reference magnitude responses of classical IIR designs from
scipy.signal, for the designer's tests. Run with Debian's python3 and python3-scipy:

    /usr/bin/python3 make_golden.py > designs.csv

Rows starting with "grid" give, per sample rate, the 40 test frequencies (Hz). Every other
row is one design: family, shape, order, sample rate, edge 1 and edge 2 (Hz), pass-band
ripple and stop-band attenuation (dB), the stop-band edges where an elliptic design must
stay below its attenuation (Hz, 0 when there is no floor), then the 40 magnitudes in dB.
"""
import numpy as np
from scipy import signal

RATES = [32000, 44100, 96000]
ORDERS = range(1, 9)
SHAPES = ["lowpass", "highpass", "bandpass", "bandstop"]
RP, RS = 1.0, 50.0
EDGES = {"lowpass": (1200.0, 0.0), "highpass": (1200.0, 0.0),
         "bandpass": (600.0, 2400.0), "bandstop": (600.0, 2400.0)}
SCIPY_SHAPE = {"lowpass": "lowpass", "highpass": "highpass",
               "bandpass": "bandpass", "bandstop": "bandstop"}


def grid(fs):
    return np.geomspace(20.0, 0.45 * fs, 40)


def design(family, shape, order, fs):
    f1, f2 = EDGES[shape]
    wn = f1 if shape in ("lowpass", "highpass") else [f1, f2]
    btype = SCIPY_SHAPE[shape]
    if family == "butterworth":
        return signal.butter(order, wn, btype, fs=fs, output="sos")
    if family == "chebyshev1":
        return signal.cheby1(order, RP, wn, btype, fs=fs, output="sos")
    if family == "elliptic":
        return signal.ellip(order, RP, RS, wn, btype, fs=fs, output="sos")
    # 'phase': asymptotes of the Butterworth of the same order, phase midpoint at the edge.
    return signal.bessel(order, wn, btype, fs=fs, norm="phase", output="sos")


def db(sos, freqs, fs):
    _, h = signal.sosfreqz(sos, worN=freqs, fs=fs)
    return 20.0 * np.log10(np.maximum(np.abs(h), 1e-300))


def stop_edges(sos, shape, fs):
    """The edges of the elliptic stop band(s), from a dense scan of the response: the
    innermost frequencies from which on the response stays at or below -RS."""
    f = np.linspace(1.0, fs / 2.0 - 1.0, 200001)
    below = db(sos, f, fs) <= -RS + 1e-6
    f1, f2 = EDGES[shape]
    def outward(mask_f, mask):  # first index from which all further are below
        bad = np.nonzero(~mask)[0]
        return mask_f[bad[-1] + 1] if len(bad) else mask_f[0]
    if shape == "lowpass":
        return outward(f, below), 0.0
    if shape == "highpass":
        return outward(f[::-1], below[::-1]), 0.0
    if shape == "bandpass":
        lo = f < f1
        hi = f > f2
        return outward(f[lo][::-1], below[lo][::-1]), outward(f[hi], below[hi])
    mid = (f > f1) & (f < f2)
    inner = f[mid][below[mid]]
    return inner[0], inner[-1]


def main():
    for fs in RATES:
        print("grid,%d," % fs + ",".join("%.6f" % x for x in grid(fs)))
    for family in ["butterworth", "chebyshev1", "elliptic", "bessel"]:
        for shape in SHAPES:
            for order in ORDERS:
                for fs in RATES:
                    sos = design(family, shape, order, fs)
                    s1, s2 = stop_edges(sos, shape, fs) if family == "elliptic" else (0.0, 0.0)
                    f1, f2 = EDGES[shape]
                    mags = db(sos, grid(fs), fs)
                    print("%s,%s,%d,%d,%g,%g,%g,%g,%.3f,%.3f," % (family, shape, order, fs, f1, f2, RP, RS, s1, s2)
                          + ",".join("%.6f" % m for m in mags))


if __name__ == "__main__":
    main()
