# Finds the cryptography library of mbed TLS, 2.28 or 3.6: neither Debian release ships a CMake package for both.
# Defines the imported target MbedCrypto::MbedCrypto.
find_path(MbedCrypto_INCLUDE_DIR mbedtls/des.h)
find_library(MbedCrypto_LIBRARY mbedcrypto)

if(MbedCrypto_INCLUDE_DIR AND EXISTS "${MbedCrypto_INCLUDE_DIR}/mbedtls/version.h")
  # 2.28 states its version in version.h, 3.x in build_info.h.
  foreach(header version.h build_info.h)
    if(EXISTS "${MbedCrypto_INCLUDE_DIR}/mbedtls/${header}")
      file(STRINGS "${MbedCrypto_INCLUDE_DIR}/mbedtls/${header}" line
           REGEX "^#define MBEDTLS_VERSION_STRING +\"[0-9.]+\"")
      if(line)
        string(REGEX REPLACE ".*\"([0-9.]+)\".*" "\\1" MbedCrypto_VERSION "${line}")
      endif()
    endif()
  endforeach()
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(
  MbedCrypto
  REQUIRED_VARS MbedCrypto_LIBRARY MbedCrypto_INCLUDE_DIR
  VERSION_VAR MbedCrypto_VERSION)
mark_as_advanced(MbedCrypto_INCLUDE_DIR MbedCrypto_LIBRARY)

if(MbedCrypto_FOUND AND NOT TARGET MbedCrypto::MbedCrypto)
  add_library(MbedCrypto::MbedCrypto UNKNOWN IMPORTED)
  set_target_properties(
    MbedCrypto::MbedCrypto PROPERTIES IMPORTED_LOCATION "${MbedCrypto_LIBRARY}"
                                      INTERFACE_INCLUDE_DIRECTORIES "${MbedCrypto_INCLUDE_DIR}")
endif()
