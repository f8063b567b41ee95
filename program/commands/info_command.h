// info: a camera's parameter file in readable form, and what in it cannot be.
#ifndef HOST_INFO_COMMAND_H
#define HOST_INFO_COMMAND_H

#include <iosfwd>
#include <string>

namespace host {

int runInfo(const std::string& path, std::ostream& out, std::ostream& messages);

}  // namespace host

#endif  // HOST_INFO_COMMAND_H
