// The DES functions of mbed TLS under our names, with our contexts and our return values.
#include <mbedtls/des.h>
#include <mvx2/des.h>

// The round keys of our contexts are laid out as those of mbed TLS. It hides its members from version 3 on,
// so that their place is taken from the size: its contexts hold nothing else.
static_assert(sizeof(mbedtls_des_context) == sizeof(des_context::sk));
static_assert(sizeof(mbedtls_des3_context) == sizeof(des3_context::sk));
static_assert(alignof(mbedtls_des_context) == alignof(des_context));
static_assert(alignof(mbedtls_des3_context) == alignof(des3_context));

namespace {

mbedtls_des_context* schedule(des_context* ctx) { return reinterpret_cast<mbedtls_des_context*>(ctx->sk); }
mbedtls_des3_context* schedule(des3_context* ctx) { return reinterpret_cast<mbedtls_des3_context*>(ctx->sk); }

}  // namespace

void des_key_set_parity(unsigned char key[8]) { mbedtls_des_key_set_parity(key); }

int des_key_check_key_parity(const unsigned char key[8]) { return mbedtls_des_key_check_key_parity(key); }

int des_key_check_weak(const unsigned char key[8]) { return mbedtls_des_key_check_weak(key); }

int des_setkey_enc(des_context* ctx, const unsigned char key[8]) {
  return mbedtls_des_setkey_enc(schedule(ctx), key);
}

int des_setkey_dec(des_context* ctx, const unsigned char key[8]) {
  return mbedtls_des_setkey_dec(schedule(ctx), key);
}

int des3_set2key_enc(des3_context* ctx, const unsigned char key[16]) {
  return mbedtls_des3_set2key_enc(schedule(ctx), key);
}

int des3_set2key_dec(des3_context* ctx, const unsigned char key[16]) {
  return mbedtls_des3_set2key_dec(schedule(ctx), key);
}

int des3_set3key_enc(des3_context* ctx, const unsigned char key[24]) {
  return mbedtls_des3_set3key_enc(schedule(ctx), key);
}

int des3_set3key_dec(des3_context* ctx, const unsigned char key[24]) {
  return mbedtls_des3_set3key_dec(schedule(ctx), key);
}

int des_crypt_ecb(des_context* ctx, const unsigned char input[8], unsigned char output[8]) {
  return mbedtls_des_crypt_ecb(schedule(ctx), input, output);
}

int des3_crypt_ecb(des3_context* ctx, const unsigned char input[8], unsigned char output[8]) {
  return mbedtls_des3_crypt_ecb(schedule(ctx), input, output);
}

int des_crypt_cbc(des_context* ctx, int mode, size_t length, unsigned char iv[8], const unsigned char* input,
                  unsigned char* output) {
  if (length % 8 != 0) return 1;
  return mbedtls_des_crypt_cbc(schedule(ctx), mode, length, iv, input, output);
}

int des3_crypt_cbc(des3_context* ctx, int mode, size_t length, unsigned char iv[8],
                   const unsigned char* input, unsigned char* output) {
  if (length % 8 != 0) return 1;
  return mbedtls_des3_crypt_cbc(schedule(ctx), mode, length, iv, input, output);
}
