#include "engine/model_file.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "platform/text.h"
#include "platform/textfile.h"

namespace quorvane {

namespace {

std::string Right(const std::string& text, size_t width) {
  return text.size() >= width ? text : std::string(width - text.size(), ' ') + text;
}

std::string Int6(int v) { return Right(std::to_string(v), 6); }

// A real as the file writes it: cut to eight characters, with a decimal point. A number
// whose whole part does not fit in eight characters keeps its magnitude instead.
std::string Real12(double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.10f", v);
  std::string s = buf;
  size_t point = s.find('.');
  if (point != std::string::npos && point < 7) {
    s.resize(8);
  } else {
    std::snprintf(buf, sizeof buf, "%.1f", v);
    s = buf;
    if (s.size() > 12) {
      std::snprintf(buf, sizeof buf, "%.5e", v);
      s = buf;
    }
  }
  return Right(s, 12);
}

// Fixed-width fields of a line: nullopt when a field is not a number.
template <class T>
std::optional<std::vector<T>> Fields(const std::string& line, size_t width, size_t count) {
  std::vector<T> out;
  for (size_t i = 0; i < count; ++i) {
    if (line.size() < i * width + 1) return std::nullopt;
    std::string field = tessaly::platform::Trim(line.substr(i * width, width));
    if (field.empty()) return std::nullopt;
    char* end = nullptr;
    double v = std::strtod(field.c_str(), &end);
    if (*end != '\0') return std::nullopt;
    if constexpr (std::is_same_v<T, int>) {
      if (!(v >= -2147483648.0 && v <= 2147483647.0) || v != static_cast<int>(v)) return std::nullopt;
      out.push_back(static_cast<int>(v));
    } else {
      out.push_back(v);
    }
  }
  return out;
}

void AppendBlockLists(const ModelBlock& b, std::vector<std::string>& lines) {
  if (!b.differencing.empty()) {
    std::string line;
    for (int d : b.differencing) line += Int6(d);
    lines.push_back(line);
  }
  if (b.first.empty() && b.second.empty()) return;
  std::string counts, powers, coefficients;
  for (const auto* group : {&b.first, &b.second}) {
    for (const auto& poly : *group) {
      counts += Int6(static_cast<int>(poly.powers.size()));
      for (int p : poly.powers) powers += Int6(p);
      for (double c : poly.coefficients) coefficients += Real12(c);
    }
  }
  lines.push_back(counts);
  lines.push_back(powers);
  lines.push_back(coefficients);
}

}  // namespace

std::vector<std::string> FormatModelFile(const ModelFile& model) {
  std::vector<std::string> lines;
  for (size_t k = 0; k < model.blocks.size(); ++k) {
    const ModelBlock& b = model.blocks[k];
    if (k == 0) {
      std::string head = b.name;
      std::string count = std::to_string(model.series);
      if (head.size() + count.size() < 41) head.append(41 - head.size() - count.size(), ' ');
      lines.push_back(head + count);
      lines.push_back(Int6(b.has_constant ? 1 : 0));
      if (b.has_constant) lines.push_back(Real12(b.constant));
      lines.push_back(Real12(b.lambda) + std::string(9, ' ') + "0.0");
    } else {
      lines.push_back(b.name);
      lines.push_back(Real12(b.lambda));
    }
    lines.push_back(Int6(static_cast<int>(b.first.size())) +
                    Int6(static_cast<int>(b.differencing.size())) +
                    Int6(static_cast<int>(b.second.size())));
    AppendBlockLists(b, lines);
  }
  return lines;
}

std::optional<ModelFile> ParseModelFile(const std::vector<std::string>& lines) {
  if (lines.empty()) return std::nullopt;
  ModelFile model;
  const std::string& first = lines[0];
  if (first.size() < 41) return std::nullopt;
  auto count = Fields<int>(first.substr(37, 4), 4, 1);
  if (!count || (*count)[0] < 1 || (*count)[0] > 150) return std::nullopt;
  model.series = (*count)[0];

  // Group the lines into blocks: a line beginning with a non-blank opens a block.
  std::vector<std::vector<std::string>> raw;
  for (const auto& line : lines) {
    if (!line.empty() && line[0] != ' ') raw.emplace_back();
    if (raw.empty()) return std::nullopt;
    raw.back().push_back(line);
  }
  if (static_cast<int>(raw.size()) != model.series) return std::nullopt;

  for (size_t k = 0; k < raw.size(); ++k) {
    const auto& r = raw[k];
    ModelBlock b;
    size_t i = 1;
    auto next = [&]() -> const std::string* { return i < r.size() ? &r[i++] : nullptr; };
    if (k == 0) {
      b.name = tessaly::platform::Trim(r[0].substr(0, 37));
      const std::string* flag = next();
      auto f = flag ? Fields<int>(*flag, 6, 1) : std::nullopt;
      if (!f || ((*f)[0] != 0 && (*f)[0] != 1)) return std::nullopt;
      b.has_constant = (*f)[0] == 1;
      if (b.has_constant) {
        const std::string* c = next();
        auto v = c ? Fields<double>(*c, 12, 1) : std::nullopt;
        if (!v) return std::nullopt;
        b.constant = (*v)[0];
      }
    } else {
      b.name = tessaly::platform::Trim(r[0]);
    }
    const std::string* lambda_line = next();
    auto lambda = lambda_line ? Fields<double>(*lambda_line, 12, 1) : std::nullopt;
    if (!lambda) return std::nullopt;
    b.lambda = (*lambda)[0];
    const std::string* counts_line = next();
    auto counts = counts_line ? Fields<int>(*counts_line, 6, 3) : std::nullopt;
    if (!counts) return std::nullopt;
    int n_first = (*counts)[0], n_diff = (*counts)[1], n_second = (*counts)[2];
    if (n_first < 0 || n_diff < 0 || n_second < 0 || n_first + n_second > 20 || n_diff > 10)
      return std::nullopt;
    if (n_diff > 0) {
      const std::string* d = next();
      auto v = d ? Fields<int>(*d, 6, static_cast<size_t>(n_diff)) : std::nullopt;
      if (!v) return std::nullopt;
      b.differencing = *v;
    }
    if (n_first + n_second > 0) {
      const std::string* pc = next();
      auto per = pc ? Fields<int>(*pc, 6, static_cast<size_t>(n_first + n_second)) : std::nullopt;
      if (!per) return std::nullopt;
      size_t total = 0;
      for (int n : *per) {
        if (n < 0 || n > 50) return std::nullopt;
        total += static_cast<size_t>(n);
      }
      const std::string* pw = next();
      const std::string* cf = next();
      auto powers = pw ? Fields<int>(*pw, 6, total) : std::nullopt;
      auto coefs = cf ? Fields<double>(*cf, 12, total) : std::nullopt;
      if (!powers || !coefs) return std::nullopt;
      size_t at = 0;
      for (size_t j = 0; j < per->size(); ++j) {
        Polynomial poly;
        for (int t = 0; t < (*per)[j]; ++t, ++at) {
          poly.powers.push_back((*powers)[at]);
          poly.coefficients.push_back((*coefs)[at]);
        }
        (j < static_cast<size_t>(n_first) ? b.first : b.second).push_back(poly);
      }
    }
    if (i != r.size()) return std::nullopt;
    model.blocks.push_back(b);
  }
  return model;
}

ModelFile ModelFileFromResult(const ModelResult& r, const std::string& output_name,
                              const std::vector<std::string>& input_names,
                              bool difference_inputs) {
  ModelFile model;
  model.series = 1 + static_cast<int>(input_names.size());
  ModelBlock noise;
  noise.name = output_name;
  noise.lambda = r.lambda;
  for (int i = 0; i < r.d; ++i) noise.differencing.push_back(1);
  for (int i = 0; i < r.D; ++i) noise.differencing.push_back(r.period);
  Polynomial ar, sar, ma, sma;
  for (const auto& c : r.coefficients) {
    int seasonal_power = c.lag < r.period ? c.lag * r.period : c.lag;
    if (c.kind == "constant") {
      noise.has_constant = true;
      noise.constant = c.value;
    } else if (c.kind == "ar") {
      ar.powers.push_back(c.lag), ar.coefficients.push_back(c.value);
    } else if (c.kind == "sar") {
      sar.powers.push_back(seasonal_power), sar.coefficients.push_back(c.value);
    } else if (c.kind == "ma") {
      ma.powers.push_back(c.lag), ma.coefficients.push_back(c.value);
    } else if (c.kind == "sma") {
      sma.powers.push_back(seasonal_power), sma.coefficients.push_back(c.value);
    }
  }
  for (auto* p : {&ar, &sar}) if (!p->powers.empty()) noise.first.push_back(*p);
  for (auto* p : {&ma, &sma}) if (!p->powers.empty()) noise.second.push_back(*p);
  model.blocks.push_back(noise);

  for (const auto& name : input_names) {
    ModelBlock in;
    in.name = name;
    if (difference_inputs) in.differencing = noise.differencing;
    Polynomial numerator, denominator;
    for (const auto& c : r.coefficients) {
      if (c.kind != "input" && c.kind != "denominator") continue;
      bool mine = c.term == name || c.term.rfind(name + " ", 0) == 0;
      if (!mine) continue;
      Polynomial& poly = c.kind == "input" ? numerator : denominator;
      if (c.kind == "denominator" &&
          std::find(poly.powers.begin(), poly.powers.end(), c.lag) != poly.powers.end())
        continue;  // one denominator serves all the input's terms
      poly.powers.push_back(c.lag);
      poly.coefficients.push_back(c.value);
    }
    if (!denominator.powers.empty()) in.first.push_back(denominator);
    if (numerator.powers.empty()) {
      numerator.powers.push_back(0);
      numerator.coefficients.push_back(0.0);
    }
    in.second.push_back(numerator);
    model.blocks.push_back(in);
  }
  return model;
}

bool WriteModelFile(const std::filesystem::path& path, const ModelFile& model) {
  return tessaly::platform::WriteAllLines(path, FormatModelFile(model));
}

}  // namespace quorvane
