# Runs forecast::auto.arima and forecast::ets (default settings) over the series the accuracy
# benchmark hands over, so that all are measured on the same data in the same run.
# Input lines:  name;period;horizon;v1,v2,...   (the training part)
# Output lines: name;method;CPU milliseconds;forecasts;lower80;upper80;lower95;upper95
suppressPackageStartupMessages(library(forecast))
args <- commandArgs(trailingOnly = TRUE)
lines <- readLines(args[1])
out <- character(0)
fmt <- function(v) paste(format(as.numeric(v), digits = 15, trim = TRUE), collapse = ",")
for (line in lines) {
  f <- strsplit(line, ";", fixed = TRUE)[[1]]
  y <- ts(as.numeric(strsplit(f[4], ",", fixed = TRUE)[[1]]), frequency = as.integer(f[2]))
  h <- as.integer(f[3])
  for (method in c("auto.arima", "ets")) {
    t0 <- sum(proc.time()[c("user.self", "sys.self")])
    fc <- tryCatch(forecast(if (method == "ets") ets(y) else auto.arima(y), h = h, level = c(80, 95)),
                   error = function(e) NULL)
    ms <- (sum(proc.time()[c("user.self", "sys.self")]) - t0) * 1000
    if (is.null(fc)) next
    out <- c(out, paste(f[1], method, sprintf("%.3f", ms), fmt(fc$mean), fmt(fc$lower[, 1]), fmt(fc$upper[, 1]),
                        fmt(fc$lower[, 2]), fmt(fc$upper[, 2]), sep = ";"))
  }
}
writeLines(out, args[2])
