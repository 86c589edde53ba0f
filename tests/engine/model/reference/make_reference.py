#!/usr/bin/python3
"""Reference values for the ARIMA estimator.

Writes the series used by the reference tests (series/<name>.csv, one value per line) from
the datasets shipped with statsmodels (the airline passengers series is kept as written in
series/airline.csv), fits fixed-order models with statsmodels' exact state-space likelihood
and writes expected.csv: one line per case with the orders, the log-likelihood and the
coefficients.

The models are fitted on the differenced (and, where asked, logged) series, so that the
likelihood is that of the differenced data and the constant is the mean of the differenced
series, as our estimator defines them.

Run with Debian's python3-statsmodels:  /usr/bin/python3 make_reference.py
"""
import csv
import os
import warnings

import numpy as np
import statsmodels.api as sm
from statsmodels.tsa.arima.model import ARIMA

HERE = os.path.dirname(os.path.abspath(__file__))
SERIES = os.path.join(HERE, "series")


def write_series(name, values):
    with open(os.path.join(SERIES, name + ".csv"), "w", newline="\n") as f:
        for v in values:
            f.write(repr(float(v)) + "\n")


def read_series(name):
    with open(os.path.join(SERIES, name + ".csv")) as f:
        return np.array([float(line) for line in f if line.strip()])


def export():
    write_series("nile", sm.datasets.nile.load_pandas().data["volume"].values)
    write_series("sunspots", sm.datasets.sunspots.load_pandas().data["SUNACTIVITY"].values)
    co2 = sm.datasets.co2.load_pandas().data["co2"]
    monthly = co2.resample("MS").mean().interpolate()
    write_series("co2", monthly["1960-01-01":"1989-12-01"].values)
    macro = sm.datasets.macrodata.load_pandas().data
    for col in ("realgdp", "unemp", "infl", "cpi", "tbilrate", "realcons"):
        write_series("macro_" + col, macro[col].values)
    elnino = sm.datasets.elnino.load_pandas().data
    write_series("elnino", elnino.iloc[:, 1:13].values.reshape(-1))


# name, series, transform, (p,d,q), (P,D,Q,s), constant
CASES = [
    ("nile_arma11", "nile", "none", (1, 0, 1), (0, 0, 0, 1), True),
    ("nile_ima11", "nile", "none", (0, 1, 1), (0, 0, 0, 1), False),
    ("sunspots_ar2", "sunspots", "none", (2, 0, 0), (0, 0, 0, 1), True),
    ("sunspots_arma21", "sunspots", "none", (2, 0, 1), (0, 0, 0, 1), True),
    ("sunspots_ar3", "sunspots", "none", (3, 0, 0), (0, 0, 0, 1), True),
    ("airline_log", "airline", "log", (0, 1, 1), (0, 1, 1, 12), False),
    ("airline_log_sar", "airline", "log", (1, 1, 0), (1, 1, 0, 12), False),
    ("airline_raw", "airline", "none", (2, 1, 1), (0, 1, 0, 12), False),
    ("co2_seasonal", "co2", "none", (1, 1, 1), (0, 1, 1, 12), False),
    ("co2_ma2", "co2", "none", (0, 1, 2), (0, 1, 1, 12), False),
    ("realgdp_drift", "macro_realgdp", "log", (1, 1, 0), (0, 0, 0, 1), True),
    ("realcons_arima111", "macro_realcons", "log", (1, 1, 1), (0, 0, 0, 1), True),
    ("unemp_ar2", "macro_unemp", "none", (2, 0, 0), (0, 0, 0, 1), True),
    ("infl_arma11", "macro_infl", "none", (1, 0, 1), (0, 0, 0, 1), True),
    ("cpi_ima21", "macro_cpi", "log", (0, 2, 1), (0, 0, 0, 1), False),
    ("tbilrate_ima11", "macro_tbilrate", "none", (0, 1, 1), (0, 0, 0, 1), False),
    ("elnino_sar2", "elnino", "none", (1, 0, 0), (2, 1, 0, 12), False),
    ("co2_sar", "co2", "none", (2, 1, 0), (1, 1, 0, 12), False),
]


def difference(x, d, D, s):
    for _ in range(D):
        x = x[s:] - x[:-s]
    for _ in range(d):
        x = x[1:] - x[:-1]
    return x


