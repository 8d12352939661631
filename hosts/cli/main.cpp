#include "hosts/cli/Command.h"

int main(int argc, char** argv) {
  return cli::RunCommand(argc, argv);
}
