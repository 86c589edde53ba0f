// Throughput of a whole project run as a user starts it: `tsly run PROJECT.xml` on N synthetic
// monthly series plus the sample's real monthly series, with --jobs 1 and --jobs 2, with and
// without the nine graphs per series. Figures: the wall time of the run and per series, and
// apart from it the engine's share: the time each engine process took from its start to its
// end (summed over the engines, so with two jobs it can pass the wall time) and its CPU time,
// and the CPU time of everything else (the tsly processes: reading, filing, graphs, merge).
//
// The engine is timed from outside: this program, copied into the program folder as
// qvxengine, starts the real engine (qvxengine.real), waits for it and appends its figures to
// the file named by TESSALY_BENCH_ENGINE_LOG. That costs one extra process start per series.
//
// Usage: bench_scale_out [series=1000] [all|nographs|graphs] [jobs=1,2]
//        bench_scale_out SERIES make FOLDER   leaves the program folder and the project in FOLDER
//        (FOLDER/program, FOLDER/data/scale.xml) for a profiler, and runs nothing.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "batch/batch_file.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr const char* kLogVariable = "TESSALY_BENCH_ENGINE_LOG";

double Seconds(const timeval& t) { return t.tv_sec + 1e-6 * t.tv_usec; }

// Run as qvxengine: the real engine, timed.
int TimedEngine(char** argv) {
  fs::path self = fs::read_symlink("/proc/self/exe");
  fs::path real = self.parent_path() / "qvxengine.real";
  auto start = Clock::now();
  pid_t pid = fork();
  if (pid == 0) {
    argv[0] = const_cast<char*>(real.c_str());
    execv(real.c_str(), argv);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  wait4(pid, &status, 0, &usage);
  double wall = std::chrono::duration<double>(Clock::now() - start).count();
  if (const char* log = std::getenv(kLogVariable)) {
    char line[128];
    int n = std::snprintf(line, sizeof line, "%.6f %.6f\n", wall, Seconds(usage.ru_utime) + Seconds(usage.ru_stime));
    int fd = open(log, O_WRONLY | O_APPEND | O_CREAT, 0644);
    if (fd >= 0) {
      (void)!write(fd, line, n);  // one short write: lines of engines at once never mix
      close(fd);
    }
  }
  if (WIFSIGNALED(status)) raise(WTERMSIG(status));
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

// A monthly series of its own: level, trend, seasonal swing, noise, now and then a pulse.
void WriteSeries(const fs::path& file, int k) {
  std::ofstream out(file, std::ios::binary);
  const int n = 120;
  out << "0\r\n0\r\n0\r\n1\r\n12\r\n2010\r\n1\r\n" << n << "\r\n0\r\n0\r\n12\r\nM" << k << "\r\n0\r\n";
  unsigned seed = 4242u + 7919u * static_cast<unsigned>(k);
  for (int t = 0; t < n; ++t) {
    seed = seed * 1103515245u + 12345u;
    double noise = ((seed >> 16) % 1000) / 1000.0 - 0.5;
    double v = 500 + (k % 50) * 10 + (k % 7) * 0.9 * t + (20 + k % 13) * std::sin(2 * M_PI * (t % 12) / 12.0) +
               8 * noise;
    if (k % 5 == 0 && t == 70) v += 90;
    out << v << "\r\n";
  }
}

struct Figures {
  double wall = 0, engine_wall = 0, engine_cpu = 0, other_cpu = 0;
  int engines = 0, forecasts = 0;
};

// The project of `series` synthetic series and the sample's two, as root/data/scale.xml.
void MakeProject(const fs::path& root, const fs::path& program, int series) {
  const fs::path data = root / "data";
  fs::remove_all(data);
  fs::create_directories(data);
  tessaly::batch::cBatchFile project(program);
  project.SetInDirectory(data.string());
  project.SetOutDirectory(data.string());
  project.SetBatchName("scale.xml");
  // The sample's real monthly series first: they set the run's seasonality.
  for (const char* real : {"AIRLINE.ASC", "ELNINO.ASC"}) {
    fs::copy_file(program / "examples" / real, data / real);
    project.Add_File(real, 0, 0, "00/00/00");
  }
  for (int k = 1; k <= series; ++k) {
    std::string name = "M" + std::to_string(k) + ".ASC";
    WriteSeries(data / name, k);
    project.Add_File(name, 0, 0, "00/00/00");
  }
  project.Build(data / "scale.xml");
}

Figures RunOnce(const fs::path& root, const fs::path& program, int series, int jobs, bool graphs) {
  MakeProject(root, program, series);
  const fs::path data = root / "data";
  const fs::path log = root / "engines.log";
  fs::remove(log);

  std::string command = "cd '" + root.string() + "' && QT_QPA_PLATFORM=offscreen " + kLogVariable + "='" +
                        log.string() + "' '" + (program / "tsly").string() + "' run data/scale.xml --jobs " +
                        std::to_string(jobs) + (graphs ? "" : " --no-graphs") + " >/dev/null 2>" +
                        (root / "run.err").string();
  fs::remove(program / "Process Errors.Err");
  rusage before{}, after{};
  getrusage(RUSAGE_CHILDREN, &before);
  auto start = Clock::now();
  int status = std::system(command.c_str());
  Figures f;
  f.wall = std::chrono::duration<double>(Clock::now() - start).count();
  getrusage(RUSAGE_CHILDREN, &after);
  double all_cpu = Seconds(after.ru_utime) - Seconds(before.ru_utime) + Seconds(after.ru_stime) -
                   Seconds(before.ru_stime);
  std::ifstream in(log);
  for (double wall, cpu; in >> wall >> cpu; ++f.engines) {
    f.engine_wall += wall;
    f.engine_cpu += cpu;
  }
  f.other_cpu = all_cpu - f.engine_cpu;
  for (auto& e : fs::directory_iterator(data / "OUTPUT"))
    if (e.path().extension() == ".PRO" && e.path().filename().string().rfind("CON", 0) != 0) ++f.forecasts;
  if (status != 0) std::printf("(tsly ended with status %d; see %s)\n", status, (root / "run.err").c_str());
  // Why a dataset gave no forecast: the run's log, as the merge (or the run) left it.
  std::ifstream errors(program / "Process Errors.Err");
  for (std::string line; std::getline(errors, line);) std::printf("  log: %s\n", line.c_str());
  return f;
}

void Print(int jobs, bool graphs, int files, const Figures& f) {
  std::printf("--jobs %d %-12s files %d, forecasts %d | wall %.1f s = %.1f ms per series | engines: %d calls, "
              "%.1f ms wall and %.1f ms CPU per series | everything else: %.1f ms CPU per series\n",
              jobs, graphs ? "with graphs" : "no graphs", files, f.forecasts, f.wall, 1000 * f.wall / files, f.engines,
              1000 * f.engine_wall / files, 1000 * f.engine_cpu / files, 1000 * f.other_cpu / files);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  if (fs::path(argv[0]).filename() == "qvxengine") return TimedEngine(argv);
  int series = argc > 1 ? std::atoi(argv[1]) : 1000;
  std::string which = argc > 2 ? argv[2] : "all";
  std::vector<int> job_counts;
  std::stringstream jobs_text(argc > 3 ? argv[3] : "1,2");
  for (std::string j; std::getline(jobs_text, j, ',');) job_counts.push_back(std::atoi(j.c_str()));
  char templ[] = "/tmp/tessaly-scale-bench-XXXXXX";
  const bool make_only = which == "make" && argc > 3;
  if (!make_only && !mkdtemp(templ)) return 1;
  fs::path root = make_only ? fs::absolute(argv[3]) : fs::path(templ);
  fs::path program = root / "program";
  fs::create_directories(root);
  fs::copy(TESSALY_PROGRAM_DIR, program, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  if (make_only) {
    MakeProject(root, program, series);
    std::printf("%s/data/scale.xml: %d series; run it with %s/tsly run\n", root.c_str(), series + 2, program.c_str());
    return 0;
  }
  fs::rename(program / "qvxengine", program / "qvxengine.real");
  fs::copy_file(fs::read_symlink("/proc/self/exe"), program / "qvxengine");
  std::printf("%d synthetic monthly series and 2 of the sample's; %ld processors online\n", series,
              sysconf(_SC_NPROCESSORS_ONLN));
  const int files = series + 2;
  for (bool graphs : {false, true}) {
    if ((which == "nographs" && graphs) || (which == "graphs" && !graphs)) continue;
    for (int jobs : job_counts) Print(jobs, graphs, files, RunOnce(root, program, series, jobs, graphs));
  }
  fs::remove_all(root);
  return 0;
}
