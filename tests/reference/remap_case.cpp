#include "reference/remap_case.h"

#include <algorithm>
#include <stdexcept>

#include "reference/generator.h"
#include "reference/records.h"

namespace reference {
namespace {

RemapCase caseOf(const Record& record) {
  RemapCase c;
  c.line = record.line;
  c.border = record.words.at(0);
  c.fill = static_cast<unsigned char>(record.number(1));
  c.channels = record.number(2);
  c.frame = {record.number(3), record.number(4)};
  c.bytes = record.words.at(5);
  c.positions = record.words.at(6);
  c.map = {record.number(7), record.number(8)};
  c.seed = static_cast<std::uint32_t>(record.number(9));
  c.hash = record.words.at(10);
  return c;
}

// The positions of a map, row by row.
class MapWriter {
 public:
  explicit MapWriter(RemapInput& input) : input_(input) {}

  int left() const { return static_cast<int>(input_.map2.total()) - written_; }
  void write(int sx, int sy, int fractions) {
    CV_Assert(left() > 0);
    input_.map1.ptr<cv::Vec2s>()[written_] = {static_cast<short>(sx), static_cast<short>(sy)};
    input_.map2.ptr<unsigned short>()[written_++] = static_cast<unsigned short>(fractions);
  }

 private:
  RemapInput& input_;
  int written_ = 0;
};

void writeEvery(const cv::Size& frame, MapWriter& map) {
  for (int sy = -2; sy <= frame.height + 1; ++sy) {
    for (int sx = -2; sx <= frame.width + 1; ++sx) {
      for (int fractions = 0; fractions < 1024; ++fractions) map.write(sx, sy, fractions);
    }
  }
}

int nearEdge(Generator& generator, int side) {
  const int first = generator.between(-3, 2);
  const int last = side - 1 + generator.between(-3, 2);
  return generator.below(2) == 0 ? first : std::min(last, 32767);
}

// Positions that are drawn each on its own.
void writeDrawn(Generator& generator, const RemapCase& c, MapWriter& map) {
  const auto draw = [&](int side) {
    if (c.positions == "near") return generator.between(-3, side + 2);
    if (c.positions == "edges") return nearEdge(generator, side);
    return generator.between(-32768, 32767);
  };
  while (map.left() > 0) {
    const int sx = draw(c.frame.width);
    const int sy = draw(c.frame.height);
    map.write(sx, sy, generator.below(1024));
  }
}

void writeLines(Generator& generator, const RemapCase& c, MapWriter& map) {
  for (int y = 0; y < c.map.height; ++y) {
    const auto start = [&](int side) {
      const int whole = 32 * generator.between(-8, side);
      return whole + generator.below(32);
    };
    const int u = start(c.frame.width);
    const int v = start(c.frame.height);
    const int du = generator.between(-40, 60);
    const int dv = generator.between(-8, 8);
    for (int x = 0; x < c.map.width; ++x) {
      const int pu = u + x * du;
      const int pv = v + x * dv;
      map.write(pu >> 5, pv >> 5, (pv & 31) * 32 + (pu & 31));
    }
  }
}

}  // namespace

std::vector<RemapCase> readRemapCases() {
  std::vector<RemapCase> cases;
  for (const Record& record : readRecords("remap")) cases.push_back(caseOf(record));
  return cases;
}

RemapInput remapInput(const RemapCase& c) {
  Generator generator(c.seed);
  RemapInput input;
  input.source = picture(generator, c.bytes, c.frame.width, c.frame.height, c.channels);
  input.map1.create(c.map, CV_16SC2);
  input.map2.create(c.map, CV_16UC1);
  MapWriter map(input);
  if (c.positions == "every") {
    writeEvery(c.frame, map);
  } else if (c.positions == "line") {
    writeLines(generator, c, map);
  } else if (c.positions == "near" || c.positions == "edges" || c.positions == "any") {
    writeDrawn(generator, c, map);
  } else {
    throw std::runtime_error("unknown positions: " + c.positions);
  }
  return input;
}

}  // namespace reference
