// stitch: joins the frames of two cameras over one bed.
#pragma once

#include <iosfwd>
#include <string>

namespace fisheye_calibration::program {

struct StitchOptions {
  std::string left;   // "frame,camera.ini,points.csv"
  std::string right;  // the same
  std::string output;
  std::string dual;
  std::string crop;  // "X,Y,WxH"
  std::string seam;
  std::string grid;  // distance of the lines, world units
};

int runStitch(const StitchOptions& options, std::ostream& out, std::ostream& messages);

}  // namespace fisheye_calibration::program
