# Runs forecast::auto.arima (default settings) over the series the accuracy benchmark
# hands over, so that both are measured on the same data in the same run.
# Input lines:  name;period;horizon;v1,v2,...   (the training part)
# Output lines: name;CPU milliseconds;forecasts;lower95;upper95   (values comma-separated)
suppressPackageStartupMessages(library(forecast))
args <- commandArgs(trailingOnly = TRUE)
lines <- readLines(args[1])
out <- character(0)
for (line in lines) {
  f <- strsplit(line, ";", fixed = TRUE)[[1]]
  y <- ts(as.numeric(strsplit(f[4], ",", fixed = TRUE)[[1]]), frequency = as.integer(f[2]))
  h <- as.integer(f[3])
  t0 <- sum(proc.time()[c("user.self", "sys.self")])
  fc <- tryCatch(forecast(auto.arima(y), h = h, level = 95), error = function(e) NULL)
  ms <- (sum(proc.time()[c("user.self", "sys.self")]) - t0) * 1000
  if (is.null(fc)) next
  fmt <- function(v) paste(format(as.numeric(v), digits = 15, trim = TRUE), collapse = ",")
  out <- c(out, paste(f[1], sprintf("%.3f", ms), fmt(fc$mean), fmt(fc$lower[, 1]), fmt(fc$upper[, 1]), sep = ";"))
}
writeLines(out, args[2])
