#include "genseries/gen_fixture.h"

#include "platform/numfmt.h"
#include "platform/textfile.h"

namespace tessaly::genseries::test {

void WriteAsc(const fs::path& path, const AscLayout& s) {
  std::vector<std::string> lines;
  for (int o : s.objectives) lines.push_back(std::to_string(o));
  for (int v : {static_cast<int>(s.names.size()), s.seasonality, s.year, s.period, s.observations,
                s.future, s.retained, s.forecasts})
    lines.push_back(std::to_string(v));
  for (const auto& n : s.names) lines.push_back(n);
  for (int t : s.types) lines.push_back(std::to_string(t));
  for (size_t i = 0; i < s.names.size(); ++i)
    for (int t = 0; t < s.observations; ++t)
      lines.push_back(platform::NumberToText((i + 1) * 1000.0 + t + 0.5));
  for (size_t i = 0; i < s.names.size(); ++i)
    if (s.types[i] >= 1 && s.types[i] <= 3)
      for (int t = 0; t < s.future; ++t) lines.push_back(platform::NumberToText(-((i + 1) * 1000.0) - t));
  for (size_t i = 0; i < s.names.size(); ++i)
    for (int t = 0; t < s.retained; ++t) lines.push_back("7");
  ASSERT_TRUE(platform::WriteAllLines(path, lines));
}

AscRead ReadAsc(const fs::path& path) {
  AscRead r;
  auto lines = platform::ReadAllLines(path);
  EXPECT_TRUE(lines.has_value()) << path;
  if (!lines) return r;
  r.lines = static_cast<long>(lines->size());
  size_t at = 0;
  auto next = [&]() -> std::string { return at < lines->size() ? (*lines)[at++] : std::string(); };
  auto num = [&] { return static_cast<int>(platform::Val(next())); };
  for (int i = 0; i < 3; ++i) r.objectives.push_back(num());
  r.series = num(), r.seasonality = num(), r.year = num(), r.period = num();
  r.observations = num(), r.future = num(), r.retained = num(), r.forecasts = num();
  for (int i = 0; i < r.series; ++i) r.names.push_back(next());
  for (int i = 0; i < r.series; ++i) r.types.push_back(num());
  for (int i = 0; i < r.series; ++i)
    for (int t = 0; t < r.observations; ++t) r.obs[r.names[i]].push_back(platform::Val(next()));
  for (int i = 0; i < r.series; ++i)
    if (r.types[i] >= 1 && r.types[i] <= 3)
      for (int t = 0; t < r.future; ++t) r.fut[r.names[i]].push_back(platform::Val(next()));
  EXPECT_EQ(at + static_cast<size_t>(r.series) * r.retained, lines->size())
      << "the file's size does not agree with its header: " << path;
  return r;
}

GenerationResult GenTest::Generate(const GenerationVariables& vars, const fs::path& asc,
                                   const ManualData& manual) {
  fs::path program = dir / "program";
  fs::create_directories(program);
  fs::path his = dir / kVariablesFileName;
  EXPECT_TRUE(BuildXML(his, vars, dir.path().string(), dir.path().string(), program));
  return GenerateSeries(his, asc, std::nullopt, manual, program);
}

GenerationVariables GenTest::VarsFor(const AscLayout& layout) {
  GenerationVariables v;
  v.BPSeaonality = std::to_string(layout.seasonality);
  v.MajorPeriod = std::to_string(layout.year);
  v.MinorPeriod = std::to_string(layout.period);
  return v;
}

}  // namespace tessaly::genseries::test
