#include "Measure.h"

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>

extern char** environ;

namespace kavrin::bench {

double Microseconds(Clock::duration d) {
  return std::chrono::duration<double, std::micro>(d).count();
}

double ThreadCpuMicroseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

long PeakResidentKb() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const size_t n = values.size();
  if (n == 0) return 0;
  return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

std::string Fixed(double value, int decimals) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string Pad(const std::string& text, size_t width, bool left) {
  // Widths count characters; the summary holds ASCII only.
  if (text.size() >= width) return text;
  const std::string fill(width - text.size(), ' ');
  return left ? text + fill : fill + text;
}

std::string Machine() {
  std::string model;
  std::ifstream cpuinfo("/proc/cpuinfo");
  std::string line;
  while (std::getline(cpuinfo, line)) {
    if (line.rfind("model name", 0) == 0) {
      model = line.substr(line.find(':') + 2);
      break;
    }
  }
  return model + ", " + std::to_string(sysconf(_SC_NPROCESSORS_ONLN)) + " cpus";
}

int RunChild(const std::vector<std::string>& args, long* max_rss_kb) {
  std::vector<char*> argv;
  std::vector<std::string> copy = args;
  for (auto& arg : copy)
    argv.push_back(arg.data());
  argv.push_back(nullptr);
  pid_t pid = 0;
  const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
  if (posix_spawn(&pid, self.c_str(), nullptr, nullptr, argv.data(), environ) != 0) {
    throw std::runtime_error("cannot start " + self);
  }
  int status = 0;
  rusage usage{};
  wait4(pid, &status, 0, &usage);
  if (max_rss_kb) *max_rss_kb = usage.ru_maxrss;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

}  // namespace kavrin::bench
