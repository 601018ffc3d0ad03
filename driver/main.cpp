#include "driver.h"

int main(int argc, char** argv) {
  kelmora::Driver driver;
  return driver.Main(argc, argv);
}
