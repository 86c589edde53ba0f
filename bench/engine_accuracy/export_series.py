#!/usr/bin/python3
"""Writes public series shipped with statsmodels into data/ (same layout as
export_series.R: "# period=<p>" then one value per line). Run once with Debian's
python3-statsmodels; the files are kept in the repository."""
import os

import statsmodels.api as sm

OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "data")


def put(name, values, period):
    os.makedirs(OUT, exist_ok=True)
    with open(os.path.join(OUT, name + ".csv"), "w", newline="\n") as f:
        f.write("# period=%d\n" % period)
        for v in values:
            f.write(repr(float(v)) + "\n")


def main():
    macro = sm.datasets.macrodata.load_pandas().data
    for col in ("realgdp", "realcons", "realinv", "realgovt", "realdpi", "cpi", "m1", "tbilrate", "unemp",
                "pop", "infl", "realint"):
        put("sm_macro_" + col, macro[col].values, 4)
    elnino = sm.datasets.elnino.load_pandas().data.iloc[:, 1:13].values.reshape(-1)
    put("sm_elnino", elnino[-240:], 12)
    co2 = sm.datasets.co2.load_pandas().data["co2"].resample("MS").mean().interpolate()
    put("sm_co2", co2.values[:240], 12)
    put("sm_sunspots", sm.datasets.sunspots.load_pandas().data["SUNACTIVITY"].values, 1)
    put("sm_nile", sm.datasets.nile.load_pandas().data["volume"].values, 1)
    # Long series for the benchmark's --long set (data_long/): the weekly co2 record (s = 52,
    # gaps interpolated), its last ten years, and the whole monthly El Nino record.
    global OUT
    OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "data_long")
    weekly = sm.datasets.co2.load_pandas().data["co2"].interpolate()
    put("long_co2_weekly", weekly.values, 52)
    put("long_co2_weekly_10y", weekly.values[-520:], 52)
    put("long_elnino", elnino, 12)


if __name__ == "__main__":
    main()
