#include "driver.h"

int main(int argc, char** argv) {
  // Never destroyed: the system takes all memory back at once, which nobody can do node by node.
  static kelmora::Driver& driver = *new kelmora::Driver;
  return driver.Main(argc, argv);
}
