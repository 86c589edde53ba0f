#pragma once
// A fresh program folder with the shipped ENGINE.CND, a recording message host, and a
// dataset written as an ASC file, for the rules tests.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/paths.h"
#include "rules/rules_text.h"
#include "rules/wizard.h"
#include "support/messages.h"
#include "support/program_folder.h"

namespace tessaly::rules::testing {

using tessaly::testing::ProgramFolderCopy;
using tessaly::testing::ReadFile;
using tessaly::testing::WriteFile;

// Writes an ASC file: objective 1, N series of P observations, F future values for
// inputs, F forecasts; the last series is the output.
inline DatasetShape WriteAsc(const fs::path& file, int objective1, int series, int seasonality,
                             int observations, int forecasts,
                             std::vector<int16_t> types = {}) {
  DatasetShape shape;
  shape.objectives = {static_cast<int16_t>(objective1), 0, 0};
  shape.data_prop = {0, static_cast<int16_t>(series), static_cast<int16_t>(seasonality), 2001, 1,
                     static_cast<int16_t>(observations), static_cast<int16_t>(forecasts), 0,
                     static_cast<int16_t>(forecasts)};
  if (types.empty()) types.assign(series, 1);
  types.back() = 0;
  shape.types = types;
  std::string text;
  auto line = [&](const std::string& s) { text += s + "\r\n"; };
  line(std::to_string(objective1));
  line("0");
  line("0");
  for (int i = 1; i <= 8; ++i) line(std::to_string(shape.data_prop[i]));
  for (int s = 1; s <= series; ++s) {
    std::string name = s == series ? "SALES" : "PRICE" + std::to_string(s);
    shape.names.push_back(name);
    line(name);
  }
  for (int16_t t : types) line(std::to_string(t));
  for (int s = 0; s < series; ++s)
    for (int i = 0; i < observations; ++i) line(std::to_string(100 + (i * 7 + s * 3) % 17));
  int k = 0;
  for (int16_t t : types) k += (t >= 1 && t <= 3);
  for (int i = 0; i < k * forecasts; ++i) line("5");
  WriteFile(file, text);
  return shape;
}

// A person at the wizard, played by a script.
struct ScriptUi : WizardUi {
  std::function<void(RulesWizard&)> script;
  explicit ScriptUi(std::function<void(RulesWizard&)> s) : script(std::move(s)) {}
  void Run(RulesWizard& w) override { script(w); }
};

class RulesFixture : public ::testing::Test {
 protected:
  fs::path Folder() const { return program.path(); }
  fs::path File(const std::string& name) const { return program / name; }
  bool Exists(const std::string& name) const { return fs::exists(program / name); }
  std::string Read(const std::string& name) const { return ReadFile(program / name); }
  std::string Cnd() const { return Read("ENGINE.CND"); }

  WizardContext Context(int objective1 = 0, int series = 1, int seasonality = 12,
                        int observations = 60, int forecasts = 12,
                        std::vector<int16_t> types = {}) {
    WizardContext c;
    c.app_folder = Folder();
    c.project_stem = "Retail";
    c.dataset_path = program / "SALES.ASC";
    c.dataset = WriteAsc(c.dataset_path, objective1, series, seasonality, observations, forecasts,
                         std::move(types));
    return c;
  }

  // The messages shown so far, as "TITLE|text".
  std::vector<std::string> Shown() const {
    std::vector<std::string> out;
    for (const auto& s : dialogs->shown) out.push_back(s.title + "|" + s.text);
    return out;
  }
  bool WasShown(const std::string& title, const std::string& text) const {
    for (const auto& s : dialogs->shown)
      if (s.title == title && s.text == text) return true;
    return false;
  }

  // Runs the wizard on `c` with a script in the person's place.
  WizardOutcome Run(const WizardContext& c, std::function<void(RulesWizard&)> script) {
    ScriptUi ui(std::move(script));
    return RunRulesWizard(c, ui, session);
  }
  // A rule's value as a rules file holds it.
  std::string Rule(const std::string& file, std::string_view key) const {
    RulesText r;
    r.SetText(Read(file));
    return r.GetRule(key);
  }

  ProgramFolderCopy program;
  tessaly::testing::RecordedMessages dialogs;
  RulesSession session;
};

// The present rules are the shipped defaults.
class WithShippedRules : public RulesFixture {
 protected:
  void SetUp() override { WriteFile(File("ENGINE.USR"), Cnd()); }
};

}  // namespace tessaly::rules::testing
