# Writes the development set of real series into data_dev/ (same layout as data/: "# period=<p>"
# then one value per line): public series shipped with R and the tseries, urca and lmtest
# packages, none of them in data/. Rules are decided on these (and on --calibration), then
# confirmed on data/, which is never tuned on. The list was fixed before any of them was run.
# Run once; the files are kept in the repository.   Rscript export_dev_series.R
suppressMessages({
  library(forecast)
  library(tseries)
  library(urca)
  library(lmtest)
})
here <- dirname(sub("--file=", "", grep("--file=", commandArgs(FALSE), value = TRUE)))
out <- file.path(here, "data_dev")
dir.create(out, showWarnings = FALSE)
put <- function(name, x, period, last = NA) {
  x <- as.numeric(x)
  while (length(x) && is.na(x[1])) x <- x[-1]
  if (!is.na(last) && length(x) > last) x <- tail(x, last)
  if (any(is.na(x))) x <- as.numeric(na.interp(ts(x, frequency = period)))
  lines <- c(sprintf("# period=%d", as.integer(period)), format(x, digits = 15, trim = TRUE))
  writeLines(lines, file.path(out, paste0(name, ".csv")))
}
from <- function(name, package) {
  e <- new.env()
  data(list = name, package = package, envir = e)
  get(name, e)
}

nelplo <- from("NelPlo", "tseries")
for (col in colnames(nelplo)) put(paste0("d_nelplo_", gsub("[^a-z]", "", tolower(col))), nelplo[, col], 1)
useco <- from("USeconomic", "tseries")
put("d_useco_m1", useco[, "log(M1)"], 4)
put("d_useco_gnp", useco[, "log(GNP)"], 4)
put("d_useco_rs", useco[, "rs"], 4)
put("d_useco_rl", useco[, "rl"], 4)
data(list = "nino", package = "tseries")
put("d_nino3", nino3, 12, 240)
put("d_nino34", nino3.4, 12, 240)
data(list = "tcm", package = "tseries")
put("d_tcm1y", tcm1y, 12, 240)
put("d_tcm10y", tcm10y, 12, 240)
put("d_bev", from("bev", "tseries"), 1, 150)
ukcons <- from("UKconsumption", "urca")
put("d_ukcons_cons", ukcons[, "cons"], 4)
put("d_ukcons_inc", ukcons[, "inc"], 4)
for (name in c("fyff", "gmdc", "ip", "jocci", "lhur", "pw561")) put(paste0("d_", name), from(name, "lmtest")[, "y"], 12, 240)
put("d_valueofstocks", from("valueofstocks", "lmtest")[, "VST"], 4)
put("d_bondyield", from("bondyield", "lmtest")[, "RAARUS"], 4)
chickegg <- from("ChickEgg", "lmtest")
put("d_chicken", chickegg[, "chicken"], 1)
put("d_egg", chickegg[, "egg"], 1)
put("d_unemployment", from("unemployment", "lmtest")[, "UN"], 1)
put("d_moneydemand", from("moneydemand", "lmtest")[, "logM"], 1)
put("d_bjsales_lead", BJsales.lead, 1)
put("d_lh", lh, 1)
put("d_presidents", presidents, 4)
put("d_uspop", uspop, 1)
put("d_freeny", freeny.y, 4)
for (col in c("SMI", "CAC", "FTSE")) put(paste0("d_", tolower(col), "_sampled"), EuStockMarkets[seq(1, 1860, by = 65), col], 1)
