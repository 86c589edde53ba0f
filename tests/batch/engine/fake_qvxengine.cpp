// A stand-in for the qvxengine process, for the engine client's tests. It is copied into a
// temporary program folder under the name "qvxengine"; the first line of FAKEMODE.TXT in its
// working folder says how it behaves:
//   answer [code]    read the request, disturb the control files, write a known response
//   exitcode N       end with status N and no response
//   segv             die by SIGSEGV in stage 1, with no response
//   hang             stay in stage 2 for ever, never looking for KILLQUOR.QVX
//   stages MS        keep STAGE1.123 to STAGE4.123 for MS milliseconds each, looking for
//                    KILLQUOR.QVX between stages; on it, stop with code 21
//   garbage          write a response file that is not one
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "engine/exchange.h"

namespace fs = std::filesystem;
using namespace quorvane;

namespace {

std::string ReadText(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

void WriteText(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// The known answer: each returned array is a simple function of the request, so a test can
// tell returned from sent and check every array's place.
EngineArrays Answer(const EngineArrays& in, int16_t code) {
  EngineArrays out = in;
  int series = in.property_values[0];
  int forecasts = in.property_values[7];
  out.property_values[0] = static_cast<int16_t>(series);
  out.property_values[7] = static_cast<int16_t>(forecasts);
  out.property_values[1] = 0;  // ReturnedDataProp differs from DataProp here
  for (int i = 0; i < series; ++i) out.series_names[i] = "RET_" + in.series_names[i];
  for (size_t i = 0; i < in.series_data.size(); ++i) out.series_data[i] = in.series_data[i] * 2;
  for (int k = 0; k < forecasts; ++k) {
    out.forecast_values[k] = 100 + k;
    out.forecast_values[600 + k] = 90 + k;
    out.forecast_values[1200 + k] = 110 + k;
  }
  for (int i = 0; i < 10000; ++i) {
    out.doubles10000a[i] = in.series_data[i] - 0.25;  // fitted
    out.doubles10000b[i] = 0.25;                       // residuals
  }
  out.doubles10000c[0] = 7;
  out.integers20[0] = 5;
  out.integers20[3] = 2;
  for (int i = 0; i < 10; ++i) out.doubles745[i] = i + 1;
  out.strings400[0] = "S400";
  out.strings2250[1] = "S2250";
  out.doubles20[8] = 123.5;
  out.doubles20[10] = 4;
  out.future_data[0] = 42;
  out.retained_data[0] = in.retained_data[0] + 1;
  out.error_code = code;
  return out;
}

bool StopRequested() {
  if (!fs::exists("KILLQUOR.QVX")) return false;
  WriteText("KILLSEEN.TXT", ReadText("KILLQUOR.QVX"));
  fs::remove("KILLQUOR.QVX");
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  struct rlimit no_core = {0, 0};
  setrlimit(RLIMIT_CORE, &no_core);

  std::string mode_line = ReadText("FAKEMODE.TXT");
  std::istringstream mode_in(mode_line);
  std::string mode;
  long value = 0;
  mode_in >> mode >> value;
  WriteText("FAKECALL.TXT", fs::current_path().string() + "\n" + std::to_string(argc - 1) + "\n");

  if (mode == "exitcode") {
    std::fprintf(stderr, "fake qvxengine: giving up\n\n");
    return static_cast<int>(value);
  }
  if (mode == "segv") {
    WriteText("STAGE1.123", "");
    raise(SIGSEGV);
    return 0;
  }
  if (mode == "hang") {
    WriteText("STAGE2.123", "");
    for (;;) pause();
  }
  if (mode == "garbage") {
    WriteText(kResponseFile, "not a response");
    return 0;
  }

  auto request = ReadExchangeFile(kRequestFile, ExchangeKind::Request);
  if (!request) return 4;

  if (mode == "stages") {
    for (int stage = 1; stage <= 4; ++stage) {
      std::string name = "STAGE" + std::to_string(stage) + ".123";
      WriteText(name, "");
      if (stage > 1) fs::remove("STAGE" + std::to_string(stage - 1) + ".123");
      std::this_thread::sleep_for(std::chrono::milliseconds(value));
      if (StopRequested()) {
        fs::remove(name);
        EngineArrays stopped = *request;
        stopped.error_code = kUserTerminated;
        return WriteExchangeFile(kResponseFile, ExchangeKind::Response, stopped) ? 0 : 5;
      }
    }
    fs::remove("STAGE4.123");
    return WriteExchangeFile(kResponseFile, ExchangeKind::Response, Answer(*request, 0)) ? 0 : 5;
  }

  // answer: the engine may consume or change its control files.
  WriteText("ENGINE.GO", "consumed by the engine\r\n");
  fs::remove("STARTMOD.123");
  return WriteExchangeFile(kResponseFile, ExchangeKind::Response,
                           Answer(*request, static_cast<int16_t>(value)))
             ? 0
             : 5;
}
