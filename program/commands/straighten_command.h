// straighten: the library's perspective aid, with its fixed files prepared.
#ifndef HOST_STRAIGHTEN_COMMAND_H
#define HOST_STRAIGHTEN_COMMAND_H

#include <iosfwd>
#include <string>

namespace host {

struct StraightenOptions {
  std::string points;
  std::string image;
};

int runStraighten(const StraightenOptions& options, std::ostream& out, std::ostream& messages);

}  // namespace host

#endif  // HOST_STRAIGHTEN_COMMAND_H
