// qvxengine: the engine process. Started by the front-end's engine client in its working
// folder, it reads QVXREQUEST.BIN, runs, writes its files and QVXRESPONSE.BIN, and exits
// with status 0. With --asc FILE [--out DIR] it runs one ASC file directly under the rules
// and control files of the current folder and prints a short summary.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>

#include "dataset/asc_dataset.h"
#include "dataset/process_errors.h"
#include "dataset/validation.h"
#include "engine/exchange.h"
#include "engine/quorvane.h"
#include "engine/rules_reader.h"

namespace fs = std::filesystem;

namespace {

// A request that cannot be read is answered with this code, so that the client records
// a failed dataset rather than waiting for an answer that never comes.
constexpr int16_t kUnreadableRequest = 2128;

int RunExchange() {
  const fs::path here = fs::current_path();
  auto request = quorvane::ReadExchangeFile(here / quorvane::kRequestFile,
                                            quorvane::ExchangeKind::Request);
  if (!request) {
    std::fprintf(stderr, "qvxengine: %s is missing or cannot be read\n", quorvane::kRequestFile);
    request.emplace();
    request->error_code = kUnreadableRequest;
    request->strings2250[0] = " ERROR OPENING FILES: " + std::string(quorvane::kRequestFile) +
                              " is missing or cannot be read.";
  } else {
    fs::path folder = here;
    std::error_code ec;
    if (!request->work_folder.empty() && fs::is_directory(request->work_folder, ec))
      folder = request->work_folder;
    quorvane::RunEngineRequest(*request, folder);
  }
  if (!quorvane::WriteExchangeFile(here / quorvane::kResponseFile,
                                   quorvane::ExchangeKind::Response, *request)) {
    std::fprintf(stderr, "qvxengine: cannot write %s\n", quorvane::kResponseFile);
    return 1;
  }
  return 0;
}

void Usage() {
  std::fprintf(stderr,
               "usage: qvxengine                      run QVXREQUEST.BIN of the current folder\n"
               "       qvxengine --asc FILE [--out DIR]  run one ASC file under the rules of the\n"
               "                                      current folder, files to DIR (default: here)\n");
}

int RunAsc(const fs::path& asc, const fs::path& out) {
  namespace ds = tessaly::dataset;
  std::error_code ec;
  fs::create_directories(out, ec);
  // The run's own checks, in the run's order: the line count against the header, the
  // ranges, names and types, then the values. The file's own seasonality and kind stand
  // for the run's. Their reasons go to standard error, not to a log of the folder.
  auto dataset = std::make_unique<ds::AscDataset>();
  const fs::path log_folder = fs::temp_directory_path(ec);
  const ds::ProcessErrorsLog log(log_folder, "qvxengine-" + std::to_string(::getpid()) + ".err");
  ds::AscHeader header;
  ds::ReadAscHeader(asc, header);
  ds::RunCheckContext context{header.DataProp[2],
                              header.DataProp[1] == 1 ? ds::RunKind::Univariate : ds::RunKind::Causal, ""};
  const std::string name = asc.filename().string();
  bool accepted = ds::CheckAscBeforeReading(asc, name, context, log) == ds::CheckOutcome::Accepted &&
                  ds::ReadAndCheckAscFile(asc, name, *dataset, log) == ds::CheckOutcome::Accepted;
  auto reasons = log.Text();
  fs::remove(log.Path(), ec);
  if (!accepted) {
    std::fprintf(stderr, "qvxengine: %s was refused by the checks of a run:\n%s", asc.c_str(),
                 reasons ? reasons->c_str() : "");
    return 2;
  }
  quorvane::EngineArrays arrays;
  arrays.work_folder = fs::current_path().string();
  arrays.objective_values = dataset->Objectives.Storage();
  arrays.property_values = dataset->DataProp.Storage();
  arrays.series_names = dataset->DataNames.Storage();
  arrays.series_types = dataset->DataTypes.Storage();
  arrays.series_data = dataset->DataValues.Storage();
  arrays.future_data = dataset->FutureValues.Storage();
  arrays.retained_data = dataset->RetainedValues.Storage();

  auto start = std::chrono::steady_clock::now();
  quorvane::RunSummary s = quorvane::RunEngineRequest(arrays, fs::current_path(), out);
  double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();

  std::printf("dataset   %s\n", asc.filename().c_str());
  std::printf("series    %s\n", s.series.c_str());
  if (s.error_code > 0) {
    std::printf("result    error %d\n", s.error_code);
  } else {
    std::printf("model     %s\n", s.model.c_str());
    std::printf("forecasts %d", s.forecasts);
    for (int h = 0; h < s.forecasts && h < 3; ++h) std::printf("%s%.6g", h ? ", " : ": ", arrays.forecast_values[h]);
    std::printf("%s\n", s.forecasts > 3 ? ", ..." : "");
    std::printf("files     %s\n", out.c_str());
  }
  for (const auto& m : s.messages) std::printf("note      %s\n", m.c_str());
  std::printf("time      %.1f ms\n", ms);
  return s.error_code > 0 ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc == 1) return RunExchange();
    std::string asc, out;
    for (int i = 1; i < argc; ++i) {
      std::string a = argv[i];
      if (a == "--asc" && i + 1 < argc) asc = argv[++i];
      else if (a == "--out" && i + 1 < argc) out = argv[++i];
      else {
        Usage();
        return 2;
      }
    }
    if (asc.empty()) {
      Usage();
      return 2;
    }
    return RunAsc(asc, out.empty() ? fs::current_path() : fs::path(out));
  } catch (const std::exception& e) {
    std::fprintf(stderr, "qvxengine: %s\n", e.what());
    return 1;
  } catch (...) {
    std::fprintf(stderr, "qvxengine: unexpected fault\n");
    return 1;
  }
}
