#include "bench_figures.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace bench {

void Figures::Add(const std::string& frame, Variant variant, double us) {
  for (Row& row : rows_) {
    if (row.frame == frame) {
      row.us[variant] = us;
      return;
    }
  }
  Row row{frame, {-1, -1, -1}};
  row.us[variant] = us;
  rows_.push_back(row);
}

namespace {

const char* const kVariantNames[Figures::kVariants] = {"bridge", "jna", "floor"};

}  // namespace

void Figures::Write(const std::string& path) const {
  std::ofstream out(path);
  for (const Row& row : rows_) {
    for (int v = 0; v < Figures::kVariants; ++v) out << row.frame << '\t' << kVariantNames[v] << '\t' << row.us[v] << '\n';
  }
  if (!out) throw std::runtime_error("cannot write " + path);
}

Figures Figures::Read(const std::string& path) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error("cannot read " + path);
  Figures figures;
  std::string line;
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    std::string frame, variant, us;
    if (!std::getline(fields, frame, '\t') || !std::getline(fields, variant, '\t') || !std::getline(fields, us)) {
      throw std::runtime_error(path + ": not a line of figures: " + line);
    }
    int v = 0;
    while (v < Figures::kVariants && variant != kVariantNames[v]) ++v;
    if (v == Figures::kVariants) throw std::runtime_error(path + ": no variant " + variant);
    figures.Add(frame, static_cast<Variant>(v), std::stod(us));
  }
  return figures;
}

const Figures::Row& Figures::RowOf(const std::string& frame) const {
  for (const Row& row : rows_) {
    if (row.frame == frame) return row;
  }
  throw std::runtime_error("no figures for " + frame);
}

void PrintComparison(const Figures& byDefault, const Figures& cached) {
  std::printf("Microseconds per frame, each the median of its rounds. default, cached: the two builds of the\n"
              "bridge, each run in its own process beside JNA and the floor; JNA: the same frames through JNA's\n"
              "Structure.read(); floor: polled, System.arraycopy of the image bytes; delivered, the stand-in's\n"
              "delivery to a C++ callback that copies the image. Each build's ratios are to the JNA and floor\n"
              "of its own run.\n\n");
  const char* const kHeader = "%-31s | %8s %8s %8s | %8s %8s %8s | %7s %7s %7s %7s\n";
  std::printf(kHeader, "", "default", "", "", "cached", "", "", "default", "default", "cached", "cached");
  std::printf(kHeader, "frame", "us", "JNA us", "floor us", "us", "JNA us", "floor us", "/floor", "/JNA", "/floor",
              "/JNA");
  for (const Figures::Row& d : byDefault.Rows()) {
    const Figures::Row& c = cached.RowOf(d.frame);
    std::printf("%-31s | %8.2f %8.2f %8.2f | %8.2f %8.2f %8.2f | %7.2f %7.2f %7.2f %7.2f\n", d.frame.c_str(),
                d.us[Figures::kBridge], d.us[Figures::kJna], d.us[Figures::kFloor], c.us[Figures::kBridge],
                c.us[Figures::kJna], c.us[Figures::kFloor], d.us[Figures::kBridge] / d.us[Figures::kFloor],
                d.us[Figures::kBridge] / d.us[Figures::kJna], c.us[Figures::kBridge] / c.us[Figures::kFloor],
                c.us[Figures::kBridge] / c.us[Figures::kJna]);
  }
}

void PrintCodeCosts(const Figures& byDefault, const Figures& cached, const std::string& fewCodes,
                    const std::string& manyCodes, unsigned int extraCodes) {
  auto perCode = [&](const Figures& figures, Figures::Variant variant) {
    return (figures.RowOf(manyCodes).us[variant] - figures.RowOf(fewCodes).us[variant]) / extraCodes;
  };
  std::printf("\neach further code (%s against %s): default %.2f us, cached %.2f us, JNA %.2f and %.2f us\n",
              manyCodes.c_str(), fewCodes.c_str(), perCode(byDefault, Figures::kBridge),
              perCode(cached, Figures::kBridge), perCode(byDefault, Figures::kJna), perCode(cached, Figures::kJna));
  std::printf("%s: cached %.2f times as fast as default\n", manyCodes.c_str(),
              byDefault.RowOf(manyCodes).us[Figures::kBridge] / cached.RowOf(manyCodes).us[Figures::kBridge]);
}

}  // namespace bench
