#include "keys/keyinstruction.h"

namespace kelmora {

bool KeyInstruction::Execute() {
  Begin();
  return true;
}

}  // namespace kelmora
