#include "batch/engine/engine_call.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "batch/engine/engine_client.h"
#include "engine_test_support.h"
#include "platform/paths.h"

namespace tessaly::batch {
namespace {

using test::FakeEngineFolder;
using test::RunFlagsReset;
using test::ScriptedWait;
using tessaly::testing::ReadFile;
using tessaly::testing::WriteFile;

// A monthly univariate dataset: SALES, 48 observations from January 2019, 12 forecasts.
quorvane::EngineArrays MonthlySales() {
  quorvane::EngineArrays a;
  a.objective_values = {0, 0, 1};
  a.property_values = {1, 12, 2019, 1, 48, 0, 0, 12};
  a.series_names[0] = "SALES";
  a.series_types[0] = 0;
  for (int t = 0; t < 48; ++t) {
    a.series_data[t] = 200 + 3.5 * t + 20 * std::sin(2 * M_PI * (t % 12) / 12.0);
  }
  return a;
}

struct CallFixture : ::testing::Test {
  RunFlagsReset flags;
  ScriptedWait wait;
  EngineCallHooks hooks;
  quorvane::EngineArrays arrays = MonthlySales();
  EngineReturn returned;
  int ftable_checks = 0;

  EngineCallResult Call(FakeEngineFolder& folder) {
    hooks.kill_engines = folder.Killer();
    hooks.ensure_ftable_links = [this] { ++ftable_checks; };
    return CallEngine(arrays, returned, folder.path(), flags.Context(2, 5, "SALES"), wait, hooks);
  }
};

TEST_F(CallFixture, ReturnedArraysTakeTheirPlacesInTheContractsOrder) {
  FakeEngineFolder folder("answer");
  std::vector<std::string> operations;
  hooks.observer = [&](std::string_view op) { operations.emplace_back(op); };
  const quorvane::EngineArrays sent = arrays;

  EngineCallResult r = Call(folder);

  EXPECT_EQ(r.outcome, EngineCallOutcome::Done);
  EXPECT_EQ(r.error_code, 0);
  EXPECT_EQ(r.failure_reason, "");
  const std::vector<std::string> expected = {
      "SetRunMode", "SetObjectiveValues", "SetPropertyValues", "SetSeriesNames",
      "SetSeriesTypes", "SetSeriesData", "SetFutureData", "SetRetainedData", "SetWorkFolder",
      "SetIntegers20", "SetStrings2250", "SetStrings400", "SetForecastValues",
      "SetDoubles10000C", "SetDoubles10000B", "SetDoubles10000A", "SetDoubles745",
      "SetDoubles20", "SetArrayInput", "Start",
      "GetPropertyValues", "GetSeriesData", "GetIntegers20", "GetForecastValues",
      "GetStrings2250", "GetDoubles10000C", "GetDoubles10000B", "GetDoubles10000A",
      "GetDoubles745", "GetStrings400", "GetDoubles20", "GetSeriesNames", "GetFutureData",
      "GetRetainedData", "ErrorCode"};
  EXPECT_EQ(operations, expected);
  EXPECT_EQ(ftable_checks, 1);
  EXPECT_EQ(wait.events_let_run, 1);

  // ReturnedDataProp and the returned series data come back beside the caller's arrays,
  // which stay as they were.
  EXPECT_EQ(arrays.property_values, sent.property_values);
  EXPECT_EQ(arrays.series_data, sent.series_data);
  ASSERT_EQ(returned.returned_data_prop.size(), 8u);
  EXPECT_EQ(returned.returned_data_prop[0], 1);
  EXPECT_EQ(returned.returned_data_prop[1], 0);
  EXPECT_EQ(returned.returned_data_prop[7], 12);
  ASSERT_EQ(returned.returned_series_data.size(), size_t(quorvane::kSeriesData));
  EXPECT_DOUBLE_EQ(returned.returned_series_data[47], 2 * sent.series_data[47]);

  // The others replace the caller's arrays, whole and at full bound.
  ASSERT_EQ(arrays.forecast_values.size(), size_t(quorvane::kForecastValues));
  const std::pair<double, double> values[] = {
      {arrays.forecast_values[0], 100},    {arrays.forecast_values[11], 111}, {arrays.forecast_values[600], 90},
      {arrays.forecast_values[1211], 121}, {arrays.forecast_values[12], 0},   {arrays.doubles10000b[10], 0.25},
      {arrays.doubles10000a[10], sent.series_data[10] - 0.25},                {arrays.doubles10000c[0], 7},
      {arrays.integers20[3], 2},           {arrays.doubles745[9], 10},        {arrays.doubles20[8], 123.5},
      {arrays.future_data[0], 42},         {arrays.retained_data[0], 1}};
  for (size_t i = 0; i < std::size(values); ++i) EXPECT_DOUBLE_EQ(values[i].first, values[i].second) << i;
  EXPECT_EQ(arrays.strings400[0] + arrays.strings2250[1] + arrays.series_names[0], "S400S2250RET_SALES");

  // The engine ran in the program's folder; the exchange files are gone; the object dropped.
  EXPECT_EQ(ReadFile(folder / "FAKECALL.TXT"), fs::canonical(folder.path()).string() + "\n0\n");
  EXPECT_FALSE(fs::exists(folder / quorvane::kRequestFile));
  EXPECT_FALSE(fs::exists(folder / quorvane::kResponseFile));
  EXPECT_EQ(flags.session.engine, nullptr);
  EXPECT_TRUE(flags.session.finished);
  EXPECT_FALSE(flags.session.canceled);
  EXPECT_TRUE(flags.dialogs->shown.empty());
  EXPECT_FALSE(folder.EngineLeft());
}

TEST_F(CallFixture, ControlFilesAreRestoredWhateverTheEngineDidToThem) {
  FakeEngineFolder folder("answer");
  WriteFile(folder / "ENGINE.GO", "rules of this run\r\n");
  WriteFile(folder / "STARTMOD.123", "starting model\r\n");
  (void)Call(folder);
  EXPECT_EQ(ReadFile(folder / "ENGINE.GO"), "rules of this run\r\n");
  EXPECT_EQ(ReadFile(folder / "STARTMOD.123"), "starting model\r\n");
  EXPECT_FALSE(fs::exists(folder / "ENGINE.RWF"));
  EXPECT_FALSE(fs::exists(folder / "STARTMOD.RWF"));

  // Without a starting model none appears; the engine's change of ENGINE.GO is undone.
  fs::remove(folder / "STARTMOD.123");
  (void)Call(folder);
  EXPECT_FALSE(fs::exists(folder / "STARTMOD.123"));
  EXPECT_EQ(ReadFile(folder / "ENGINE.GO"), "rules of this run\r\n");
}

TEST_F(CallFixture, EngineCodesPassThroughAsTheyCome) {
  FakeEngineFolder folder("answer 2190");
  EngineCallResult r = Call(folder);
  EXPECT_EQ(r.outcome, EngineCallOutcome::Done);
  EXPECT_EQ(r.error_code, 2190);
  EXPECT_EQ(arrays.error_code, 2190);
  folder.SetMode("answer -3");
  EXPECT_EQ(Call(folder).error_code, -3);
}

// A crash, a kill or a bad answer is one failed dataset with the engine-failure code: the
// control files come back, the getters give back what was set, nothing is shown.
TEST_F(CallFixture, CrashWithoutAnswerIsOneFailedDataset) {
  struct Case {
    std::string mode;
    std::string reason_part;
  };
  for (const Case& c : {Case{"exitcode 3", "exit code 3 without an answer. It said: fake qvxengine: giving up"}, Case{"segv", "signal 11"},
                        Case{"garbage", "exit code 0"}}) {
    SCOPED_TRACE(c.mode);
    FakeEngineFolder folder(c.mode);
    WriteFile(folder / "ENGINE.GO", "rules\r\n");
    arrays = MonthlySales();
    EngineCallResult r = Call(folder);
    EXPECT_EQ(r.outcome, EngineCallOutcome::Done);
    EXPECT_EQ(r.error_code, kEngineFailedCode);
    EXPECT_GT(r.error_code, 0);
    EXPECT_NE(r.failure_reason.find(c.reason_part), std::string::npos) << r.failure_reason;
    EXPECT_EQ(returned.returned_data_prop[0], 1);
    EXPECT_EQ(arrays.series_names[0], "SALES");
    EXPECT_EQ(ReadFile(folder / "ENGINE.GO"), "rules\r\n");
    EXPECT_TRUE(fs::exists(folder / quorvane::kRequestFile));
    EXPECT_TRUE(platform::FilesEndingNoCase(folder.path(), ".123").empty());
    EXPECT_TRUE(flags.dialogs->shown.empty());
    EXPECT_FALSE(folder.EngineLeft());
  }
}

TEST_F(CallFixture, MissingEngineFailsTheDatasetWithoutHanging) {
  FakeEngineFolder folder("answer");
  fs::remove(folder / "qvxengine");
  EngineCallResult r = Call(folder);
  EXPECT_EQ(r.error_code, kEngineFailedCode);
  EXPECT_NE(r.failure_reason.find("could not be started"), std::string::npos);
  EXPECT_TRUE(flags.session.finished);
}

TEST_F(CallFixture, StaleAnswerIsNeverTakenForANewOne) {
  FakeEngineFolder folder("answer 2190");
  (void)Call(folder);
  // Leave a valid answer behind, then let the engine crash.
  quorvane::EngineArrays stale = MonthlySales();
  stale.error_code = 0;
  ASSERT_TRUE(quorvane::WriteExchangeFile(folder / quorvane::kResponseFile,
                                          quorvane::ExchangeKind::Response, stale));
  folder.SetMode("exitcode 2");
  EXPECT_EQ(Call(folder).error_code, kEngineFailedCode);
}

// The engine that honours KILLQUOR.QVX stops at its next stage with code 21.
TEST_F(CallFixture, CancelHonouredByTheEngineEndsWithCode21) {
  FakeEngineFolder folder("stages 150");
  hooks.cancel_grace = std::chrono::seconds(20);
  wait.cancel_when = [](const platform::WaitedWork& w, auto) {
    return w.StageText() == " Model Identification ";
  };
  EngineCallResult r = Call(folder);
  EXPECT_EQ(r.outcome, EngineCallOutcome::Canceled);
  EXPECT_EQ(r.error_code, quorvane::kUserTerminated);
  EXPECT_TRUE(flags.session.canceled);
  EXPECT_EQ(ReadFile(folder / "KILLSEEN.TXT"), " Outahere\r\n");
  EXPECT_LT(wait.waited, std::chrono::seconds(10));
  ASSERT_EQ(flags.dialogs->shown.size(), 1u);
  EXPECT_EQ(flags.dialogs->shown[0].text, "Operation Canceled by user");
  EXPECT_EQ(flags.dialogs->shown[0].title, "Tessaly RunEngine Call");
  EXPECT_FALSE(folder.EngineLeft());
  EXPECT_FALSE(fs::exists(folder / "STAGE2.123"));
  EXPECT_EQ(flags.session.engine, nullptr);
  // A cancelled call reads nothing back.
  EXPECT_EQ(arrays.series_names[0], "SALES");
  EXPECT_TRUE(returned.returned_data_prop.empty());
}

// An engine that never looks for KILLQUOR.QVX is killed after the grace period: the wait
// ends, no engine is left, and the next call is not stopped by a stale request.
TEST_F(CallFixture, CancelOfAHungEngineKillsItAfterTheGracePeriod) {
  FakeEngineFolder folder("hang");
  WriteFile(folder / "ENGINE.GO", "rules\r\n");
  hooks.cancel_grace = std::chrono::milliseconds(300);
  wait.cancel_when = [](const platform::WaitedWork&, std::chrono::milliseconds elapsed) {
    return elapsed >= std::chrono::milliseconds(200);
  };
  EngineCallResult r = Call(folder);
  EXPECT_EQ(r.outcome, EngineCallOutcome::Canceled);
  EXPECT_EQ(r.error_code, kEngineFailedCode);
  EXPECT_GE(wait.waited, std::chrono::milliseconds(500));
  EXPECT_LT(wait.waited, std::chrono::seconds(10));
  EXPECT_FALSE(folder.EngineLeft());
  EXPECT_FALSE(fs::exists(folder / "KILLQUOR.QVX"));
  EXPECT_FALSE(fs::exists(folder / "STAGE2.123"));
  EXPECT_EQ(ReadFile(folder / "ENGINE.GO"), "rules\r\n");
  ASSERT_EQ(flags.dialogs->shown.size(), 1u);
  EXPECT_EQ(flags.dialogs->shown[0].text, "Operation Canceled by user");

  flags.session.canceled = false;
  wait.cancel_when = nullptr;
  folder.SetMode("answer");
  r = Call(folder);
  EXPECT_EQ(r.outcome, EngineCallOutcome::Done);
  EXPECT_EQ(r.error_code, 0);
}

TEST_F(CallFixture, CancelAfterEngineReadyStillEndsAsCancelled) {
  FakeEngineFolder folder("answer");
  wait.cancel_after_finish = true;
  EngineCallResult r = Call(folder);
  EXPECT_EQ(r.outcome, EngineCallOutcome::Canceled);
  EXPECT_TRUE(flags.session.canceled);
  EXPECT_FALSE(folder.EngineLeft());
  ASSERT_EQ(flags.dialogs->shown.size(), 1u);
  EXPECT_EQ(flags.dialogs->shown[0].title, "Tessaly RunEngine Call");
}

TEST_F(CallFixture, StagesAreSeenInOrderAndTheirFilesGoAtTheEnd) {
  FakeEngineFolder folder("stages 250");
  EngineCallResult r = Call(folder);
  EXPECT_EQ(r.error_code, 0);
  std::vector<std::string> named;
  for (const auto& s : wait.stages_seen) {
    if (s != "Processing ") named.push_back(s);
  }
  EXPECT_EQ(named, (std::vector<std::string>{" Data Preparation ", " Model Identification ",
                                             " Model Estimation ", " Model Diagnosis "}));
  EXPECT_EQ(wait.stages_seen.back(), "Processing ");
  EXPECT_TRUE(platform::FilesEndingNoCase(folder.path(), ".123").empty());
}

TEST(EngineClientTest, SettersCopyAtTheBoundAndGettersReplace) {
  test::FakeEngineFolder folder("answer");
  EngineClient client(folder.path());
  std::vector<int16_t> three = {4, 5, 6};
  client.SetIntegers20(three);
  three[0] = 99;  // the engine holds its own copy
  std::vector<int16_t> back(3, -1);
  client.GetIntegers20(back);
  ASSERT_EQ(back.size(), 20u);
  EXPECT_EQ(back[0], 4);
  EXPECT_EQ(back[2], 6);
  EXPECT_EQ(back[3], 0);

  std::vector<double> too_long(quorvane::kDoubles745 + 5, 1.5);
  client.SetDoubles745(too_long);
  std::vector<double> d;
  client.GetDoubles745(d);
  EXPECT_EQ(d.size(), size_t(quorvane::kDoubles745));
}

TEST(EngineClientTest, EngineReadyIsRaisedOnceOnThePollingThread) {
  test::FakeEngineFolder folder("answer");
  EngineClient client(folder.path());
  client.SetWorkFolder(folder.path().string());
  std::vector<int16_t> prop = {1, 12, 2019, 1, 48, 0, 0, 12};
  client.SetPropertyValues(prop);
  int raised = 0;
  client.SetEngineReadyHandler([&] { ++raised; });
  EXPECT_FALSE(client.Poll());  // not started
  client.Start();
  EXPECT_TRUE(client.Running());
  while (!client.Poll()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  client.Poll();
  EXPECT_EQ(raised, 1);
  EXPECT_FALSE(client.Running());
  EXPECT_EQ(client.ErrorCode(), 0);
}

TEST(CreateObjectTest, ProvesTheEngineCanBeStarted) {
  test::FakeEngineFolder folder("answer");
  std::vector<std::string> log;
  auto logger = [&](const std::string& line) { log.push_back(line); };
  std::shared_ptr<EngineClient> engine;
  CreateObjectError error;

  EXPECT_TRUE(fCreateObject("QVXEngine.clQVXEngine", engine, folder.path(), logger, &error));
  EXPECT_NE(engine, nullptr);
  ASSERT_EQ(log.size(), 2u);
  EXPECT_NE(log[0].find("QVXEngine.clQVXEngine"), std::string::npos);
  EXPECT_NE(log[1].find("QVXEngine.clQVXEngine"), std::string::npos);

  engine.reset();
  EXPECT_FALSE(fCreateObject("Other.Thing", engine, folder.path(), {}, &error));
  EXPECT_EQ(error.number, 429);
  EXPECT_EQ(engine, nullptr);

  ::chmod((folder / "qvxengine").c_str(), 0644);
  EXPECT_FALSE(fCreateObject("QVXEngine.clQVXEngine", engine, folder.path(), {}, &error));
  EXPECT_NE(error.description.find("qvxengine"), std::string::npos);
  fs::remove(folder / "qvxengine");
  EXPECT_FALSE(fCreateObject("QVXEngine.clQVXEngine", engine, folder.path(), {}, &error));
}

}  // namespace
}  // namespace tessaly::batch
