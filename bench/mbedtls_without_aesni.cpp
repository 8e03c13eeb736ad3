// Stands in for the part of mbed TLS that drives the AES instructions of x86: the processor has none, as far
// as the linked mbed TLS can tell, and it computes with its tables. Whoever uses the instructions all the
// same ends the program.
#include <cstdlib>

extern "C" {

int mbedtls_aesni_has_support(unsigned int /*what*/) { return 0; }
int mbedtls_aesni_crypt_ecb() { std::abort(); }
int mbedtls_aesni_setkey_enc() { std::abort(); }
void mbedtls_aesni_inverse_key() { std::abort(); }
void mbedtls_aesni_gcm_mult() { std::abort(); }
}
