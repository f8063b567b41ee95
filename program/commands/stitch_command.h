// stitch: joins the frames of two cameras over one bed.
#ifndef HOST_STITCH_COMMAND_H
#define HOST_STITCH_COMMAND_H

#include <iosfwd>
#include <string>

namespace host {

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

}  // namespace host

#endif  // HOST_STITCH_COMMAND_H
