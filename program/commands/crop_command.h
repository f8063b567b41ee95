// crop: cuts the centred rectangle out of a picture.
#ifndef HOST_CROP_COMMAND_H
#define HOST_CROP_COMMAND_H

#include <iosfwd>
#include <string>

namespace host {

struct CropOptions {
  std::string image;
  std::string size;
  std::string output;
};

int runCrop(const CropOptions& options, std::ostream& out, std::ostream& messages);

}  // namespace host

#endif  // HOST_CROP_COMMAND_H
