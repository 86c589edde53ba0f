#include "genseries/wizard.h"

#include <algorithm>

#include "dataset/asc_dataset.h"
#include "genseries/holidays.h"
#include "genseries/wizard_texts.h"
#include "platform/dialogs.h"
#include "platform/numfmt.h"
#include "platform/textfile.h"

namespace tessaly::genseries {

namespace dates = platform::dates;
using platform::Dialogs;

namespace {
constexpr const char* kRangeTitle = "Range Input Error";
constexpr const char* kInputTitle = "Input Error";

bool Fail(const std::string& text, const char* title) {
  Dialogs().Message(text, platform::mb::OKOnly | platform::mb::Exclamation, title);
  return false;
}

std::string Trim(const std::string& s) { return dataset::TrimBlanks(s); }

bool ValidDate(const std::string& text) { return VariableDate(text).has_value(); }
}  // namespace

std::pair<int, int> EndDate(int year, int period, int n, int s) {
  if (s <= 1) return {year + n - 1, 0};
  for (int k = 1; k < n; ++k) {
    if (++period > s) {
      period = 1;
      ++year;
    }
  }
  return {year, period};
}

dates::Date WeeklyFirstDate(int year, int period) {
  dates::Date start{year, 1, 1};
  for (int i = 1; i <= 7; ++i) {
    dates::Date d{year, 1, i};
    int wd = dates::Weekday(d);
    if (wd == 1) {
      start = d;
      break;
    }
    if (wd >= 2 && wd <= 4) {  // Monday, Tuesday, Wednesday: the Sunday before, in December
      start = {year - 1, 12, 33 - wd};
      break;
    }
  }
  return AddDays(start, 7L * (period - 1));
}

std::optional<WizardDataset> WizardDataset::FromFile(const std::filesystem::path& asc_file) {
  dataset::AscHeader header;
  if (!dataset::ReadAscHeader(asc_file, header).ok()) return std::nullopt;
  WizardDataset ds;
  ds.series = header.DataProp[1];
  ds.seasonality = header.DataProp[2];
  ds.begin_year = header.DataProp[3];
  ds.begin_period = header.DataProp[4];
  ds.observations = header.DataProp[5];
  ds.forecasts = header.DataProp[8];
  ds.future = header.DataProp[6] > 0 ? header.DataProp[6] : ds.forecasts;
  if (auto lines = platform::ReadAllLines(asc_file)) {
    for (size_t i = 0; i < 3 && i < lines->size(); ++i)
      ds.objectives[i] = platform::ValInt((*lines)[i]);
  }
  auto [y, p] = EndDate(ds.begin_year, ds.begin_period, ds.observations + ds.future, ds.seasonality);
  ds.last_year = y;
  ds.last_period = ds.seasonality <= 1 ? ds.begin_period : p;
  return ds;
}

std::vector<std::string> MethodsOffered(const WizardDataset& ds) {
  const int n = ds.observations + ds.forecasts;
  switch (ds.seasonality) {
    case 1:
      return {"Manual"};
    case 4: {
      std::vector<std::string> m = {"Manual", "Quarter"};
      if (n >= 4) m.push_back("QuarterlyEffect");
      return m;
    }
    case 5:
    case 7: {
      std::vector<std::string> m = {"Manual", "Day", "1st of each Month", "15th of each Month",
                                    "1st and 15th of each Month", "4-4-5"};
      if (n >= (ds.seasonality == 5 ? 260 : 365)) m.push_back("MonthlyEffect");
      return m;
    }
    case 12:
    case 52: {
      std::vector<std::string> m = ds.seasonality == 12
                                       ? std::vector<std::string>{"Manual", "Month", "4-4-5", "Business Days"}
                                       : std::vector<std::string>{"Manual", "Business Days"};
      if (n >= ds.seasonality) {
        m.push_back("MonthlyEffect");
        m.push_back("QuarterlyEffect");
      }
      return m;
    }
    default:
      return {};
  }
}

AddSeriesWizard::AddSeriesWizard(WizardDataset ds) : ds_(ds) {
  const std::string by = std::to_string(ds_.begin_year), bp = std::to_string(ds_.begin_period);
  const std::string ly = std::to_string(ds_.last_year), lp = std::to_string(ds_.last_period);
  level = {by, bp, ly, lp};
  trend = {by, bp, ly, lp};
  pulse = {by, bp, by, bp};
  sp = {by, bp, by, bp};
  lstHolidays1 = HolidaysOffered(ds_.seasonality);
  if (ds_.seasonality == 52) {
    holiday_date = user_date = FormatVariableDate(WeeklyFirstDate(ds_.begin_year, ds_.begin_period));
  }
}

bool AddSeriesWizard::CheckSeasonality() const {
  const int s = ds_.seasonality;
  if (s == 1 || s == 4 || s == 5 || s == 7 || s == 12 || s == 52) return true;
  Dialogs().Message(texts::SeasonalityRefusal(s), platform::mb::OKOnly | platform::mb::Information,
                    texts::kFyi);
  return false;
}

bool AddSeriesWizard::HolidayAllowed() const {
  return ds_.seasonality == 5 || ds_.seasonality == 7 || ds_.seasonality == 12;
}
bool AddSeriesWizard::SPAllowed() const { return ds_.seasonality != 1; }
bool AddSeriesWizard::UserDefAllowed() const { return ds_.seasonality != 1; }

void AddSeriesWizard::SelectHolidays(const std::vector<std::string>& marked) {
  // In the order of the Available list, whatever order they were marked in.
  std::vector<std::string> keep;
  for (const std::string& h : lstHolidays1) {
    if (std::find(marked.begin(), marked.end(), h) != marked.end()) lstHolidays2.push_back(h);
    else keep.push_back(h);
  }
  lstHolidays1 = keep;
}

void AddSeriesWizard::RemoveHolidays(const std::vector<std::string>& marked) {
  for (const std::string& h : marked) {
    auto it = std::find(lstHolidays2.begin(), lstHolidays2.end(), h);
    if (it == lstHolidays2.end()) continue;
    lstHolidays2.erase(it);
    lstHolidays1.push_back(h);
  }
}

void AddSeriesWizard::SelectAllHolidays() { SelectHolidays(std::vector<std::string>(lstHolidays1)); }

void AddSeriesWizard::ChooseMethod(const std::string& method) {
  user_method = method;
  if (method == "Business Days") user_name = "BUSDAYS";
  else if (method == "4-4-5") user_name = "4-4-5";
  else if (method == "MonthlyEffect") user_name = "MONTHLYEFFECT";
  else if (method == "QuarterlyEffect") user_name = "QUARTERLYEFFECT";
  if (NameAndTypeLocked()) user_type = 1;
}

bool AddSeriesWizard::NameAndTypeLocked() const {
  return user_method == "Business Days" || user_method == "4-4-5" || user_method == "MonthlyEffect" ||
         user_method == "QuarterlyEffect";
}

bool AddSeriesWizard::UserDateNeeded() const {
  const int s = ds_.seasonality;
  return (s == 5 || s == 7 || s == 52) && user_method != "Manual";
}

bool AddSeriesWizard::HolidayDateNeeded() const {
  return ds_.seasonality == 5 || ds_.seasonality == 7 || ds_.seasonality == 52;
}

int AddSeriesWizard::NewSeriesCount() const {
  int count = chkAddLevel + chkAddPulse + chkAddSP + chkAddTrend;
  if (chkAddHoliday) count += static_cast<int>(lstHolidays2.size());
  if (chkAddUserDef)
    count += user_method == "MonthlyEffect" ? 11 : user_method == "QuarterlyEffect" ? 3 : 1;
  return count;
}

bool AddSeriesWizard::CheckSeriesLimit() const {
  const int count = NewSeriesCount(), excess = ds_.series + count - dataset::MaxSeries;
  if (excess <= 0) return true;
  return Fail(texts::TooManySeries(count, excess), texts::kProcessErrorTitle);
}

bool AddSeriesWizard::CheckInterventionField(const InterventionFields& f, int i) const {
  const int s = ds_.seasonality;
  const std::string t = Trim(f[i]);
  if (t.empty()) return true;  // told at Next, with the other empty fields
  if (!platform::IsNumeric(t)) return Fail(texts::kCompleteEachSection, kInputTitle);
  const int value = platform::ValInt(t);
  auto year_of = [&](int k) {
    const std::string y = Trim(f[k]);
    return platform::IsNumeric(y) ? platform::ValInt(y) : -1;
  };
  auto N = [](int x) { return std::to_string(x); };
  const bool start = i < 2;
  if (i == 0 || i == 2) {
    if ((s == 1 || s == 4 || s == 12) && t.size() < 4) return Fail(texts::YearShort(t), kRangeTitle);
    if (value < ds_.begin_year)
      return Fail((start ? texts::kStartYearLow : texts::kEndYearLow) + N(ds_.begin_year), kRangeTitle);
    if (value > ds_.last_year)
      return Fail((start ? texts::kStartYearHigh : texts::kEndYearHigh) + N(ds_.last_year), kRangeTitle);
    return true;
  }
  if (value > std::max(s, 1))
    return Fail((start ? texts::kStartPeriodHigh : texts::kEndPeriodHigh) + N(s), kRangeTitle);
  if (start && year_of(0) == ds_.begin_year && value < ds_.begin_period)
    return Fail(texts::kStartPeriodLow + N(ds_.begin_period), kRangeTitle);
  if (!start && year_of(2) == ds_.last_year && value > ds_.last_period)
    return Fail(texts::kEndPeriodHighLast + N(ds_.last_period), kRangeTitle);
  return true;
}

bool AddSeriesWizard::CheckIntervention(const InterventionFields& f) const {
  for (int i = 0; i < 4; ++i) {
    const std::string t = Trim(f[i]);
    if (t.empty() || !platform::IsNumeric(t)) return Fail(texts::kCompleteEachSection, kInputTitle);
  }
  for (int i = 0; i < 4; ++i)
    if (!CheckInterventionField(f, i)) return false;
  return true;
}

bool AddSeriesWizard::CheckUserStep() const {
  const std::string name = Trim(user_name);
  if (name.empty()) return Fail(texts::kNeedName, kInputTitle);
  if (name.size() > 20) return Fail(texts::kNameTooLong, kInputTitle);
  if (user_type < 0 || user_type > 3) return Fail(texts::kNeedType, kInputTitle);
  if (Trim(user_method).empty()) return Fail(texts::kNeedMethod, kInputTitle);
  if (UserDateNeeded() && !ValidDate(user_date))
    return Fail(texts::kNeedDate, texts::kForYourInformation);
  return true;
}

std::vector<WizardStep> AddSeriesWizard::Path() const {
  std::vector<WizardStep> path = {WizardStep::Options};
  if (chkAddLevel) path.push_back(WizardStep::Level);
  if (chkAddPulse) path.push_back(WizardStep::Pulse);
  if (chkAddSP && SPAllowed()) path.push_back(WizardStep::SP);
  if (chkAddTrend) path.push_back(WizardStep::Trend);
  if (chkAddHoliday && HolidayAllowed()) path.push_back(WizardStep::Holidays);
  if (chkAddUserDef && UserDefAllowed()) path.push_back(WizardStep::UserDef);
  path.push_back(WizardStep::Finished);
  return path;
}

bool AddSeriesWizard::Next() {
  switch (step_) {
    case WizardStep::Options:
      if (!(chkAddLevel || chkAddPulse || (chkAddSP && SPAllowed()) || chkAddTrend ||
            (chkAddHoliday && HolidayAllowed()) || (chkAddUserDef && UserDefAllowed())))
        return Fail(texts::kSelectASeries, texts::kProcessErrorTitle);
      break;
    case WizardStep::Level: if (!CheckIntervention(level)) return false; break;
    case WizardStep::Pulse: if (!CheckIntervention(pulse)) return false; break;
    case WizardStep::SP: if (!CheckIntervention(sp)) return false; break;
    case WizardStep::Trend: if (!CheckIntervention(trend)) return false; break;
    case WizardStep::Holidays:
      if (lstHolidays2.empty()) return Fail(texts::kCompleteEachSection, kInputTitle);
      if (HolidayDateNeeded() && !ValidDate(holiday_date))
        return Fail(texts::kNeedDate, texts::kForYourInformation);
      break;
    case WizardStep::UserDef:
      if (!CheckUserStep()) return false;
      break;
    case WizardStep::Finished:
      return false;
  }
  std::vector<WizardStep> path = Path();
  auto it = std::find(path.begin(), path.end(), step_);
  WizardStep next = (it == path.end() || it + 1 == path.end()) ? WizardStep::Finished : *(it + 1);
  if (next == WizardStep::Finished && !CheckSeriesLimit()) return false;
  step_ = next;
  return true;
}

void AddSeriesWizard::Back() {
  std::vector<WizardStep> path = Path();
  auto it = std::find(path.begin(), path.end(), step_);
  if (it != path.end() && it != path.begin()) step_ = *(it - 1);
  else step_ = WizardStep::Options;
}

std::string AddSeriesWizard::Instruction() const {
  switch (step_) {
    case WizardStep::Options: return texts::kWizardIntro;
    case WizardStep::Level: return texts::kLevelInstruction;
    case WizardStep::Pulse: return texts::kPulseInstruction;
    case WizardStep::SP: return texts::kSPInstruction;
    case WizardStep::Trend: return texts::kTrendInstruction;
    case WizardStep::Holidays: return texts::kHolidayNote;
    case WizardStep::UserDef: return texts::kUserInstruction;
    default: return {};
  }
}

GenerationVariables AddSeriesWizard::Variables() const {
  GenerationVariables v;
  v.FirstObjective = std::to_string(ds_.objectives[0]);
  v.SecondObjective = std::to_string(ds_.objectives[1]);
  v.ThirdObjective = std::to_string(ds_.objectives[2]);
  v.NumberOfNewSeries = std::to_string(NewSeriesCount());
  v.BPSeaonality = std::to_string(ds_.seasonality);
  v.MajorPeriod = std::to_string(ds_.begin_year);
  v.MinorPeriod = std::to_string(ds_.begin_period);
  auto put = [](bool on, const InterventionFields& f, std::string& sy, std::string& sp_,
                std::string& ey, std::string& ep) {
    if (!on) return;
    sy = Trim(f[0]), sp_ = Trim(f[1]), ey = Trim(f[2]), ep = Trim(f[3]);
  };
  put(chkAddLevel, level, v.LevelStartYear, v.LevelStartPeriod, v.LevelEndYear, v.LevelEndPeriod);
  put(chkAddPulse, pulse, v.PulseStartYear, v.PulseStartPeriod, v.PulseEndYear, v.PulseEndPeriod);
  put(chkAddSP && SPAllowed(), sp, v.SPStartYear, v.SPStartPeriod, v.SPEndYear, v.SPEndPeriod);
  put(chkAddTrend, trend, v.TrendStartYear, v.TrendStartPeriod, v.TrendEndYear, v.TrendEndPeriod);
  if (chkAddHoliday && HolidayAllowed()) {
    for (size_t i = 0; i < lstHolidays2.size(); ++i) v.SelectedHolidays[static_cast<int>(i) + 1] = Trim(lstHolidays2[i]);
    v.NumberofHolidaysSelected = std::to_string(lstHolidays2.size());
    if (HolidayDateNeeded() && ValidDate(holiday_date)) v.Dateof1stHolidayObservation = Trim(holiday_date);
  }
  if (chkAddUserDef && UserDefAllowed()) {
    v.UserDefName = Trim(user_name);
    v.UserDefType = std::to_string(std::max(user_type, 0));
    v.UserDefMethod = user_method;
    if (UserDateNeeded() && ValidDate(user_date)) v.DateOfFirstObservation = Trim(user_date);
    v.SelectedDay = std::to_string(selected_day);
    v.SelectedMonth = std::to_string(selected_month);
    v.SelectedQuarter = std::to_string(selected_quarter);
  }
  return v;
}

std::vector<std::string> AddSeriesWizard::PeriodLabels(bool future) const {
  const int s = ds_.seasonality;
  int year = ds_.begin_year, period = s <= 1 ? 0 : ds_.begin_period;
  auto step = [&] {
    if (s <= 1) {
      ++year;
    } else if (++period > s) {
      period = 1;
      ++year;
    }
  };
  if (future)
    for (int t = 0; t < ds_.observations; ++t) step();
  std::vector<std::string> labels;
  const int count = future ? ds_.future : ds_.observations;
  for (int t = 0; t < count; ++t, step())
    labels.push_back(std::to_string(year) + "/" + std::to_string(period));
  return labels;
}

bool CheckManualData(const std::vector<std::string>& values) {
  bool any = std::any_of(values.begin(), values.end(), [](const std::string& v) { return !Trim(v).empty(); });
  if (!any) return Fail(texts::kEnterYourData, texts::kForYourInformation);
  return true;
}

}  // namespace tessaly::genseries
