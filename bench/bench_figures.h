// The figures of the comparison table: microseconds per frame of each frame kind through the bridge,
// through JNA and at the floor. Each build's run writes its own file; one table compares two runs.
#pragma once

#include <string>
#include <vector>

namespace bench {

class Figures {
 public:
  enum Variant { kBridge, kJna, kFloor };
  static constexpr int kVariants = 3;

  struct Row {
    std::string frame;
    double us[kVariants];  // -1 while not measured
  };

  void Add(const std::string& frame, Variant variant, double us);
  // Lines of "frame<TAB>variant<TAB>us".
  void Write(const std::string& path) const;
  static Figures Read(const std::string& path);

  const std::vector<Row>& Rows() const { return rows_; }
  const Row& RowOf(const std::string& frame) const;  // throws when there is none

 private:
  std::vector<Row> rows_;
};

// The table of both builds, each beside the JNA and floor of its own run and its ratios to them.
void PrintComparison(const Figures& byDefault, const Figures& cached);
// What one more code costs each variant, from two frames of the same image, and the speed-up of the
// cached build on the one with more codes.
void PrintCodeCosts(const Figures& byDefault, const Figures& cached, const std::string& fewCodes,
                    const std::string& manyCodes, unsigned int extraCodes);

}  // namespace bench
