#!/usr/bin/python3
"""Reference values for regressions with ARIMA errors (presets 51 and 52, transfer functions).

Fits, with statsmodels' exact state-space likelihood, an output series on columns made of
input series (lags of them), with ARMA errors, and writes causal_expected.csv: one line per
case with the orders, the log-likelihood and the coefficients. The series are those of
series/ (written by make_reference.py from statsmodels' datasets).

As in our estimator, the differencing is applied to the output and the columns alike and the
likelihood is that of the differenced data; the constant is the mean of the differenced noise
(a regression constant, not the intercept of the ARMA recursion).

Run with Debian's python3-statsmodels:  /usr/bin/python3 make_reference_causal.py
"""
import csv
import os
import warnings

import numpy as np
from statsmodels.tsa.arima.model import ARIMA

HERE = os.path.dirname(os.path.abspath(__file__))
SERIES = os.path.join(HERE, "series")


def read_series(name):
    with open(os.path.join(SERIES, name + ".csv")) as f:
        return np.array([float(line) for line in f if line.strip()])


def transformed(name, transform):
    x = read_series(name)
    return 100.0 * np.log(x) if transform == "log100" else x


# name, output, [(input, transform, lag), ...], (p, d, q), constant
CASES = [
    # Regression with AR(1) correction: unemployment on inflation and the bill rate.
    ("unemp_on_infl_tbill_ar1", "macro_unemp", [("macro_infl", "none", 0), ("macro_tbilrate", "none", 0)], (1, 0, 0), True),
    # Regression with white noise: consumption on income (both in levels).
    ("realcons_on_realgdp_ols", "macro_realcons", [("macro_realgdp", "none", 0)], (0, 0, 0), True),
    # Transfer function: changes of unemployment on output growth now and a quarter before
    # (Okun's law), with AR(1) noise.
    ("unemp_tf_realgdp_lags01", "macro_unemp", [("macro_realgdp", "log100", 0), ("macro_realgdp", "log100", 1)], (1, 1, 0), True),
    # Transfer function with MA(1) noise: inflation on lagged bill-rate changes.
    ("infl_tf_tbill_lag1_ma1", "macro_infl", [("macro_tbilrate", "none", 1)], (0, 1, 1), False),
]


def fit(case):
    name, output, inputs, (p, d, q), constant = case
    y = read_series(output)
    lead = max(lag for _, _, lag in inputs)
    n = len(y)
    cols = []
    for series, transform, lag in inputs:
        x = transformed(series, transform)
        cols.append(x[lead - lag:n - lag])
    y = y[lead:]
    X = np.column_stack(cols)
    for _ in range(d):
        y = np.diff(y)
        X = np.diff(X, axis=0)
    if p == 0 and q == 0:
        # White noise: least squares is the maximum of the likelihood in closed form (the
        # numerical optimiser stops short of it on large-valued series).
        import statsmodels.api as sm
        A = sm.add_constant(X) if constant else X
        res = sm.OLS(y, A).fit()
        coefs = []
        for i, v in enumerate(res.params):
            if constant and i == 0:
                coefs.append("CONSTANT=%.8f" % v)
                continue
            series, _, lag = inputs[i - (1 if constant else 0)]
            coefs.append("%s LAG %d=%.8f" % (series.upper(), lag, v))
        terms = ";".join("%s:%s:%d" % (s, t, l) for s, t, l in inputs)
        return [name, output, terms, p, d, q, int(constant), "%.6f" % res.llf, ";".join(coefs)]
    best = None
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        model = ARIMA(y, exog=X, order=(p, 0, q), trend="c" if constant else "n")
        for start in (None, "ar"):
            kwargs = {}
            if start == "ar":
                params = model.start_params.copy()
                for i, pn in enumerate(model.param_names):
                    if pn.startswith("ar.") or pn.startswith("ma."):
                        params[i] = 0.3
                kwargs["start_params"] = params
            res = model.fit(**kwargs)
            if best is None or res.llf > best.llf:
                best = res
    coefs = []
    for pn, v in zip(best.model.param_names, best.params):
        if pn == "sigma2":
            continue
        if pn == "const":
            key = "CONSTANT"
        elif pn.startswith("x"):
            series, _, lag = inputs[int(pn[1:]) - 1]
            key = series.upper() + " LAG " + str(lag)
        elif pn.startswith("ar.L"):
            key = "AR(" + pn[4:] + ")"
        elif pn.startswith("ma.L"):
            key = "MA(" + pn[4:] + ")"
        else:
            raise ValueError(pn)
        coefs.append("%s=%.8f" % (key, v))
    terms = ";".join("%s:%s:%d" % (s, t, l) for s, t, l in inputs)
    return [name, output, terms, p, d, q, int(constant), "%.6f" % best.llf, ";".join(coefs)]


def main():
    rows = [fit(c) for c in CASES]
    with open(os.path.join(HERE, "causal_expected.csv"), "w", newline="\n") as f:
        w = csv.writer(f, lineterminator="\n")
        w.writerow(["case", "output", "inputs", "p", "d", "q", "constant", "loglik", "coefficients"])
        w.writerows(rows)
    for r in rows:
        print(r)


if __name__ == "__main__":
    main()
