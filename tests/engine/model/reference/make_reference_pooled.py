#!/usr/bin/python3
"""Reference values for pooled cross-sections.

A series of series/ is cut into equal groups; each group is (logged and) differenced on
its own, and statsmodels' exact state-space likelihood of each group is summed:

- kind "at": the sum of the groups' log-likelihoods at fixed parameters (mean, AR, MA,
  seasonal AR and MA, innovation variance), the same for every group;
- kind "mle": the maximum over common parameters of that sum, found with scipy from
  statsmodels' fit of the whole series, and the parameters at the maximum.

pooled_expected.csv holds one line per case and kind: name, series, transform, groups,
p, q, P, Q, s, d, D, constant, kind, log-likelihood, and the parameters separated by
semicolons in the order mean (with a constant), ar, ma, sar, sma, sigma2.

Run with Debian's python3-statsmodels:  /usr/bin/python3 make_reference_pooled.py
"""
import csv
import os
import warnings

import numpy as np
from scipy.optimize import minimize
from statsmodels.tsa.arima.model import ARIMA

HERE = os.path.dirname(os.path.abspath(__file__))


def read_series(name):
    with open(os.path.join(HERE, "series", name + ".csv")) as f:
        return np.array([float(line) for line in f if line.strip()])


def groups_of(y, count, transform, d, D, s):
    size = len(y) // count
    out = []
    for g in range(count):
        seg = y[g * size:(g + 1) * size]
        if transform == "log":
            seg = np.log(seg)
        for _ in range(D):
            seg = seg[s:] - seg[:-s]
        for _ in range(d):
            seg = seg[1:] - seg[:-1]
        out.append(seg)
    return out


def model_of(w, p, q, P, Q, s, constant):
    return ARIMA(w, order=(p, 0, q), seasonal_order=(P, 0, Q, s) if (P or Q) else (0, 0, 0, 0),
                 trend="c" if constant else "n", enforce_stationarity=True, enforce_invertibility=True)


def pooled_loglik(groups, params, p, q, P, Q, s, constant):
    # The stationary (exact) start of each group's filter, as our likelihood has it;
    # parameters outside the stationary and invertible region have no likelihood here.
    try:
        return sum(model_of(w, p, q, P, Q, s, constant).loglike(np.asarray(params), transformed=True)
                   for w in groups)
    except (ValueError, np.linalg.LinAlgError):
        return -np.inf


# name, series, transform, groups, (p, q, P, Q, s), d, D, constant, fixed parameters
CASES = [
    ("sunspots_ar2_g3", "sunspots", "none", 3, (2, 0, 0, 0, 1), 0, 0, True, [49.0, 1.3, -0.6, 260.0]),
    ("nile_ar1_g4", "nile", "none", 4, (1, 0, 0, 0, 1), 0, 0, True, [900.0, 0.4, 22000.0]),
    ("nile_ima11_g2", "nile", "none", 2, (0, 1, 0, 0, 1), 1, 0, False, [-0.6, 20000.0]),
    ("infl_arma11_g7", "macro_infl", "none", 7, (1, 1, 0, 0, 1), 0, 0, True, [4.0, 0.8, -0.4, 7.0]),
    ("airline_log_g2", "airline", "log", 2, (0, 1, 0, 1, 12), 1, 1, False, [-0.4, -0.6, 0.0014]),
    ("airline_log_sar_g3", "airline", "log", 3, (1, 0, 1, 0, 12), 1, 1, False, [-0.5, -0.4, 0.0013]),
]


def main():
    warnings.simplefilter("ignore")
    rows = []
    for name, series, transform, count, (p, q, P, Q, s), d, D, constant, fixed in CASES:
        groups = groups_of(read_series(series), count, transform, d, D, s)
        head = [name, series, transform, count, p, q, P, Q, s, d, D, int(constant)]
        at = pooled_loglik(groups, fixed, p, q, P, Q, s, constant)
        rows.append(head + ["at", repr(float(at)), ";".join(repr(float(v)) for v in fixed)])

        start = model_of(np.concatenate(groups), p, q, P, Q, s, constant).fit().params
        k = len(start)

        def negative(x):
            params = np.array(x[:-1].tolist() + [np.exp(x[-1])])
            value = pooled_loglik(groups, params, p, q, P, Q, s, constant)
            return -value if np.isfinite(value) else 1e100

        x0 = np.array(list(start[:k - 1]) + [np.log(start[k - 1])])
        best = minimize(negative, x0, method="Nelder-Mead",
                        options={"xatol": 1e-9, "fatol": 1e-10, "maxiter": 40000, "maxfev": 40000})
        best = minimize(negative, best.x, method="BFGS", options={"gtol": 1e-8})
        params = list(best.x[:-1]) + [float(np.exp(best.x[-1]))]
        rows.append(head + ["mle", repr(float(-best.fun)), ";".join(repr(float(v)) for v in params)])

    with open(os.path.join(HERE, "pooled_expected.csv"), "w", newline="\n") as f:
        out = csv.writer(f, lineterminator="\n")
        out.writerow(["name", "series", "transform", "groups", "p", "q", "P", "Q", "s", "d", "D", "constant",
                      "kind", "loglik", "params"])
        out.writerows(rows)


if __name__ == "__main__":
    main()
