#!/usr/bin/python3
"""Reference values for additive Holt-Winters smoothing.

Uses the series kept in series/ (see make_reference.py) and statsmodels' ExponentialSmoothing
(additive trend, additive season) in two ways:

- holt_winters_fixed.csv: with given smoothing constants and given initial states (the mean
  of the first cycle as the level, the change of the mean from the first to the second cycle
  as the trend, the first cycle's deviations as the seasonal states), the one-step fitted
  value of every observation. One line per case and observation:
  case,series,period,alpha,beta,gamma,level0,trend0,seasonal0 (semicolon separated),t,fitted

- holt_winters_estimated.csv: with the smoothing constants estimated by statsmodels, the sum
  of squared one-step errors from its heuristic initial states (a decomposition of the first
  cycles, as ours) and, for comparison, with the initial states estimated too.
  series,period,sse_heuristic,alpha,beta,gamma,sse_estimated

Run with Debian's python3-statsmodels:  /usr/bin/python3 make_reference_holt_winters.py
"""
import os
import warnings

import numpy as np
from statsmodels.tsa.holtwinters import ExponentialSmoothing

HERE = os.path.dirname(os.path.abspath(__file__))
SERIES = os.path.join(HERE, "series")

CASES = [("airline", 12), ("co2", 12), ("elnino", 12), ("macro_realgdp", 4), ("macro_unemp", 4)]
FIXED = [(0.3, 0.1, 0.2), (0.8, 0.05, 0.5)]


def read_series(name):
    with open(os.path.join(SERIES, name + ".csv")) as f:
        return np.array([float(line) for line in f if line.strip()])


def simple_states(y, m):
    level = y[:m].mean()
    trend = (y[m:2 * m].mean() - y[:m].mean()) / m
    return level, trend, y[:m] - level


def fixed_rows():
    rows = []
    for name, m in CASES:
        y = read_series(name)
        level, trend, season = simple_states(y, m)
        for k, (a, b, g) in enumerate(FIXED):
            model = ExponentialSmoothing(y, trend="add", seasonal="add", seasonal_periods=m,
                                         initialization_method="known", initial_level=level,
                                         initial_trend=trend, initial_seasonal=season)
            fit = model.fit(smoothing_level=a, smoothing_trend=b, smoothing_seasonal=g, optimized=False)
            states = ";".join(repr(float(v)) for v in season)
            for t, v in enumerate(fit.fittedvalues):
                rows.append(f"{name}_{k},{name},{m},{a},{b},{g},{level!r},{trend!r},{states},{t},{float(v)!r}")
    return rows


def estimated_rows():
    rows = []
    for name, m in CASES:
        y = read_series(name)
        h = ExponentialSmoothing(y, trend="add", seasonal="add", seasonal_periods=m,
                                 initialization_method="heuristic").fit()
        e = ExponentialSmoothing(y, trend="add", seasonal="add", seasonal_periods=m,
                                 initialization_method="estimated").fit()
        p = h.params
        rows.append(f"{name},{m},{h.sse!r},{p['smoothing_level']!r},{p['smoothing_trend']!r},"
                    f"{p['smoothing_seasonal']!r},{e.sse!r}")
    return rows


def main():
    warnings.simplefilter("ignore")
    with open(os.path.join(HERE, "holt_winters_fixed.csv"), "w", newline="\n") as f:
        f.write("case,series,period,alpha,beta,gamma,level0,trend0,seasonal0,t,fitted\n")
        f.write("\n".join(fixed_rows()) + "\n")
    with open(os.path.join(HERE, "holt_winters_estimated.csv"), "w", newline="\n") as f:
        f.write("series,period,sse_heuristic,alpha,beta,gamma,sse_estimated\n")
        f.write("\n".join(estimated_rows()) + "\n")


if __name__ == "__main__":
    main()
