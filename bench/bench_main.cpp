// The benchmarks of the Java API on virtual readers: frame polling, then image callbacks, in one JVM,
// each beside JNA and the floor. Usage: quorin_bench [--frames N] [--figures FILE]
//                                       quorin_bench --table DEFAULT_FIGURES CACHED_FIGURES
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "bench_figures.h"
#include "bench_support.h"

namespace {

void PrintUsage(std::FILE* out, const char* program) {
  std::fprintf(out,
               "usage: %s [--frames N] [--figures FILE]\n"
               "       %s --table DEFAULT_FIGURES CACHED_FIGURES\n"
               "  --frames N      times N frames for every scenario instead of each one's default\n"
               "  --figures FILE  also writes the figures of the bridge, JNA and the floor to FILE\n"
               "  --table         prints the table of two runs' figures, of the default and the cached build\n",
               program, program);
}

struct Options {
  int frames = 0;  // 0: each scenario's default
  std::string figures;
  std::string tableDefault, tableCached;
};

[[noreturn]] void Usage(const char* program, int status) {
  PrintUsage(status == 0 ? stdout : stderr, program);
  std::exit(status);
}

Options Parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const bool hasValue = i + 1 < argc;
    if (std::strcmp(argv[i], "--help") == 0) {
      Usage(argv[0], 0);
    } else if (std::strcmp(argv[i], "--frames") == 0 && hasValue) {
      char* end = nullptr;
      const long frames = std::strtol(argv[++i], &end, 10);
      if (*end != '\0' || frames <= 0 || frames > 100000000) Usage(argv[0], 2);
      options.frames = static_cast<int>(frames);
    } else if (std::strcmp(argv[i], "--figures") == 0 && hasValue) {
      options.figures = argv[++i];
    } else if (std::strcmp(argv[i], "--table") == 0 && i + 2 < argc) {
      options.tableDefault = argv[++i];
      options.tableCached = argv[++i];
    } else {
      Usage(argv[0], 2);
    }
  }
  return options;
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = Parse(argc, argv);
  try {
    if (!options.tableDefault.empty()) {
      const bench::Figures byDefault = bench::Figures::Read(options.tableDefault);
      const bench::Figures cached = bench::Figures::Read(options.tableCached);
      bench::PrintComparison(byDefault, cached);
      bench::PrintCodeCosts(byDefault, cached, "5 MP Mono8, 10 codes, polled", "5 MP Mono8, 300 codes, polled", 290);
      return 0;
    }
    bench::Figures figures;
    bench::Jvm jvm;
    bench::RunPollBench(jvm.Env(), options.frames, figures);
    std::printf("\n");
    bench::RunCallbackBench(jvm.Env(), options.frames, figures);
    if (!options.figures.empty()) figures.Write(options.figures);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quorin_bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
