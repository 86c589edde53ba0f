#pragma once
// The header record of a dataset: the figures of an ASC file's lines 4 to 11 and what the
// system notes about them. The run keeps one with the shape of its first file; the
// generated-series merger and the ASC writers take one as their input.
#include <cstdint>
#include <string>
#include <vector>

namespace tessaly::dataset {

class clSeriesProperties {
 public:
  int16_t NumberOfSeries() const { return number_of_series_; }
  void SetNumberOfSeries(int16_t v) { number_of_series_ = v; }
  int16_t Seasonality() const { return seasonality_; }
  void SetSeasonality(int16_t v) { seasonality_ = v; }
  const std::string& BeginningYear() const { return beginning_year_; }
  void SetBeginningYear(std::string v) { beginning_year_ = std::move(v); }
  int16_t BeginningPeriod() const { return beginning_period_; }
  void SetBeginningPeriod(int16_t v) { beginning_period_ = v; }
  int16_t NumberOfLinesAdjustedValuesReturned() const { return lines_adjusted_returned_; }
  void SetNumberOfLinesAdjustedValuesReturned(int16_t v) { lines_adjusted_returned_ = v; }
  int16_t NumberOfObservations() const { return number_of_observations_; }
  void SetNumberOfObservations(int16_t v) { number_of_observations_ = v; }
  int16_t NumberOfFurtureValues() const { return number_of_future_values_; }
  void SetNumberOfFurtureValues(int16_t v) { number_of_future_values_ = v; }
  int16_t NumberOfRetainedValues() const { return number_of_retained_values_; }
  void SetNumberOfRetainedValues(int16_t v) { number_of_retained_values_ = v; }
  int16_t NumberOfForecasts() const { return number_of_forecasts_; }
  void SetNumberOfForecasts(int16_t v) { number_of_forecasts_ = v; }
  int16_t NumberOfForecastsReturned() const { return forecasts_returned_; }
  void SetNumberOfForecastsReturned(int16_t v) { forecasts_returned_ = v; }
  int16_t NumberOfModelLinesReturned() const { return model_lines_returned_; }
  void SetNumberOfModelLinesReturned(int16_t v) { model_lines_returned_ = v; }
  long NumberOfFinalequationLinesReturned() const { return final_equation_lines_returned_; }
  void SetNumberOfFinalequationLinesReturned(long v) { final_equation_lines_returned_ = v; }
  long NumberOfXintervLinesReturned() const { return xinterv_lines_returned_; }
  void SetNumberOfXintervLinesReturned(long v) { xinterv_lines_returned_ = v; }
  const std::string& SeriesSource() const { return series_source_; }
  void SetSeriesSource(std::string v) { series_source_ = std::move(v); }
  bool Dirty() const { return dirty_; }
  void SetDirty(bool v) { dirty_ = v; }
  bool LargeEngine() const { return large_engine_; }
  void SetLargeEngine(bool v) { large_engine_ = v; }
  bool Causal() const { return causal_; }
  void SetCausal(bool v) { causal_ = v; }
  // 1-based numbers of the series that carry future values.
  const std::vector<int16_t>& QualfiedSeries() const { return qualified_series_; }
  void SetQualfiedSeries(std::vector<int16_t> v) { qualified_series_ = std::move(v); }

  // Sets LargeEngine: false when NumberOfSeries + 5 + Seasonality is below 31, and
  // NumberOfObservations is below 1001, and the seasonality is not 5, 7 or 52 (calendar
  // seasonalities always need the large engine); otherwise true.
  void DecideLargeEngine();

 private:
  int16_t number_of_series_ = 0;
  int16_t seasonality_ = 0;
  std::string beginning_year_;
  int16_t beginning_period_ = 0;
  int16_t lines_adjusted_returned_ = 0;
  int16_t number_of_observations_ = 0;
  int16_t number_of_future_values_ = 0;
  int16_t number_of_retained_values_ = 0;
  int16_t number_of_forecasts_ = 0;
  int16_t forecasts_returned_ = 0;
  int16_t model_lines_returned_ = 0;
  long final_equation_lines_returned_ = 0;
  long xinterv_lines_returned_ = 0;
  std::string series_source_;
  bool dirty_ = false;
  bool large_engine_ = false;
  bool causal_ = false;
  std::vector<int16_t> qualified_series_;
};

}  // namespace tessaly::dataset
