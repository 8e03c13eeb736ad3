#include <mvx2/aes.h>
#include <mvx2/aes_cmac.h>
#include <mvx2/des.h>
#include <mvx2/des_mac.h>

int main(void) {
  unsigned char key[8] = {0, 0, 0, 0, 0, 0, 0, 0};
  des_key_set_parity(key);
  return aes_SubWord(0) == 0x63636363U && des_key_check_key_parity(key) == 0 ? 0 : 1;
}
