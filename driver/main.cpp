#include "driver.h"
#include "uncaughterror.h"

int main(int argc, char** argv) {
  kelmora::HandleLostErrors();  // the first memory that is asked for may be more than there is
  static kelmora::Driver& driver = *new kelmora::Driver;
  return driver.Main(argc, argv);
}
