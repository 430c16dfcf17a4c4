// The benchmarks of the Java API on virtual readers: frame polling, then image callbacks, in one JVM.
// Usage: quorin_bench [--frames N]
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "bench_support.h"

namespace {

void PrintUsage(std::FILE* out, const char* program) {
  std::fprintf(out,
               "usage: %s [--frames N]\n"
               "  times N frames for every scenario instead of each one's default\n",
               program);
}

// --frames N: N frames for every scenario instead of each one's default; 0 when not given.
int FramesOption(int argc, char** argv) {
  if (argc == 1) return 0;
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
    PrintUsage(stdout, argv[0]);
    std::exit(0);
  }
  if (argc == 3 && std::strcmp(argv[1], "--frames") == 0) {
    char* end = nullptr;
    const long frames = std::strtol(argv[2], &end, 10);
    if (*end == '\0' && frames > 0 && frames <= 100000000) return static_cast<int>(frames);
  }
  PrintUsage(stderr, argv[0]);
  std::exit(2);
}

}  // namespace

int main(int argc, char** argv) {
  const int frames = FramesOption(argc, argv);
  try {
    bench::Jvm jvm;
    bench::RunPollBench(jvm.Env(), frames);
    std::printf("\n");
    bench::RunCallbackBench(jvm.Env(), frames);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quorin_bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
