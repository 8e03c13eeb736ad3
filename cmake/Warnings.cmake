# mvx2_warnings: the warnings that every target of this project is compiled with.
add_library(mvx2_warnings INTERFACE)
target_compile_options(
  mvx2_warnings
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wconversion
            -Wsign-conversion
            -Wshadow
            -Wcast-align
            -Wcast-qual
            -Wformat=2
            -Wundef
            $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
            $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
            $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
            $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wduplicated-cond>
            $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wlogical-op>
            # GCC only notes here that std::pair and the like changed their calling convention in GCC 7.
            $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-psabi>
            $<$<BOOL:${MVX2_WERROR}>:-Werror>)