def best_fit(model, w):
    """The maximum of the likelihood: the optimiser's default start can stop at a local
    maximum, so a few other starts are tried and the highest likelihood is kept."""
    names = model.param_names
    starts = [None]
    for ar0, ma0 in ((0.01, 0.01), (0.5, -0.5), (-0.5, 0.5), (0.9, -0.5), (0.5, 0.3)):
        start = []
        for n in names:
            if n == "const":
                start.append(float(np.mean(w)))
            elif n == "sigma2":
                start.append(float(np.var(w)))
            elif n.startswith("ar."):
                start.append(ar0 if "L1" in n or "S.L" in n else 0.0)
            else:
                start.append(ma0 if "L1" in n or "S.L" in n else 0.0)
        starts.append(start)
    best = None
    for start in starts:
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            try:
                res = model.fit(start_params=start, cov_type="approx", method_kwargs={"maxiter": 2000})
            except Exception:
                continue
        roots = np.concatenate([np.atleast_1d(res.arroots), np.atleast_1d(res.maroots)]) \
            if (len(res.arroots) or len(res.maroots)) else np.array([2.0])
        # A start that ran onto the unit circle gives no usable maximum.
        if not np.isfinite(res.llf) or np.min(np.abs(roots)) < 1.001:
            continue
        if best is None or res.llf > best.llf:
            best = res
    return best


def write_statistics():
    """Test statistics on the same series: KPSS (level, lags trunc(3 sqrt(n) / 13)),
    augmented Dickey-Fuller (constant, lags by the AIC) with its 5 % point,
    Ljung-Box over 10 lags, Jarque-Bera. One line: statistic, series, value."""
    from statsmodels.stats.diagnostic import acorr_ljungbox
    from statsmodels.stats.stattools import jarque_bera
    from statsmodels.tsa.stattools import adfuller, kpss
    rows = []
    for series in ("nile", "sunspots", "macro_infl", "macro_unemp"):
        y = read_series(series)
        lags = int(3 * np.sqrt(len(y)) / 13)
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            stat = kpss(y, regression="c", nlags=lags)[0]
        rows.append(["kpss", series, "%.8f" % stat])
        adf = adfuller(y, regression="c", autolag="AIC")
        rows.append(["adf", series, "%.8f" % adf[0]])
        rows.append(["adf_5pct", series, "%.8f" % adf[4]["5%"]])
        lb = acorr_ljungbox(y - y.mean(), lags=[10])
        rows.append(["ljungbox10", series, "%.8f" % float(np.asarray(lb["lb_stat"])[0])])
        rows.append(["ljungbox10_p", series, "%.10g" % float(np.asarray(lb["lb_pvalue"])[0])])
        jb = jarque_bera(y)
        rows.append(["jarquebera", series, "%.8f" % jb[0]])
        rows.append(["jarquebera_p", series, "%.10g" % jb[1]])
    with open(os.path.join(HERE, "statistics.csv"), "w", newline="") as f:
        out = csv.writer(f, lineterminator="\n")
        out.writerow(["statistic", "series", "value"])
        out.writerows(rows)


def main():
    os.makedirs(SERIES, exist_ok=True)
    export()
    rows = []
    for name, series, transform, (p, d, q), (P, D, Q, s), constant in CASES:
        y = read_series(series)
        if transform == "log":
            y = np.log(y)
        w = difference(y, d, D, s)
        model = ARIMA(w, order=(p, 0, q), seasonal_order=(P, 0, Q, s) if s > 1 else (0, 0, 0, 0),
                      trend="c" if constant else "n")
        res = best_fit(model, w)
        names = model.param_names
        coefs, errors = [], []
        for n, v, se in zip(names, res.params, res.bse):
            if n == "sigma2":
                continue
            key = {"const": "constant"}.get(n, n)
            # statsmodels names: ar.L1, ma.L1, ar.S.L12, ma.S.L12
            key = key.replace("ar.S.L", "sar").replace("ma.S.L", "sma").replace("ar.L", "ar").replace("ma.L", "ma")
            coefs.append("%s=%.8f" % (key, v))
            errors.append("%s=%.8f" % (key, se))
        rows.append([name, series, transform, p, d, q, P, D, Q, s, int(constant), "%.6f" % res.llf,
                     ";".join(coefs), ";".join(errors)])
        print(name, "%.4f" % res.llf, ";".join(coefs))
    write_statistics()
    with open(os.path.join(HERE, "expected.csv"), "w", newline="") as f:
        out = csv.writer(f, lineterminator="\n")
        out.writerow(["case", "series", "transform", "p", "d", "q", "P", "D", "Q", "s", "constant", "loglik",
                      "coefficients", "std_errors"])
        out.writerows(rows)


if __name__ == "__main__":
    main()
