// The host that is built with the library's own compiler.
#include "host.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  host::openResults(argv[1]);
  host::callAllFunctions();
  host::closeResults();
}
