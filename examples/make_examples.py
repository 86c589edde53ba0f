#!/usr/bin/env python3
"""Writes the sample ASC files and projects of this folder from public series.

The airline passengers (Box and Jenkins, series G, monthly 1949-1960) are printed below;
the Nile flows (annual 1871-1970), the El Nino sea temperatures (monthly 1950-2010) and the
US macro series (quarterly 1959-2009) are read from the data files that Debian's
python3-statsmodels package ships. Run it again to regenerate the files; the output is
deterministic.
"""
import csv
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
DATA = "/usr/lib/python3/dist-packages/statsmodels/datasets"

PASSENGERS = [
    112, 118, 132, 129, 121, 135, 148, 148, 136, 119, 104, 118,
    115, 126, 141, 135, 125, 149, 170, 170, 158, 133, 114, 140,
    145, 150, 178, 163, 172, 178, 199, 199, 184, 162, 146, 166,
    171, 180, 193, 181, 183, 218, 230, 242, 209, 191, 172, 194,
    196, 196, 236, 235, 229, 243, 264, 272, 237, 211, 180, 201,
    204, 188, 235, 227, 234, 264, 302, 293, 259, 229, 203, 229,
    242, 233, 267, 269, 270, 315, 364, 347, 312, 274, 237, 278,
    284, 277, 317, 313, 318, 374, 413, 405, 355, 306, 271, 306,
    315, 301, 356, 348, 355, 422, 465, 467, 404, 347, 305, 336,
    340, 318, 362, 348, 363, 435, 491, 505, 404, 359, 310, 337,
    360, 342, 406, 396, 420, 472, 548, 559, 463, 407, 362, 405,
    417, 391, 419, 461, 472, 535, 622, 606, 508, 461, 390, 432,
]


def text(v):
    return ("%.6f" % v).rstrip("0").rstrip(".")


def asc(path, name, seasonality, year, period, values, forecasts, declared=None):
    """One univariate ASC file; `declared` overrides the number of observations announced."""
    lines = ["0", "0", "0"]
    n_obs = declared if declared is not None else len(values)
    lines += [str(x) for x in (1, seasonality, year, period, n_obs, 0, 0, forecasts)]
    lines += [name, "0"]
    lines += [text(v) for v in values]
    with open(os.path.join(HERE, path), "w", newline="") as f:
        f.write("\r\n".join(lines) + "\r\n")


SERIES_TAGS = ["details", "history", "forecasts", "afit", "af", "aff", "ff", "ac", "res", "ar"]
SUFFIXES = [".htm", "act.jpg", "fore.jpg", "actfit.jpg", "actfore.jpg", "actfitfore.jpg",
            "fitfore.jpg", "actcleanse.jpg", "res.jpg", "actres.jpg"]


def project(path, files):
    # Each project's reports in a folder of its own, named after it: a run of one never
    # empties another's OUTPUT.
    out = ['<?xml version="1.0" encoding="UTF-8"?>',
           '<batch inputpath="./" outputpath="./%s/" ' % path[:-4] +
           'xmlns:xsd="http://www.w3.org/2001/XMLSchema-instance" '
           'xsd:noNamespaceSchemaLocation="DEFAULTXSD/batchschema1.0.2.xsd">',
           '  <set runcomplete="0" objective="0">']
    for f in files:
        stem = f[:-4] if f.lower().endswith(".asc") else f
        out.append('    <series name="%s" complete="0" err="0" rundate="00/00/00">' % stem)
        out.append("      <data>%s</data>" % f)
        for tag, suffix in zip(SERIES_TAGS, SUFFIXES):
            out.append("      <%s>%s%s</%s>" % (tag, stem, suffix, tag))
        out.append("    </series>")
    out += ["  </set>", "</batch>"]
    with open(os.path.join(HERE, path), "w", newline="") as f:
        f.write("\r\n".join(out) + "\r\n")


def main():
    asc("AIRLINE.ASC", "PASSENGERS", 12, 1949, 1, PASSENGERS, 12)

    with open(os.path.join(DATA, "elnino", "elnino.csv")) as f:
        rows = list(csv.reader(f))[1:]
    elnino = [float(v) for r in rows for v in r[1:]]
    asc("ELNINO.ASC", "SEA_TEMP", 12, int(float(rows[0][0])), 1, elnino, 12)

    with open(os.path.join(DATA, "nile", "nile.csv")) as f:
        rows = list(csv.DictReader(f))
    asc("NILE.ASC", "NILE", 1, int(float(rows[0]["year"])), 0,
        [float(r["volume"]) for r in rows], 10)

    with open(os.path.join(DATA, "macrodata", "macrodata.csv")) as f:
        rows = list(csv.DictReader(f))
    first = (int(float(rows[0]["year"])), int(float(rows[0]["quarter"])))
    asc("REALGDP.ASC", "REALGDP", 4, first[0], first[1], [float(r["realgdp"]) for r in rows], 8)
    asc("REALCONS.ASC", "REALCONS", 4, first[0], first[1], [float(r["realcons"]) for r in rows], 8)

    # The deliberately malformed file: it announces 60 monthly values and holds 54.
    asc("BROKEN.ASC", "BROKEN", 12, 1949, 1, PASSENGERS[:54], 12, declared=60)

    project("sample.xml", ["AIRLINE.ASC", "ELNINO.ASC", "BROKEN.ASC", "NILE.ASC"])
    project("quarterly.xml", ["REALGDP.ASC", "REALCONS.ASC"])
    project("annual.xml", ["NILE.ASC"])
    return 0


if __name__ == "__main__":
    sys.exit(main())
