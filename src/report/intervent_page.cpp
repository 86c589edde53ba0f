#include "report/intervent_page.h"

#include <cmath>

#include "platform/dates.h"
#include "platform/numfmt.h"
#include "platform/textfile.h"
#include "report/graph_plan.h"
#include "report/report_texts.h"

namespace tessaly::report {

namespace {

constexpr size_t kPageWidth = 79;
constexpr int kMaxInterventions = 745 / 5;

int16_t Element(const std::vector<int16_t>& values, int k) {
  return k >= 1 && k <= static_cast<int>(values.size()) ? values[k - 1] : 0;
}

double Element(const std::vector<double>& values, int k) {
  return k >= 1 && k <= static_cast<int>(values.size()) ? values[k - 1] : 0.0;
}

std::string Centred(const std::string& text) {
  const size_t pad = text.size() < kPageWidth ? (kPageWidth - text.size()) / 2 : 0;
  return std::string(pad, ' ') + text;
}

std::string TypeLabel(double type) {
  const double whole = std::round(type);
  if (whole == type && whole >= 1 && whole <= 5)
    return texts::kInterventionTypes[static_cast<size_t>(whole) - 1];
  return platform::NumberToText(type);
}

}  // namespace

int ShownObservation(double engine_observation, const InterventionInput& input) {
  const int left_out = Element(input.integers20, 1);
  const int used = input.returned_observations - left_out;
  const int value = static_cast<int>(std::lround(engine_observation));
  return input.data_observations <= used ? value : value + input.data_observations - used;
}

bool write_intervent_htm(const std::filesystem::path& page, const InterventionInput& input) {
  const int count = Element(input.integers20, 4);
  if (count <= 0) return false;

  const std::string stem = [&] {
    std::string name = page.filename().string();
    const std::string tail = "INTRVENT.HTM";
    return name.size() >= tail.size() ? name.substr(0, name.size() - tail.size()) : name;
  }();
  platform::TextWriter out(page);
  if (!out.IsOpen()) return false;
  out.Line("<html>");
  out.Line("<body>");
  out.Line("<pre>");
  out.Line(Centred("Tessaly Batch Forecasting"));
  out.Line(Centred("Interventions Found by the Model"));
  out.Line(Centred("Dataset: " + stem));
  out.Line("");
  out.Line(platform::RightJustify("Time=" + platform::dates::FormatTime(platform::dates::Now()), kPageWidth));
  out.Line(platform::RightJustify("Date=" + TodayText(), kPageWidth));
  out.Line("<br>");
  const int shown = std::min(count, kMaxInterventions);
  for (int i = 0; i < shown; ++i) {
    const int base = i * 5;
    out.Line("Pattern" + std::string(25, ' ') + TypeLabel(Element(input.doubles745, base + 1)));
    out.Line("Point Intervention Occurred" + std::string(5, ' ') +
             std::to_string(ShownObservation(Element(input.doubles745, base + 2), input)));
    out.Line("Major Period" + std::string(20, ' ') +
             platform::NumberToText(Element(input.doubles745, base + 3)));
    out.Line("Minor Period" + std::string(20, ' ') +
             platform::NumberToText(Element(input.doubles745, base + 4)));
    out.Line("Impact Value" + std::string(20, ' ') +
             platform::NumberToText(Element(input.doubles745, base + 5)));
    out.Line("");
  }
  // The closing tags of body and html are written without their slash, so that pages
  // stay byte for byte as earlier versions wrote them; browsers show the page alike.
  out.Line("</pre>");
  out.Line("<body>");
  out.Line("<html>");
  return out.Close();
}

bool write_intervent_htm(const std::filesystem::path& output_path, const std::string& stem,
                         const InterventionInput& input) {
  return write_intervent_htm(output_path / (stem + "INTRVENT.HTM"), input);
}

}  // namespace tessaly::report
