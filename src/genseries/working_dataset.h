#pragma once
// The working dataset of one generation run: the kept series of the input file with the new
// series appended behind them, and the dependent (output) series held apart so that it is
// written last. Shared by the intervention, holiday and user-series builders.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "genseries/variables.h"
#include "platform/dates.h"

namespace tessaly::genseries {

struct GenColumn {
  std::string name;
  int16_t type = 0;
  std::vector<double> obs;     // N observations
  std::vector<double> future;  // the future block, padded to F when written
  bool has_future = false;     // written in the future block (a type 1, 2 or 3 series)
};

struct WorkingDataset {
  int seasonality = 0;
  int begin_year = 0;
  int begin_period = 0;  // as the file gives it
  int observations = 0;  // N
  int future = 0;        // F
  int retained = 0;
  int forecasts = 0;
  std::vector<GenColumn> kept;  // every series but the dependent one, new ones appended
  GenColumn dependent;

  // NewSeriesCount: the series of the new file, the dependent one included.
  int SeriesCount() const { return static_cast<int>(kept.size()) + 1; }
  int FutureCount() const;
  // When the dataset has no future values, they become the number of forecasts.
  void EnsureFutureValues() {
    if (future == 0) future = forecasts;
  }
  // Appends a zeroed series (observations and, with `has_future`, the future block).
  GenColumn& Append(const std::string& name, int16_t type, bool has_future);
  int T() const { return observations + future; }
  // The period number of observation t (0-based) for quarterly data, from the end-date walk.
  int PeriodOf(int t) const;
};

// What the builders share while they run: the dataset, the variables, and the log.
struct GenContext {
  WorkingDataset& ds;
  const GenerationVariables& vars;
  std::function<void(const std::string&)> log;  // appends one line to the generation log
  bool& import_ok;
};

// The 16-bit period number: (year - beginYear) * s + (period - beginPeriod) + 1. Overflow of
// a 16-bit value is a run-time failure (GenFailure).
int16_t PeriodIndex(int begin_year, int begin_period, int year, int period, int seasonality);

// A text read as a 16-bit integer the way the generator reads its fields; a text that is not
// a number fails (type mismatch), one out of range overflows.
int16_t FieldInt16(const std::string& text, const std::string& procedure);

// The date of each period of a calendar walk from `start`: +1 day (+3 after a Friday of a
// five-day series), +7 days for weekly data.
platform::dates::Date NextPeriodDate(const platform::dates::Date& date, int seasonality);

// AddInterventionSeries(kind): kind is "Level", "Pulse", "Seasonal" or "Trend".
void AddInterventionSeries(GenContext& ctx, const std::string& kind, bool& duplicate_found);
// AddUsersSeries: the series of the user step (one method).
void AddUsersSeries(GenContext& ctx, const std::vector<std::string>& manual_history,
                    const std::vector<std::string>& manual_future);
// AddSelectedHolidays: one 0/1 series per holiday of the variables, last selected first.
void AddSelectedHolidays(GenContext& ctx);
// The daily dataset's dependent series renamed after the date of the first observation.
void RenameDailyOutput(GenContext& ctx, const std::string& date_text);

}  // namespace tessaly::genseries
