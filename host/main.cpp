#include "host/commands/Program.h"

int main(int argc, char** argv) {
  return emstatus::host::Program().Run(argc, argv);
}
